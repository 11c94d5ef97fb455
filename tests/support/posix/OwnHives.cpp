#include "tests/support/OwnHives.h"

#include "utility/platform/Hives.h"
#include "utility/platform/posix/registry/Sqlite.h"

#include <boost/filesystem/operations.hpp>

#include <cstdlib>
#include <mutex>
#include <unistd.h>

namespace support
{

namespace
{

boost::filesystem::path folder;
pid_t owner = 0;

}

void UseOwnHives()
{
    // The folder itself is made with the first key, which few tests need.
    folder = boost::filesystem::temp_directory_path() / boost::filesystem::unique_path("utility-hives-%%%%%%%%%%%%");
    owner = ::getpid();
    utility::platform::SetHiveFile(HKEY_CURRENT_USER, folder / "user.db");
    utility::platform::SetHiveFile(HKEY_LOCAL_MACHINE, folder / "machine.db");
    // For tests of what stands below the registry, which loads it.
    std::mutex nobodys;
    utility::platform::posix::LoadSqlite(nobodys);
    std::atexit(
        []
        {
            boost::system::error_code ignored;
            if (::getpid() == owner)
                boost::filesystem::remove_all(folder, ignored);
        });
}

}
