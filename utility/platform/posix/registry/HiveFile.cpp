#include "utility/platform/posix/registry/HiveFile.h"

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/registry/Status.h"

#include <boost/filesystem/operations.hpp>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <pwd.h>
#include <sqlite3.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

using boost::filesystem::path;

constexpr char schema[] = R"(
    pragma journal_mode = wal;
    create table keys (
        id integer primary key autoincrement, -- never that of a deleted key
        parent integer,
        fold text not null,                   -- the name as it is looked up, in upper case
        name text not null,
        unique (parent, fold));
    create table "values" (
        key integer not null,
        fold text not null,
        name text not null,
        type integer not null,
        data blob not null,
        primary key (key, fold)) without rowid;
    insert into keys values (1, null, '', '');
)";

path UserConfiguration()
{
    const char* const given = std::getenv("XDG_CONFIG_HOME");
    if (given != nullptr && *given == '/')
        return given;
    const char* home = std::getenv("HOME");
    if (home == nullptr || *home != '/')
    {
        const passwd* const user = ::getpwuid(::geteuid());
        home = user != nullptr ? user->pw_dir : nullptr;
    }
    return home != nullptr && *home == '/' ? path(home) / ".config" : path();
}

path SystemConfiguration()
{
    const char* const given = std::getenv("XDG_CONFIG_DIRS");
    if (given == nullptr || *given != '/')
        return "/etc/xdg";
    const std::string_view folders = given;
    return std::string(folders.substr(0, folders.find(':')));
}

/// Puts a file into a place that is free; false and errno EEXIST where it is taken.
bool LinkInto(const std::string& file, const std::string& place)
{
    if (::link(file.c_str(), place.c_str()) == 0)
        return true;
    // Some file systems have no links.
    return errno != EEXIST && ::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, place.c_str(), RENAME_NOREPLACE) == 0;
}

}

path UsualHiveFile(HiveOwner owner)
{
    const path folder = owner == HiveOwner::user ? UserConfiguration() : SystemConfiguration();
    return folder.empty() ? path() : folder / "selvane" / "settings.db";
}

LSTATUS MakeHiveFile(const path& file, HiveOwner owner)
{
    boost::system::error_code failure;
    boost::filesystem::create_directories(file.parent_path(), failure);
    if (failure)
        return Status(ErrorOfErrno(failure.value()));
    // Made beside its place and linked to it whole: no process ever finds half a hive, also when this one is killed.
    const std::string made = boost::filesystem::unique_path(file.native() + ".%%%%%%%%%%%%").native();
    const int descriptor =
        ::open(made.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, owner == HiveOwner::user ? 0600 : 0644);
    if (descriptor < 0)
        return Status(ErrorOfErrno(errno));
    sqlite3* opened = nullptr;
    int result = sqlite3_open_v2(made.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    std::int32_t lot = 0; // tells it from any other hive
    sqlite3_randomness(sizeof(lot), &lot);
    const std::string text = schema + ("pragma application_id = " + std::to_string(hiveApplicationId)) +
                             ";pragma user_version = " + std::to_string(lot);
    if (result == SQLITE_OK)
        result = sqlite3_exec(opened, text.c_str(), nullptr, nullptr, nullptr);
    LSTATUS status = StatusOf(result, opened);
    // Closing brings all of it into the one file.
    if (sqlite3_close(opened) != SQLITE_OK && status == success)
        status = Status(ERROR_REGISTRY_IO_FAILED);
    if (status == success && (::fsync(descriptor) != 0 || (!LinkInto(made, file.native()) && errno != EEXIST)))
        status = Status(ErrorOfErrno(errno));
    ::close(descriptor);
    for (const char* const suffix : {"", "-wal", "-shm"})
        ::unlink((made + suffix).c_str());
    return status;
}

}
