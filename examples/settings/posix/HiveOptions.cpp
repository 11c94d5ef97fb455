#include "examples/settings/HiveOptions.h"

#include "utility/platform/posix/Hives.h"

namespace hiveoptions
{

const char* const help = "\n"
                         "  --user FILE     ahead of the command: the user's hive is this file\n"
                         "  --machine FILE  the same for the machine's\n";

bool Apply(const std::string& option, const boost::filesystem::path& file)
{
    const HKEY hive = option == "--user" ? HKEY_CURRENT_USER : option == "--machine" ? HKEY_LOCAL_MACHINE : nullptr;
    return utility::platform::SetHiveFile(hive, file);
}

}
