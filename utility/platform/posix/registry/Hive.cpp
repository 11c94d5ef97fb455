#include "utility/platform/posix/registry/Hive.h"

#include "utility/platform/formats/Utf8.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/registry/NameFold.h"
#include "utility/platform/posix/registry/Sqlite.h"
#include "utility/platform/posix/registry/Status.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <sys/stat.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

using boost::filesystem::path;

constexpr Hive::Key absent = 0;

constexpr std::size_t longestKeyName = 256;
constexpr std::size_t longestValueName = 16383;

// Milliseconds until an operation gives up on another process that writes.
constexpr int longestWaitOfReaders = 100;
constexpr int longestWaitOfWriters = 5000;

// Seconds within which a file system may give two changes the same time.
constexpr std::int64_t coarsestTime = 2;

// Names have surrogates that belong to no pair where a file's name was no UTF-8.
std::string Stored(std::wstring_view name) { return formats::Utf8FromWide(name, formats::Malformed::kept); }
std::wstring NameOf(std::string_view stored) { return formats::WideFromUtf8(stored, formats::Malformed::kept); }

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

std::array<std::int64_t, 5> StampOf(const struct stat& state)
{
    return {static_cast<std::int64_t>(state.st_dev), static_cast<std::int64_t>(state.st_ino), state.st_size,
            state.st_mtim.tv_sec, state.st_mtim.tv_nsec};
}

}

Hive::Hive(path file, Owner owner, std::uint32_t generation)
    : m_file(std::move(file)), m_owner(owner), m_generation(generation)
{
}

Hive::~Hive() { Close(); }

void Hive::Close()
{
    m_remembered.Clear();
    m_statements = Statements();
    m_database.reset();
}

void Hive::CloseAtOnce()
{
    if (m_database)
        sqlite.db_config(m_database.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    Close();
}

void Hive::WaitFor(Purpose purpose)
{
    sqlite.busy_timeout(m_database.get(), purpose == Purpose::reading ? longestWaitOfReaders : longestWaitOfWriters);
}

bool Hive::HasChanged() const
{
    struct stat state = {};
    return ::access(Log().c_str(), F_OK) == 0 || ::stat(m_file.c_str(), &state) != 0 || StampOf(state) != m_stamp;
}

LSTATUS Hive::Open(Key used, Purpose purpose)
{
    // What cannot be locked is read as if it could not change, for as long as it has not.
    if (m_immutable && HasChanged())
        Close();
    if (m_database)
    {
        WaitFor(purpose);
        return success;
    }

    const LSTATUS gone = used == root ? missing : deleted;
    struct stat state = {};
    if (m_file.empty())
        return Status(ERROR_PATH_NOT_FOUND);
    if (::stat(m_file.c_str(), &state) != 0)
    {
        const bool isGone = errno == ENOENT || errno == ENOTDIR;
        return isGone ? gone : Status(ErrorOfErrno(errno));
    }
    std::uint64_t lot = 0;
    LSTATUS status = OpenFile(false, purpose, lot);
    // To SQLite a read that fails is damage: what is damaged is so at the next look too.
    if (status == Status(ERROR_BADDB) && m_database)
    {
        CloseAtOnce();
        status = OpenFile(false, purpose, lot);
    }
    if (status != success && m_database && sqlite.db_readonly(m_database.get(), "main") == 1 &&
        ::access(Log().c_str(), F_OK) != 0)
    {
        Close();
        status = OpenFile(true, purpose, lot);
    }
    if (status != success && m_database)
    {
        const auto close = [](Hive* hive) { hive->CloseAtOnce(); };
        const std::unique_ptr<Hive, decltype(close)> closing(this, close);
        // One that nothing can be read from is out of the way, whole, rather than refused for ever.
        if (SetHiveAside(m_database.get(), m_file))
            status = gone;
    }
    if (status != success)
        return status;
    if (state.st_mtim.tv_sec + coarsestTime < std::time(nullptr))
        m_stamp = StampOf(state);
    else
        m_stamp.reset();
    // The keys of one file are not those of another that has come into its place.
    const Identity identity = {state.st_dev, state.st_ino, lot};
    const bool replaced = m_identity.has_value() && m_identity != identity;
    m_identity = identity;
    if (!replaced)
        return success;
    ++m_generation;
    return used == root ? success : deleted;
}

LSTATUS Hive::OpenFile(bool immutable, Purpose purpose, std::uint64_t& lot)
{
    m_immutable = immutable;
    LSTATUS status = immutable ? OpenDatabase(ImmutableUri(m_file), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, m_database)
                               : OpenDatabase(m_file.native(), SQLITE_OPEN_READWRITE, m_database);
    if (status != success)
        return status;
    sqlite3* const database = m_database.get();
    if (IsEmpty(database))
        return Status(ERROR_BADDB);
    WaitFor(purpose);
    if (m_owner == Owner::machine)
    {
        // Who may only read it cannot make the files that go with it.
        int keep = 1;
        sqlite.file_control(database, "main", SQLITE_FCNTL_PERSIST_WAL, &keep);
    }
    // Used by one alone, a log has no index in shared memory; in the end there is none.
    if (!immutable && !MayHaveLog(m_file) && sqlite.db_readonly(database, "main") == 0)
    {
        const int result = sqlite.exec(database,
                                       "pragma locking_mode = exclusive; pragma journal_mode = delete;"
                                       "pragma locking_mode = normal",
                                       nullptr, nullptr, nullptr);
        if (result != SQLITE_OK)
            return StatusOf(result, database);
    }
    std::int64_t id = 0;
    std::int64_t version = 0;
    status = Existing(root); // looks at the tables as well, without which there is no use of it
    if (status == success || status == deleted)
        status = Number(m_statements.applicationId, id);
    if (status == success && id != hiveApplicationId)
        status = Status(ERROR_BADDB);
    if (status == success)
        status = Number(m_statements.userVersion, version);
    if (status != success)
        return status;
    lot = static_cast<std::uint64_t>(version);
    Run mode = Use(m_statements.journalMode);
    if (!mode.Next() || mode.Bytes(0) != "wal" || immutable)
        return success;
    m_remembered.Follow(database);
    return StatusOf(sqlite.exec(database, "pragma synchronous = normal", nullptr, nullptr, nullptr), database);
}

LSTATUS Hive::OpenForWriting(Key used)
{
    if (m_database && HasMoved(m_database.get()))
        Close();
    return Open(used, Purpose::writing);
}

LSTATUS Hive::OpenOrMake(Key used)
{
    LSTATUS status = OpenForWriting(used);
    if (status == missing)
    {
        status = MakeHiveFile(m_file, m_owner);
        if (status == success)
            status = Open(used, Purpose::writing);
    }
    return status;
}

LSTATUS Hive::Writable()
{
    const LSTATUS status = Open(root, Purpose::writing);
    if (status != success)
        return status;
    return sqlite.db_readonly(m_database.get(), "main") == 0 ? success : Status(ERROR_ACCESS_DENIED);
}

LSTATUS Hive::Number(Statement& statement, std::int64_t& number)
{
    Run run = Use(statement);
    if (!run.Next())
        return run.Status();
    number = run.Integer(0);
    return success;
}

LSTATUS Hive::Existing(Key key)
{
    Run run = Use(m_statements.keyExists);
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
        if (name.size() > longestKeyName)
            return Status(ERROR_INVALID_PARAMETER);
        const std::string fold = Folded(name);
        Run find = Use(m_statements.findKey);
        if (find.Bind(at).Bind(fold).Next())
        {
            at = find.Integer(0);
            continue;
        }
        LSTATUS status = NothingAt(at, find.Status(), missing);
        if (status != missing || then == Missing::fails)
            return status;
        status = Use(m_statements.insertKey).Bind(at).Bind(fold).Bind(Stored(name)).ToTheEnd();
        if (status != success)
            return status;
        at = sqlite.last_insert_rowid(m_database.get());
    }
    key = at;
    return success;
}

LSTATUS Hive::Find(Key parent, std::wstring_view path, Key& key, Purpose purpose)
{
    const LSTATUS status = Open(parent, purpose);
    return status == success ? LookUp(parent, path, key) : status;
}

LSTATUS Hive::LookUp(Key parent, std::wstring_view path, Key& key)
{
    Key found = absent;
    if (const Key* const remembered = m_remembered.FindKey(parent, path))
    {
        found = *remembered;
    }
    else
    {
        const LSTATUS status = Walk(parent, path, Missing::fails, found);
        if (status != success && status != missing)
            return status;
        m_remembered.KeepKey(found);
    }
    if (found == absent)
        return missing;
    key = found;
    return success;
}

LSTATUS Hive::FindOrCreate(Key parent, std::wstring_view path, Key& key)
{
    LSTATUS status = Open(parent, Purpose::writing);
    if (status == success)
        status = LookUp(parent, path, key);
    if (status != missing)
        return status;
    status = OpenOrMake(parent);
    if (status != success)
        return status;
    Transaction transaction(m_database.get(), m_statements);
    status = transaction.Begun();
    if (status == success)
        status = Walk(parent, path, Missing::isMade, key);
    return status == success ? transaction.End() : status;
}

LSTATUS Hive::DeleteTree(Key parent, std::wstring_view path)
{
    LSTATUS status = OpenForWriting(parent);
    if (status != success)
        return status;
    Transaction transaction(m_database.get(), m_statements);
    status = transaction.Begun();
    Key top = absent;
    if (status == success)
        status = Walk(parent, path, Missing::fails, top);
    if (status == success)
        status = Use(m_statements.deleteValuesOfTree).Bind(top).ToTheEnd();
    if (status == success)
        status = Use(m_statements.deleteKeysOfTree).Bind(top).ToTheEnd();
    return status == success ? transaction.End() : status;
}

LSTATUS Hive::Query(Key key, std::wstring_view name, Value& value)
{
    LSTATUS status = Open(key);
    if (status != success)
        return status;
    if (const Remembered::Value* const remembered = m_remembered.FindValue(key, name))
    {
        value = {remembered->type, remembered->data};
        return remembered->status;
    }

    Run run = Use(m_statements.queryValue);
    value = {};
    if (run.Bind(key).Bind(m_remembered.Fold()).Next())
    {
        m_data = run.Bytes(1);
        value = {static_cast<DWORD>(run.Integer(0)), m_data};
    }
    else
    {
        status = NothingAt(key, run.Status(), missing);
    }
    if (status == success || status == missing)
        m_remembered.KeepValue(status, value.type, value.data);
    return status;
}

LSTATUS Hive::Set(Key key, std::wstring_view name, DWORD type, std::string_view data)
{
    if (name.size() > longestValueName)
        return Status(ERROR_INVALID_PARAMETER);
    LSTATUS status = OpenOrMake(key);
    if (status != success)
        return status;
    const std::string fold = Folded(name);
    const std::string given = Stored(name);
    status = Use(m_statements.setValue).Bind(key).Bind(fold).Bind(given).Bind(type).BindBytes(data).ToTheEnd();
    return status == success && sqlite.changes(m_database.get()) == 0 ? deleted : status;
}

LSTATUS Hive::DeleteValue(Key key, std::wstring_view name)
{
    LSTATUS status = OpenForWriting(key);
    if (status != success)
        return status;
    const std::string fold = Folded(name);
    status = Use(m_statements.removeValue).Bind(key).Bind(fold).ToTheEnd();
    return status == success && sqlite.changes(m_database.get()) == 0 ? NothingAt(key, status, missing) : status;
}

bool Hive::Reach(Run& run, Remembered::Names names, Key key, DWORD index)
{
    const Remembered::Place from = m_remembered.PlaceUpTo(names, key, index);
    if (!run.Bind(key).Bind(from.fold).Bind(index - from.index).Next())
        return false;
    m_remembered.KeepPlace(names, key, {index, std::string(run.Bytes(0))});
    return true;
}

LSTATUS Hive::SubKeyAt(Key key, DWORD index, std::wstring& name)
{
    const LSTATUS status = Open(key);
    if (status != success)
        return status;
    Run run = Use(m_statements.keyAtIndex);
    if (!Reach(run, Remembered::Names::ofKeys, key, index))
        return NothingAt(key, run.Status(), Status(ERROR_NO_MORE_ITEMS));
    name = NameOf(run.Bytes(1));
    return success;
}

LSTATUS Hive::ValueAt(Key key, DWORD index, std::wstring& name, Value& value)
{
    const LSTATUS status = Open(key);
    if (status != success)
        return status;
    Run run = Use(m_statements.valueAtIndex);
    if (!Reach(run, Remembered::Names::ofValues, key, index))
        return NothingAt(key, run.Status(), Status(ERROR_NO_MORE_ITEMS));
    name = NameOf(run.Bytes(1));
    m_data = run.Bytes(3);
    value = {static_cast<DWORD>(run.Integer(2)), m_data};
    return success;
}

LSTATUS Hive::Info(Key key, RegistryKeyInfo& info)
{
    const LSTATUS status = Open(key);
    if (status != success)
        return status;
    Run keys = Use(m_statements.countKeys);
    Run values = Use(m_statements.countValues);
    if (!keys.Bind(key).Next())
        return keys.Status();
    if (!values.Bind(key).Next())
        return values.Status();
    const auto number = [](Run& run, int column) { return static_cast<DWORD>(run.Integer(column)); };
    info = {number(keys, 0), number(keys, 1), number(values, 0), number(values, 1), number(values, 2)};
    return Existing(key);
}

}
