#include "utility/platform/posix/filesystem/UserFolders.h"

#include "utility/platform/posix/users/Accounts.h"

#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

using boost::filesystem::path;

path HomeFolder()
{
    const char* const given = std::getenv("HOME");
    if (given != nullptr && *given == '/')
        return given;
    const auto account = AccountOf(::geteuid());
    return account && account->home.starts_with('/') ? account->home : "";
}

/// The folder that a variable names, or else this one in the home folder.
path FolderBy(const char* variable, const char* inHome)
{
    const char* const given = std::getenv(variable);
    if (given != nullptr && *given == '/')
        return given;
    const path home = HomeFolder();
    return home.empty() ? home : home / inHome;
}

/// The text that a shell would see ahead of the quotation mark that ends this one.
std::string Unquoted(std::string_view text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size() && text[at] != '"'; ++at)
    {
        at += text[at] == '\\' && at + 1 < text.size() ? 1 : 0;
        result += text[at];
    }
    return result;
}

}

path UserConfigurationFolder() { return FolderBy("XDG_CONFIG_HOME", ".config"); }

path UserDataFolder() { return FolderBy("XDG_DATA_HOME", ".local/share"); }

path DocumentsFolder()
{
    // Written by the desktop for shells, a line a folder: XDG_DOCUMENTS_DIR="$HOME/Documents". The last one counts.
    constexpr std::string_view name = "XDG_DOCUMENTS_DIR=\"";
    constexpr std::string_view fromHome = "$HOME/";
    const path home = HomeFolder();
    path folder = home;
    std::ifstream folders((UserConfigurationFolder() / "user-dirs.dirs").native());
    for (std::string line; std::getline(folders, line);)
    {
        if (!line.starts_with(name))
            continue;
        const std::string value = Unquoted(std::string_view(line).substr(name.size()));
        if (value.starts_with('/'))
            folder = value;
        else if (!home.empty() && (value + '/').starts_with(fromHome))
            folder = home.native() + value.substr(fromHome.size() - 1);
    }
    return folder;
}

}
