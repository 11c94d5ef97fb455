#include "utility/platform/posix/registry/HiveFile.h"

#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/filesystem/Swap.h"
#include "utility/platform/posix/filesystem/UserFolders.h"
#include "utility/platform/posix/registry/Sqlite.h"
#include "utility/platform/posix/registry/Status.h"

#include <algorithm>
#include <array>
#include <boost/filesystem/operations.hpp>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <linux/magic.h>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/statfs.h>
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
constexpr char beginLog[] = "pragma journal_mode = wal";

/// File systems of this machine alone. What is not known as such is taken for one of a network.
constexpr unsigned long localFileSystems[] = {
    EXT4_SUPER_MAGIC, // and those before it
    XFS_SUPER_MAGIC,  BTRFS_SUPER_MAGIC, F2FS_SUPER_MAGIC, TMPFS_MAGIC, OVERLAYFS_SUPER_MAGIC,
    0x2FC12FC1, // ZFS
    0xCA451A4E, // bcachefs
    0x3153464A, // JFS
};

path SystemConfiguration()
{
    const char* const given = std::getenv("XDG_CONFIG_DIRS");
    if (given == nullptr || *given != '/')
        return "/etc/xdg";
    const std::string_view folders = given;
    return std::string(folders.substr(0, folders.find(':')));
}

/// A database, and behind it what SQLite keeps beside it.
using Names = std::array<std::string, 4>;

Names NamesOf(const std::string& database)
{
    return {database, database + "-journal", database + "-wal", database + "-shm"};
}

/// Puts a file into a place that is free; false and errno EEXIST where it is taken.
bool LinkInto(const std::string& file, const std::string& place)
{
    if (::link(file.c_str(), place.c_str()) == 0)
        return true;
    // Some file systems have no links.
    return errno != EEXIST && ::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, place.c_str(), RENAME_NOREPLACE) == 0;
}

/// Moves what SQLite keeps beside a database.
bool MoveCompanions(const Names& from, const Names& to)
{
    for (std::size_t i = 1; i < from.size(); ++i)
    {
        if (::rename(from[i].c_str(), to[i].c_str()) != 0 && errno != ENOENT)
            return false;
    }
    return true;
}

/// Where a hive goes that is set aside now.
Names NamesAside(const std::string& hive)
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    char date[32];
    char fraction[32];
    std::strftime(date, sizeof(date), "%Y%m%d-%H%M%S", ::gmtime_r(&now.tv_sec, &parts));
    std::snprintf(fraction, sizeof(fraction), ".%06ld", now.tv_nsec / 1000);
    return NamesOf(hive + ".damaged-" + date + fraction);
}

/// Keeps everybody else, in this process too, from reading a database, unless somebody has it open and has read it. It
/// is not read itself meanwhile.
class SoleUse
{
public:
    explicit SoleUse(sqlite3* database) : m_file(FileOf(database))
    {
        m_result = m_file->pMethods->xLock(m_file, SQLITE_LOCK_SHARED);
        if (m_result == SQLITE_OK)
            m_result = m_file->pMethods->xLock(m_file, SQLITE_LOCK_EXCLUSIVE);
    }
    SoleUse(const SoleUse&) = delete;
    SoleUse& operator=(const SoleUse&) = delete;
    ~SoleUse() { m_file->pMethods->xUnlock(m_file, SQLITE_LOCK_NONE); }

    /// SQLITE_OK if it is so.
    int Result() const { return m_result; }

private:
    sqlite3_file* m_file;
    int m_result;
};

/// Among the processes that make a hive in a folder the turn of one, where the file system has locks of folders: what
/// another has made, and uses, is not touched.
class Turn
{
public:
    explicit Turn(const path& folder)
        : m_folder(AboveStandardStreams(
              Uninterrupted([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); })))
    {
        constexpr int pause = 10; // milliseconds
        constexpr int longestWait = 5000;
        for (int waited = 0; waited < longestWait && !HasCome(); waited += pause)
        {
            m_isOfAnother = ::flock(m_folder, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
            if (m_isOfAnother)
                sqlite.sleep(pause);
        }
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn()
    {
        if (m_folder < 0)
            return;
        ::flock(m_folder, LOCK_UN); // a child that was forked meanwhile has it open as well
        ::close(m_folder);
    }

    /// False if it did not come within the time that writers wait.
    bool HasCome() const { return !m_isOfAnother; }

private:
    int m_folder;
    bool m_isOfAnother = true;
};

/// A new file beside the place that it is to come into. What is left of it, and of what SQLite puts beside it, goes at
/// the end.
class Draft
{
public:
    Draft(const std::string& name, mode_t mode) : m_names(NamesOf(name)), m_file(MakeFile(name.c_str(), mode)) {}
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
    LSTATUS Publish(const std::string& place) const
    {
        if (Uninterrupted([&] { return ::fsync(m_file); }) != 0)
            return Status(ErrorOfErrno(errno));
        const Turn turn(path(place).parent_path());
        if (!turn.HasCome())
            return Status(ERROR_BUSY);
        if (::access(place.c_str(), F_OK) == 0)
            return success;
        // The log of one that stood there earlier would be taken for this one's, also after a crash.
        if (!MoveCompanions(NamesOf(place), NamesAside(place)))
            return Status(ErrorOfErrno(errno));
        FlushNames(place);
        if (!LinkInto(m_names[0], place))
            return errno == EEXIST ? success : Status(ErrorOfErrno(errno));
        FlushNames(place); // where the system cannot, they come to the disk later
        return success;
    }

private:
    Names m_names;
    int m_file;
};

/// Makes a hive of an empty file.
LSTATUS Fill(const std::string& file, std::int32_t lot)
{
    const std::string text = schema + ("pragma application_id = " + std::to_string(hiveApplicationId)) +
                             ";pragma user_version = " + std::to_string(lot) + ";commit;" +
                             (MayHaveLog(file) ? beginLog : "");
    Database database;
    const LSTATUS status = OpenDatabase(file, SQLITE_OPEN_READWRITE, database);
    if (status != success)
        return status;
    return StatusOf(sqlite.exec(database.get(), text.c_str(), nullptr, nullptr, nullptr), database.get());
}

/// Whether each byte of a database's file, or of its log, can be read, where SQLite has that open. `file` is SQLite's
/// code for one of them.
bool IsReadable(sqlite3* database, int file)
{
    sqlite3_file* opened = nullptr;
    sqlite.file_control(database, "main", file, &opened);
    if (opened == nullptr || opened->pMethods == nullptr)
        return true;
    sqlite3_int64 size = 0;
    int result = opened->pMethods->xFileSize(opened, &size);
    char block[4096];
    for (sqlite3_int64 at = 0; at < size && result == SQLITE_OK; at += sizeof(block))
        result = opened->pMethods->xRead(opened, block, sizeof(block), at);
    return result == SQLITE_OK || result == SQLITE_IOERR_SHORT_READ;
}

}

LSTATUS OpenDatabase(const std::string& name, int flags, Database& database)
{
    if (sqlite.open_v2 == nullptr)
        return Status(ERROR_MOD_NOT_FOUND);
    sqlite3* opened = nullptr;
    errno = 0; // or a refusal of SQLite's own would get the reason of an earlier call
    const int result = sqlite.open_v2(name.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    database.reset(opened);
    return StatusOf(result, opened);
}

void DatabaseCloser::operator()(sqlite3* database) const { sqlite.close_v2(database); }

sqlite3_file* FileOf(sqlite3* database)
{
    sqlite3_file* file = nullptr;
    sqlite.file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    return file;
}

bool HasMoved(sqlite3* database)
{
    int moved = 0;
    return sqlite.file_control(database, "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && moved != 0;
}

bool IsEmpty(sqlite3* database)
{
    sqlite3_file* const file = FileOf(database);
    sqlite3_int64 size = 0;
    return file->pMethods->xFileSize(file, &size) == SQLITE_OK && size == 0;
}

path UsualHiveFile(HiveOwner owner)
{
    const path folder = owner == HiveOwner::user ? UserConfigurationFolder() : SystemConfiguration();
    return folder.empty() ? path() : folder / "selvane" / "settings.db";
}

bool MayHaveLog(const path& file)
{
    struct statfs system = {};
    return ::statfs(file.c_str(), &system) == 0 &&
           std::ranges::count(localFileSystems, static_cast<unsigned long>(system.f_type)) != 0;
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
    return status == success ? draft.Publish(file.native()) : status;
}

bool SetHiveAside(sqlite3* database, const path& file)
{
    const int told = sqlite.errcode(database);
    const bool isDamaged = told == SQLITE_CORRUPT || told == SQLITE_NOTADB || (told == SQLITE_OK && IsEmpty(database));
    if (!isDamaged || sqlite.db_readonly(database, "main") != 0)
        return false;
    const SoleUse use(database);
    if (use.Result() != SQLITE_OK || HasMoved(database))
        return false;
    // To SQLite a byte that cannot be read is a wrong one.
    if (!IsReadable(database, SQLITE_FCNTL_FILE_POINTER) || !IsReadable(database, SQLITE_FCNTL_JOURNAL_POINTER))
        return false;
    const Names names = NamesOf(file.native());
    const Names aside = NamesAside(file.native());
    // What ends half-way leaves the file where it was, and the next start goes on with it.
    return LinkInto(names[0], aside[0]) && MoveCompanions(names, aside) && FlushNames(file) &&
           (::unlink(names[0].c_str()) == 0 || errno == ENOENT);
}

}
