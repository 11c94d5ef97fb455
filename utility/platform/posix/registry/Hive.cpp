#include "utility/platform/posix/registry/Hive.h"

#include "utility/platform/formats/Utf8.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/error/Errno.h"

#include <algorithm>
#include <atomic>
#include <boost/filesystem/operations.hpp>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <fcntl.h>
#include <locale.h>
#include <pwd.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

using boost::filesystem::path;

constexpr LSTATUS Status(DWORD error) { return static_cast<LSTATUS>(error); }

constexpr LSTATUS success = Status(ERROR_SUCCESS);
constexpr LSTATUS missing = Status(ERROR_FILE_NOT_FOUND);
constexpr LSTATUS deleted = Status(ERROR_KEY_DELETED);

constexpr Hive::Key absent = 0;

constexpr std::size_t longestKeyName = 255;
constexpr std::size_t longestValueName = 16383;

// Milliseconds until an operation gives up on another process that writes.
constexpr int longestWait = 5000;

// Remembering stops at this many names, and takes no larger value.
constexpr std::size_t mostRemembered = 4096;
constexpr std::size_t largestRemembered = 4096;

// "SETT": tells a hive from any other database.
constexpr int applicationId = 0x53455454;

constexpr char schema[] = R"(
    pragma application_id = 0x53455454;
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

// By Hive::StatementId.
constexpr const char* statementTexts[] = {
    "pragma application_id",
    "pragma user_version",
    "pragma journal_mode",
    "begin immediate",
    "commit",
    "rollback",
    "select 1 from keys where id = ?1",
    "select id from keys where parent = ?1 and fold = ?2",
    "insert into keys (parent, fold, name) values (?1, ?2, ?3)",
    "with recursive tree (id) as (select ?1 union select keys.id from keys join tree on keys.parent = tree.id) "
    "delete from \"values\" where key in tree",
    "with recursive tree (id) as (select ?1 union select keys.id from keys join tree on keys.parent = tree.id) "
    "delete from keys where id in tree",
    "select type, data from \"values\" where key = ?1 and fold = ?2",
    "insert into \"values\" (key, fold, name, type, data) "
    "select ?1, ?2, ?3, ?4, ?5 where exists (select 1 from keys where id = ?1) "
    "on conflict (key, fold) do update set type = excluded.type, data = excluded.data",
    "delete from \"values\" where key = ?1 and fold = ?2",
    "select name from keys where parent = ?1 order by fold limit 1 offset ?2",
    "select type, data, name from \"values\" where key = ?1 order by fold limit 1 offset ?2",
    "select count(*), max(length(name)) from keys where parent = ?1",
    "select count(*), max(length(name)), max(length(data)) from \"values\" where key = ?1",
};

/// The upper-case form by which the registry compares: a character for a character, and nothing beyond ASCII is the
/// same as anything within it.
wchar_t UpperCase(wchar_t character)
{
    static const locale_t everyScript = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    constexpr wchar_t microSign = 0xB5; // no Greek letter to the registry
    if (character > 0xFFFF || character == microSign || everyScript == nullptr)
        return character;
    const auto upper = static_cast<wchar_t>(::towupper_l(static_cast<std::wint_t>(character), everyScript));
    return upper < 0x80 ? character : upper;
}

void AppendFolded(std::string& text, std::wstring_view name)
{
    if (std::ranges::all_of(name, [](wchar_t each) { return each >= 0 && each < 0x80; }))
    {
        for (const wchar_t each : name)
            text += static_cast<char>(each >= L'a' && each <= L'z' ? each - L'a' + L'A' : each);
        return;
    }
    std::wstring upper(name);
    std::ranges::transform(upper, upper.begin(),
                           [](wchar_t each)
                           { return each >= L'a' && each <= L'z' ? each - L'a' + L'A' : UpperCase(each); });
    text += formats::Utf8FromWide(upper);
}

std::string Folded(std::wstring_view name)
{
    std::string text;
    AppendFolded(text, name);
    return text;
}

/// What a name below a key is remembered by.
void Compose(std::string& wanted, Hive::Key key, std::wstring_view name)
{
    wanted.assign(reinterpret_cast<const char*>(&key), sizeof(key));
    AppendFolded(wanted, name);
}

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

std::string ImmutableUri(const path& file)
{
    std::string uri = "file:";
    for (const char each : file.native())
    {
        constexpr char digits[] = "0123456789ABCDEF";
        if (each == '%' || each == '?' || each == '#')
            uri.append({'%', digits[each >> 4], digits[each & 15]});
        else
            uri += each;
    }
    return uri + "?immutable=1";
}

}

/// One use of a prepared statement.
class Hive::Run
{
public:
    Run(Hive& hive, StatementId id) : m_hive(hive)
    {
        StatementPtr& prepared = hive.m_statements[id];
        if (!prepared)
        {
            sqlite3_stmt* statement = nullptr;
            m_result = sqlite3_prepare_v3(hive.m_database.get(), statementTexts[id], -1, SQLITE_PREPARE_PERSISTENT,
                                          &statement, nullptr);
            prepared.reset(statement);
        }
        m_statement = prepared.get();
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() { sqlite3_reset(m_statement); }

    /// Bytes and texts stay the caller's, until the end of the run.
    Run& Bind(std::int64_t value)
    {
        sqlite3_bind_int64(m_statement, ++m_bound, value);
        return *this;
    }
    Run& Bind(std::string_view text)
    {
        sqlite3_bind_text(m_statement, ++m_bound, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
        return *this;
    }
    Run& BindBytes(std::string_view bytes)
    {
        // A null pointer would stand for no value at all.
        sqlite3_bind_blob64(m_statement, ++m_bound, bytes.empty() ? "" : bytes.data(), bytes.size(), SQLITE_STATIC);
        return *this;
    }

    /// Goes to the next row; false at the end and on failure.
    bool Next()
    {
        if (m_statement != nullptr)
            m_result = sqlite3_step(m_statement);
        return m_result == SQLITE_ROW;
    }

    LSTATUS Status() const { return m_hive.StatusOf(m_result); }

    LSTATUS ToTheEnd()
    {
        while (Next())
            ;
        return Status();
    }

    std::int64_t Integer(int column) { return sqlite3_column_int64(m_statement, column); }
    std::string_view Bytes(int column)
    {
        const auto* const data = static_cast<const char*>(sqlite3_column_blob(m_statement, column));
        return {data, static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column))};
    }

private:
    Hive& m_hive;
    sqlite3_stmt* m_statement = nullptr;
    int m_bound = 0;
    int m_result = SQLITE_OK;
};

class Hive::Transaction
{
public:
    explicit Transaction(Hive& hive) : m_hive(hive), m_begun(Run(hive, Begin).ToTheEnd()) {}
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction()
    {
        // Some failures have rolled back already.
        if (sqlite3_get_autocommit(m_hive.m_database.get()) == 0)
            Run(m_hive, Rollback).ToTheEnd();
    }

    LSTATUS Begun() const { return m_begun; }
    LSTATUS End() { return Run(m_hive, Commit).ToTheEnd(); }

private:
    Hive& m_hive;
    LSTATUS m_begun;
};

void Hive::DatabaseCloser::operator()(sqlite3* database) const { sqlite3_close_v2(database); }
void Hive::StatementCloser::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Hive::Hive(path file, Owner owner, std::uint32_t generation)
    : m_file(std::move(file)), m_owner(owner), m_generation(generation)
{
}

Hive::~Hive() { Close(); }

path Hive::UsualFile(Owner owner)
{
    const path folder = owner == Owner::User ? UserConfiguration() : SystemConfiguration();
    return folder.empty() ? path() : folder / "selvane" / "settings.db";
}

void Hive::Close()
{
    m_sharedHeader = nullptr;
    m_keys.clear();
    m_values.clear();
    m_statements = {};
    m_database.reset();
}

LSTATUS Hive::StatusOf(int result) const
{
    switch (result & 0xFF)
    {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
        return success;
    case SQLITE_PERM:
    case SQLITE_READONLY:
    case SQLITE_AUTH:
        return Status(ERROR_ACCESS_DENIED);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return Status(ERROR_BUSY);
    case SQLITE_NOMEM:
        return Status(ERROR_NOT_ENOUGH_MEMORY);
    case SQLITE_FULL:
        return Status(ERROR_DISK_FULL);
    case SQLITE_TOOBIG:
        return Status(ERROR_INVALID_PARAMETER);
    case SQLITE_CANTOPEN:
        return Status(ErrorOfErrno(sqlite3_system_errno(m_database.get())));
    case SQLITE_IOERR:
        return Status(ERROR_REGISTRY_IO_FAILED);
    default: // no database, a damaged one, or one of somebody else
        return Status(ERROR_BADDB);
    }
}

LSTATUS Hive::Open(Key used)
{
    // What cannot be locked is read as if it could not change; a log beside it says that it does.
    if (m_immutable && ::access(Log().c_str(), F_OK) == 0)
        Close();
    if (m_database)
        return success;

    struct stat state = {};
    if (m_file.empty())
        return Status(ERROR_PATH_NOT_FOUND);
    if (::stat(m_file.c_str(), &state) != 0)
    {
        const bool isGone = errno == ENOENT || errno == ENOTDIR;
        return !isGone ? Status(ErrorOfErrno(errno)) : used == root ? missing : deleted;
    }
    std::uint64_t lot = 0;
    LSTATUS status = OpenFile(false, lot);
    if (status != success && m_database && sqlite3_db_readonly(m_database.get(), "main") == 1 &&
        ::access(Log().c_str(), F_OK) != 0)
    {
        Close();
        status = OpenFile(true, lot);
    }
    if (status != success)
    {
        Close();
        return status;
    }
    // The keys of one file are not those of another that has come into its place.
    const Identity identity = {state.st_dev, state.st_ino, lot};
    const bool replaced = m_identity.has_value() && m_identity != identity;
    m_identity = identity;
    if (!replaced)
        return success;
    ++m_generation;
    return used == root ? success : deleted;
}

LSTATUS Hive::OpenFile(bool immutable, std::uint64_t& lot)
{
    m_immutable = immutable;
    sqlite3* database = nullptr;
    int result = immutable
                     ? sqlite3_open_v2(ImmutableUri(m_file).c_str(), &database,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr)
                     : sqlite3_open_v2(m_file.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    m_database.reset(database);
    if (result != SQLITE_OK)
        return StatusOf(result);
    sqlite3_busy_timeout(database, longestWait);
    if (m_owner == Owner::Machine)
    {
        // Who may only read it cannot make the files that go with it.
        int keep = 1;
        sqlite3_file_control(database, "main", SQLITE_FCNTL_PERSIST_WAL, &keep);
    }
    result = sqlite3_exec(database, "pragma synchronous = normal", nullptr, nullptr, nullptr);
    if (result != SQLITE_OK)
        return StatusOf(result);
    Run id(*this, ApplicationId);
    if (!id.Next())
        return id.Status();
    if (id.Integer(0) != applicationId)
        return Status(ERROR_BADDB);
    Run version(*this, UserVersion);
    if (!version.Next())
        return version.Status();
    lot = static_cast<std::uint64_t>(version.Integer(0));
    MapHeader();
    return success;
}

void Hive::MapHeader()
{
    Run mode(*this, JournalMode);
    sqlite3_file* file = nullptr;
    if (!mode.Next() || mode.Bytes(0) != "wal" || m_immutable ||
        sqlite3_file_control(m_database.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
        file->pMethods->iVersion < 2)
        return;
    void volatile* index = nullptr;
    constexpr int regionSize = 32768;
    const int result = file->pMethods->xShmMap(file, 0, regionSize, 0, &index);
    if (result == SQLITE_OK || result == SQLITE_READONLY)
        m_sharedHeader = static_cast<std::uint64_t*>(const_cast<void*>(index));
}

bool Hive::ReadHeader(Header& header) const
{
    if (m_sharedHeader == nullptr)
        return false;
    for (std::size_t i = 0; i < header.size(); ++i)
        header[i] = std::atomic_ref(m_sharedHeader[i]).load(std::memory_order_acquire);
    return true;
}

void Hive::ForgetIfChanged()
{
    Header now = {};
    if (ReadHeader(now) && now == m_header && m_keys.size() < mostRemembered && m_values.size() < mostRemembered)
        return;
    m_header = now;
    m_keys.clear();
    m_values.clear();
}

bool Hive::IsUnchanged() const
{
    Header now = {};
    return ReadHeader(now) && now == m_header;
}

LSTATUS Hive::Make() const
{
    boost::system::error_code failure;
    boost::filesystem::create_directories(m_file.parent_path(), failure);
    if (failure)
        return Status(ErrorOfErrno(failure.value()));
    // Made beside its place and linked to it whole: no process ever finds half a hive, also when this one is killed.
    const std::string made = boost::filesystem::unique_path(m_file.native() + ".%%%%%%%%%%%%").native();
    const int file = ::open(made.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, m_owner == Owner::User ? 0600 : 0644);
    if (file < 0)
        return Status(ErrorOfErrno(errno));
    sqlite3* opened = nullptr;
    int result = sqlite3_open_v2(made.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    std::int32_t lot = 0; // tells it from any other hive
    sqlite3_randomness(sizeof(lot), &lot);
    const std::string text = schema + ("pragma user_version = " + std::to_string(lot));
    if (result == SQLITE_OK)
        result = sqlite3_exec(opened, text.c_str(), nullptr, nullptr, nullptr);
    LSTATUS status = StatusOf(result);
    // Closing brings all of it into the one file.
    if (sqlite3_close(opened) != SQLITE_OK && status == success)
        status = Status(ERROR_REGISTRY_IO_FAILED);
    if (status == success && (::fsync(file) != 0 || (!LinkInto(made, m_file.native()) && errno != EEXIST)))
        status = Status(ErrorOfErrno(errno));
    ::close(file);
    for (const char* const suffix : {"", "-wal", "-shm"})
        ::unlink((made + suffix).c_str());
    return status;
}

LSTATUS Hive::OpenForWriting(Key used)
{
    int moved = 0;
    if (m_database && sqlite3_file_control(m_database.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK &&
        moved != 0)
        Close();
    return Open(used);
}

LSTATUS Hive::Writable()
{
    const LSTATUS status = Open(root);
    if (status != success)
        return status;
    return sqlite3_db_readonly(m_database.get(), "main") == 0 ? success : Status(ERROR_ACCESS_DENIED);
}

LSTATUS Hive::Existing(Key key)
{
    Run run(*this, KeyExists);
    if (run.Bind(key).Next())
        return success;
    const LSTATUS status = run.Status();
    return status == success ? deleted : status;
}

LSTATUS Hive::NothingAt(Key key, LSTATUS status, LSTATUS otherwise)
{
    if (status == success)
        status = Existing(key);
    return status == success ? otherwise : status;
}

LSTATUS Hive::Walk(Key parent, std::wstring_view path, Missing then, Key& key)
{
    if (path.empty())
    {
        key = parent;
        return Existing(parent);
    }
    if (path.front() == L'\\')
        return Status(ERROR_BAD_PATHNAME);
    Key at = parent;
    while (!path.empty())
    {
        const std::wstring_view name = path.substr(0, path.find(L'\\'));
        path.remove_prefix(std::min(path.size(), name.size() + 1));
        if (name.empty()) // several backslashes are as good as one
            continue;
        const std::string fold = Folded(name);
        Run find(*this, FindKey);
        if (find.Bind(at).Bind(fold).Next())
        {
            at = find.Integer(0);
            continue;
        }
        LSTATUS status = NothingAt(at, find.Status(), missing);
        if (status != missing || then == Missing::Fails)
            return status;
        if (name.size() > longestKeyName)
            return Status(ERROR_INVALID_PARAMETER);
        status = Run(*this, InsertKey).Bind(at).Bind(fold).Bind(formats::Utf8FromWide(name)).ToTheEnd();
        if (status != success)
            return status;
        at = sqlite3_last_insert_rowid(m_database.get());
    }
    key = at;
    return success;
}

LSTATUS Hive::Find(Key parent, std::wstring_view path, Key& key)
{
    LSTATUS status = Open(parent);
    if (status != success)
        return status;
    ForgetIfChanged();
    Compose(m_wanted, parent, path);
    const auto remembered = m_keys.find(m_wanted);
    Key found = absent;
    if (remembered != m_keys.end())
    {
        found = remembered->second;
    }
    else
    {
        status = Walk(parent, path, Missing::Fails, found);
        if (status != success && status != missing)
            return status;
        if (IsUnchanged())
            m_keys.emplace(m_wanted, found);
    }
    if (found == absent)
        return missing;
    key = found;
    return success;
}

LSTATUS Hive::FindOrCreate(Key parent, std::wstring_view path, Key& key)
{
    LSTATUS status = Find(parent, path, key);
    if (status != missing)
        return status;
    status = OpenForWriting(parent);
    if (status == missing)
    {
        status = Make();
        if (status == success)
            status = Open(parent);
    }
    if (status != success)
        return status;
    Transaction transaction(*this);
    status = transaction.Begun();
    if (status == success)
        status = Walk(parent, path, Missing::IsMade, key);
    return status == success ? transaction.End() : status;
}

LSTATUS Hive::DeleteTree(Key parent, std::wstring_view path)
{
    LSTATUS status = OpenForWriting(parent);
    if (status != success)
        return status;
    Transaction transaction(*this);
    status = transaction.Begun();
    Key top = absent;
    if (status == success)
        status = Walk(parent, path, Missing::Fails, top);
    if (status == success)
        status = Run(*this, DeleteValuesOfTree).Bind(top).ToTheEnd();
    if (status == success)
        status = Run(*this, DeleteKeysOfTree).Bind(top).ToTheEnd();
    return status == success ? transaction.End() : status;
}

LSTATUS Hive::Query(Key key, std::wstring_view name, Value& value)
{
    LSTATUS status = Open(key);
    if (status != success)
        return status;
    ForgetIfChanged();
    Compose(m_wanted, key, name);
    const auto remembered = m_values.find(m_wanted);
    if (remembered != m_values.end())
    {
        value = {remembered->second.type, remembered->second.data};
        return remembered->second.status;
    }

    const std::string fold = m_wanted.substr(sizeof(key));
    Run run(*this, QueryValue);
    value = {};
    if (run.Bind(key).Bind(fold).Next())
    {
        m_data = run.Bytes(1);
        value = {static_cast<DWORD>(run.Integer(0)), m_data};
    }
    else
    {
        status = NothingAt(key, run.Status(), missing);
    }
    if ((status == success || status == missing) && value.data.size() <= largestRemembered && IsUnchanged())
        m_values[m_wanted] = {status, value.type, std::string(value.data)};
    return status;
}

LSTATUS Hive::Set(Key key, std::wstring_view name, DWORD type, std::string_view data)
{
    if (name.size() > longestValueName)
        return Status(ERROR_INVALID_PARAMETER);
    LSTATUS status = OpenForWriting(key);
    if (status != success)
        return status;
    const std::string fold = Folded(name);
    const std::string given = formats::Utf8FromWide(name);
    status = Run(*this, SetValue).Bind(key).Bind(fold).Bind(given).Bind(type).BindBytes(data).ToTheEnd();
    return status == success && sqlite3_changes(m_database.get()) == 0 ? deleted : status;
}

LSTATUS Hive::DeleteValue(Key key, std::wstring_view name)
{
    LSTATUS status = OpenForWriting(key);
    if (status != success)
        return status;
    const std::string fold = Folded(name);
    status = Run(*this, RemoveValue).Bind(key).Bind(fold).ToTheEnd();
    return status == success && sqlite3_changes(m_database.get()) == 0 ? NothingAt(key, status, missing) : status;
}

LSTATUS Hive::SubKeyAt(Key key, DWORD index, std::wstring& name)
{
    const LSTATUS status = Open(key);
    if (status != success)
        return status;
    Run run(*this, KeyAtIndex);
    if (!run.Bind(key).Bind(index).Next())
        return NothingAt(key, run.Status(), Status(ERROR_NO_MORE_ITEMS));
    name = formats::WideFromUtf8(run.Bytes(0));
    return success;
}

LSTATUS Hive::ValueAt(Key key, DWORD index, std::wstring& name, Value& value)
{
    const LSTATUS status = Open(key);
    if (status != success)
        return status;
    Run run(*this, ValueAtIndex);
    if (!run.Bind(key).Bind(index).Next())
        return NothingAt(key, run.Status(), Status(ERROR_NO_MORE_ITEMS));
    m_data = run.Bytes(1);
    value = {static_cast<DWORD>(run.Integer(0)), m_data};
    name = formats::WideFromUtf8(run.Bytes(2));
    return success;
}

LSTATUS Hive::Info(Key key, RegistryKeyInfo& info)
{
    const LSTATUS status = Open(key);
    if (status != success)
        return status;
    Run keys(*this, CountKeys);
    Run values(*this, CountValues);
    if (!keys.Bind(key).Next())
        return keys.Status();
    if (!values.Bind(key).Next())
        return values.Status();
    const auto number = [](Run& run, int column) { return static_cast<DWORD>(run.Integer(column)); };
    info = {number(keys, 0), number(keys, 1), number(values, 0), number(values, 1), number(values, 2)};
    return Existing(key);
}

}
