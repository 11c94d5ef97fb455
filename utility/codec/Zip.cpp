#include "utility/codec/Zip.h"

#include "utility/platform/Paths.h"
#include "utility/platform/ZipLibrary.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

using boost::filesystem::path;
using utility::platform::Utf8FromPath;
using utility::platform::ZipLibrary;

namespace
{

/// Takes all that the library prints.
int Swallow(char* /*text*/, DWORD size) { return static_cast<int>(size); }

int Agree() { return 1; }

/// A relative name that begins as an option does is told from one by the folder ahead of it.
std::string EntryOf(const path& file)
{
    const std::string name = Utf8FromPath(file);
    return name.starts_with('-') ? "./" + name : name;
}

}

bool Zip::ZipFiles(const path& archive, const std::set<path>& files)
{
    const auto isWhole = [](const path& file) { return utility::platform::AreWhole(file); };
    if (files.empty() || !isWhole(archive) || !std::ranges::all_of(files, isWhole))
        return false;
    utility::platform::ZipCallbacks callbacks = {&Swallow, &Agree, &Agree, {}};
    if (ZipLibrary().ZpInit(callbacks) == 0)
        return false;

    const std::string folder = Utf8FromPath(archive.parent_path());
    utility::platform::ZipOptions options = {};
    options.rootFolder = folder.c_str();
    options.noDirectoryEntries = 1;
    options.quiet = 1;
    options.noFolders = 1;
    options.level = '9';

    // Deliberately an option in the place of a file: the library then takes the names for UTF-8.
    std::vector<std::string> entries = {utility::platform::zipNamesAreUtf8};
    std::ranges::transform(files, std::back_inserter(entries), &EntryOf);
    std::vector<const char*> list;
    std::ranges::transform(entries, std::back_inserter(list), &std::string::c_str);

    const std::string name = Utf8FromPath(archive);
    utility::platform::ZipCommand command = {};
    command.count = static_cast<std::int32_t>(list.size());
    command.archive = name.c_str();
    command.entries = list.data();
    return ZipLibrary().ZpArchive(command, options) == 0;
}
