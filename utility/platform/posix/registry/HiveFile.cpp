#include "utility/platform/posix/registry/HiveFile.h"

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/registry/Status.h"

#include <array>
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
    begin;
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

// Comes last: up to here all went into the one file, and a statement told of each failure. What is written to a log is
// brought into the file when that is closed, which fails without a word.
constexpr char schemaEnd[] = R"(;
    commit;
    pragma journal_mode = wal;
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

/// A new file beside the place that it is to come into. What is left of it, and of what SQLite puts beside it, goes at
/// the end.
class Draft
{
public:
    Draft(const std::string& name, mode_t mode)
        : m_names{name, name + "-journal", name + "-wal", name + "-shm"},
          m_file(Uninterrupted([&] { return ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode); }))
    {
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;
    ~Draft()
    {
        if (m_file < 0)
            return;
        ::close(m_file);
        for (const std::string& each : m_names)
            ::unlink(each.c_str());
    }

    bool IsOpen() const { return m_file >= 0; }

    /// Puts it into its place, whole. One that is there already, made by another process meanwhile, is as good.
    bool Publish(const std::string& place) const
    {
        return Uninterrupted([&] { return ::fsync(m_file); }) == 0 && (LinkInto(m_names[0], place) || errno == EEXIST);
    }

private:
    std::array<std::string, 4> m_names;
    int m_file;
};

/// Makes a hive of an empty file.
LSTATUS Fill(const std::string& file, std::int32_t lot)
{
    const std::string text = schema + ("pragma application_id = " + std::to_string(hiveApplicationId)) +
                             ";pragma user_version = " + std::to_string(lot) + schemaEnd;
    sqlite3* database = nullptr;
    errno = 0; // or a refusal of SQLite's own would get the reason of an earlier call
    int result = sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
    if (result == SQLITE_OK)
        result = sqlite3_exec(database, text.c_str(), nullptr, nullptr, nullptr);
    const LSTATUS status = StatusOf(result, database);
    sqlite3_close(database);
    return status;
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
    // Tells it from any other hive. The database's own random numbers are the same on both sides of a fork.
    std::uint32_t lot = 0;
    if (::getentropy(&lot, sizeof(lot)) != 0)
        return Status(ErrorOfErrno(errno));
    // Made beside its place and linked to it whole: no process ever finds half a hive, also when this one is killed.
    const std::string name = file.native() + '.' + std::to_string(lot);
    const Draft draft(name, owner == HiveOwner::user ? 0600 : 0644);
    if (!draft.IsOpen())
        return Status(ErrorOfErrno(errno));
    const LSTATUS status = Fill(name, static_cast<std::int32_t>(lot));
    return status != success || draft.Publish(file.native()) ? status : Status(ErrorOfErrno(errno));
}

}
