#include "utility/platform/posix/filesystem/UserFolders.h"

#include <cstdlib>
#include <fstream>
#include <pwd.h>
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
    const char* home = std::getenv("HOME");
    if (home == nullptr || *home != '/')
    {
        const passwd* const user = ::getpwuid(::geteuid());
        home = user != nullptr ? user->pw_dir : nullptr;
    }
    return home != nullptr && *home == '/' ? home : path();
}

/// The text that a shell would see between the quotation marks that this one begins with.
std::string Unquoted(std::string_view text)
{
    std::string result;
    for (std::size_t at = 1; at < text.size() && text[at] != '"'; ++at)
    {
        at += text[at] == '\\' && at + 1 < text.size() ? 1 : 0;
        result += text[at];
    }
    return result;
}

}

path UserConfigurationFolder()
{
    const char* const given = std::getenv("XDG_CONFIG_HOME");
    if (given != nullptr && *given == '/')
        return given;
    const path home = HomeFolder();
    return home.empty() ? home : home / ".config";
}

path DocumentsFolder()
{
    // Written by the desktop for shells, a line a folder: XDG_DOCUMENTS_DIR="$HOME/Documents". The last one counts.
    constexpr std::string_view name = "XDG_DOCUMENTS_DIR=";
    constexpr std::string_view fromHome = "$HOME";
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
        else if (value.starts_with(fromHome))
            folder = home.native() + value.substr(fromHome.size());
    }
    return folder;
}

}
