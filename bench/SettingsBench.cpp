// A setting read by its type, from the user's hive, from the machine's behind it and from neither, and a setting
// written. Peers: one prepared SQLite read or write with all its parts known ahead, a memory-mapped store, and a tree
// in memory that is read from, and wholly written to, a text file.

#include "utility/platform/Hives.h"
#include "utility/platform/Registry.h"
#include "utility/settings/AppSettings.h"

#include <benchmark/benchmark.h>
#include <boost/filesystem/operations.hpp>
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>

#include <array>
#include <cstring>
#include <lmdb.h>
#include <sqlite3.h>
#include <stdexcept>
#include <string>

namespace
{

using boost::filesystem::path;
using utility::platform::HiveFile;
using utility::platform::Registry;
using utility::platform::SetHiveFile;

constexpr int sections = 20;
constexpr int names = 20;

// One that is there, in the middle.
constexpr const wchar_t* section = L"Section11";
constexpr const wchar_t* name = L"Number13";

/// 400 numbers are in each store: the one in section s and name n is s * 100 + n.
constexpr int NumberOf(int s, int n) { return s * 100 + n; }
constexpr int number = NumberOf(11, 13);

path Folder()
{
    static const path folder = []
    {
        path made = path(UTILITY_BENCH_FOLDER) / "settings";
        remove_all(made);
        create_directories(made);
        return made;
    }();
    return folder;
}

class Settings : public CQLMAppSettings
{
public:
    explicit Settings(const std::wstring& key) : CQLMAppSettings(key) {}
};

/// An application key that no object was made for. One that was made before the hives moved would find nothing.
std::wstring FreshKey()
{
    static int made = 0;
    return L"SOFTWARE\\Selvane\\App" + std::to_wstring(++made);
}

/// Both hives in the benchmark's folder, from the first call on.
void MoveHives()
{
    static const bool moved = SetHiveFile(HKEY_CURRENT_USER, Folder() / "user.db") &&
                              SetHiveFile(HKEY_LOCAL_MACHINE, Folder() / "machine.db");
    static_cast<void>(moved);
}

/// Puts the numbers below a key of a hive, if one is given.
void Fill(const std::wstring& key, HKEY hive)
{
    MoveHives();
    for (int s = 0; hive != nullptr && s < sections; ++s)
    {
        HKEY opened = nullptr;
        Registry().RegCreateKeyW(hive, (key + L"\\Section" + std::to_wstring(s)).c_str(), opened);
        for (int n = 0; n < names; ++n)
        {
            const int value = NumberOf(s, n);
            Registry().RegSetValueExW(opened, (L"Number" + std::to_wstring(n)).c_str(), REG_DWORD, &value,
                                      sizeof(value));
        }
        Registry().RegCloseKey(opened);
    }
}

template <auto Hive, int Expected>
void ReadSetting(benchmark::State& state)
{
    const std::wstring key = FreshKey();
    Fill(key, Hive());
    const Settings settings(key);
    if (settings.GetValue(section, name, -1) != Expected)
        return state.SkipWithError("another number");
    for (auto _ : state)
        benchmark::DoNotOptimize(settings.GetValue(section, name, -1));
}

constexpr auto userHive = [] { return HKEY_CURRENT_USER; };
constexpr auto machineHive = [] { return HKEY_LOCAL_MACHINE; };
constexpr auto noHive = [] { return static_cast<HKEY>(nullptr); };

void WriteSetting(benchmark::State& state)
{
    const std::wstring key = FreshKey();
    Fill(key, HKEY_CURRENT_USER);
    const Settings settings(key);
    int value = 0;
    for (auto _ : state)
    {
        if (!settings.SetValue(section, name, ++value))
            return state.SkipWithError("not written");
    }
    if (settings.GetValue(section, name, -1) != value)
        state.SkipWithError("another number");
}

/// A setting is written and read again in turn: nothing that was remembered holds.
void WriteAndReadSetting(benchmark::State& state)
{
    const std::wstring key = FreshKey();
    Fill(key, HKEY_CURRENT_USER);
    const Settings settings(key);
    int value = 0;
    for (auto _ : state)
    {
        if (!settings.SetValue(section, name, ++value) || settings.GetValue(section, name, -1) != value)
            return state.SkipWithError("not written");
    }
}

void FirstSettings(benchmark::State& state)
{
    MoveHives();
    for (auto _ : state)
    {
        state.PauseTiming();
        const std::wstring key = FreshKey();
        for (HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
        {
            HKEY opened = nullptr;
            Registry().RegCreateKeyW(hive, key.c_str(), opened);
            Registry().RegCloseKey(opened);
            // Lets go of the database: the next use is as in a new process.
            SetHiveFile(hive, HiveFile(hive));
        }
        state.ResumeTiming();
        benchmark::DoNotOptimize(Settings(key));
    }
}

/// The numbers in a table of their own, with the same journal and the same care for the disk as a hive.
class RawTable
{
public:
    RawTable()
    {
        const path file = Folder() / "raw.db";
        remove(file);
        Check(sqlite3_open_v2(file.c_str(), &m_database,
                              SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr));
        Run("pragma journal_mode = wal; pragma synchronous = normal;"
            "create table numbers (key integer, name text, type integer, data blob, primary key (key, name))"
            " without rowid; begin");
        m_write = Prepared("insert into numbers values (?1, ?2, ?3, ?4) on conflict (key, name) do update set type = "
                           "excluded.type, data = excluded.data");
        m_read = Prepared("select type, data from numbers where key = ?1 and name = ?2");
        for (int s = 0; s < sections; ++s)
            for (int n = 0; n < names; ++n)
                Write(s, "NUMBER" + std::to_string(n), NumberOf(s, n));
        Run("commit");
    }
    RawTable(const RawTable&) = delete;
    RawTable& operator=(const RawTable&) = delete;
    ~RawTable()
    {
        sqlite3_finalize(m_read);
        sqlite3_finalize(m_write);
        sqlite3_close(m_database);
    }

    int Read(int key, const std::string& wanted)
    {
        sqlite3_bind_int(m_read, 1, key);
        sqlite3_bind_text(m_read, 2, wanted.data(), static_cast<int>(wanted.size()), SQLITE_STATIC);
        int value = -1;
        if (sqlite3_step(m_read) == SQLITE_ROW && sqlite3_column_int(m_read, 0) == REG_DWORD)
            std::memcpy(&value, sqlite3_column_blob(m_read, 1), sizeof(value));
        sqlite3_reset(m_read);
        return value;
    }

    bool Write(int key, const std::string& wanted, int value)
    {
        sqlite3_bind_int(m_write, 1, key);
        sqlite3_bind_text(m_write, 2, wanted.data(), static_cast<int>(wanted.size()), SQLITE_STATIC);
        sqlite3_bind_int(m_write, 3, REG_DWORD);
        sqlite3_bind_blob(m_write, 4, &value, sizeof(value), SQLITE_STATIC);
        const bool done = sqlite3_step(m_write) == SQLITE_DONE;
        sqlite3_reset(m_write);
        return done;
    }

private:
    static void Check(int result)
    {
        if (result != SQLITE_OK)
            throw std::runtime_error(sqlite3_errstr(result));
    }
    void Run(const char* text) { Check(sqlite3_exec(m_database, text, nullptr, nullptr, nullptr)); }
    sqlite3_stmt* Prepared(const char* text)
    {
        sqlite3_stmt* statement = nullptr;
        Check(sqlite3_prepare_v3(m_database, text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
        return statement;
    }

    sqlite3* m_database = nullptr;
    sqlite3_stmt* m_read = nullptr;
    sqlite3_stmt* m_write = nullptr;
};

/// The numbers in LMDB, under "section\name". Like the other stores it leaves it to the system when the bytes reach the
/// disk.
class MappedStore
{
public:
    MappedStore()
    {
        const path folder = Folder() / "lmdb";
        remove_all(folder);
        create_directories(folder);
        Check(mdb_env_create(&m_environment));
        Check(mdb_env_set_mapsize(m_environment, std::size_t{64} << 20));
        Check(mdb_env_open(m_environment, folder.c_str(), MDB_NOSYNC, 0600));
        MDB_txn* transaction = nullptr;
        Check(mdb_txn_begin(m_environment, nullptr, 0, &transaction));
        Check(mdb_dbi_open(transaction, nullptr, 0, &m_table));
        for (int s = 0; s < sections; ++s)
            for (int n = 0; n < names; ++n)
                Check(Put(transaction, "Section" + std::to_string(s) + "\\Number" + std::to_string(n), NumberOf(s, n)));
        Check(mdb_txn_commit(transaction));
        Check(mdb_txn_begin(m_environment, nullptr, MDB_RDONLY, &m_reading));
        mdb_txn_reset(m_reading);
    }
    MappedStore(const MappedStore&) = delete;
    MappedStore& operator=(const MappedStore&) = delete;
    ~MappedStore()
    {
        mdb_txn_abort(m_reading);
        mdb_env_close(m_environment);
    }

    int Read(const std::string& key)
    {
        mdb_txn_renew(m_reading);
        MDB_val wanted{key.size(), const_cast<char*>(key.data())};
        MDB_val found{};
        int value = -1;
        if (mdb_get(m_reading, m_table, &wanted, &found) == MDB_SUCCESS)
            std::memcpy(&value, found.mv_data, sizeof(value));
        mdb_txn_reset(m_reading);
        return value;
    }

    bool Write(const std::string& key, int value)
    {
        MDB_txn* transaction = nullptr;
        return mdb_txn_begin(m_environment, nullptr, 0, &transaction) == MDB_SUCCESS &&
               Put(transaction, key, value) == MDB_SUCCESS && mdb_txn_commit(transaction) == MDB_SUCCESS;
    }

private:
    static void Check(int result)
    {
        if (result != MDB_SUCCESS)
            throw std::runtime_error(mdb_strerror(result));
    }
    int Put(MDB_txn* transaction, const std::string& key, int value) const
    {
        MDB_val wanted{key.size(), const_cast<char*>(key.data())};
        MDB_val data{sizeof(value), &value};
        return mdb_put(transaction, m_table, &wanted, &data, 0);
    }

    MDB_env* m_environment = nullptr;
    MDB_dbi m_table = 0;
    MDB_txn* m_reading = nullptr;
};

boost::property_tree::ptree& Tree()
{
    static boost::property_tree::ptree tree = []
    {
        boost::property_tree::ptree made;
        for (int s = 0; s < sections; ++s)
            for (int n = 0; n < names; ++n)
                made.put("Section" + std::to_string(s) + ".Number" + std::to_string(n), NumberOf(s, n));
        const std::string file = (Folder() / "tree.ini").string();
        write_ini(file, made);
        read_ini(file, made);
        return made;
    }();
    return tree;
}

void ReadRaw(benchmark::State& state)
{
    RawTable table;
    const std::string wanted = "NUMBER13";
    if (table.Read(11, wanted) != number)
        return state.SkipWithError("another number");
    for (auto _ : state)
        benchmark::DoNotOptimize(table.Read(11, wanted));
}

void WriteRaw(benchmark::State& state)
{
    RawTable table;
    const std::string wanted = "NUMBER13";
    int value = 0;
    for (auto _ : state)
    {
        if (!table.Write(11, wanted, ++value))
            return state.SkipWithError("not written");
    }
    if (table.Read(11, wanted) != value)
        state.SkipWithError("another number");
}

void WriteAndReadRaw(benchmark::State& state)
{
    RawTable table;
    const std::string wanted = "NUMBER13";
    int value = 0;
    for (auto _ : state)
    {
        if (!table.Write(11, wanted, ++value) || table.Read(11, wanted) != value)
            return state.SkipWithError("not written");
    }
}

void ReadMapped(benchmark::State& state)
{
    MappedStore store;
    const std::string key = "Section11\\Number13";
    if (store.Read(key) != number)
        return state.SkipWithError("another number");
    for (auto _ : state)
        benchmark::DoNotOptimize(store.Read(key));
}

void WriteMapped(benchmark::State& state)
{
    MappedStore store;
    const std::string key = "Section11\\Number13";
    int value = 0;
    for (auto _ : state)
    {
        if (!store.Write(key, ++value))
            return state.SkipWithError("not written");
    }
    if (store.Read(key) != value)
        state.SkipWithError("another number");
}

void ReadTree(benchmark::State& state)
{
    if (Tree().get("Section11.Number13", -1) != number)
        return state.SkipWithError("another number");
    for (auto _ : state)
        benchmark::DoNotOptimize(Tree().get("Section11.Number13", -1));
}

void WriteTree(benchmark::State& state)
{
    boost::property_tree::ptree tree = Tree();
    const std::string file = (Folder() / "written.ini").string();
    int value = 0;
    for (auto _ : state)
    {
        tree.put("Section11.Number13", ++value);
        write_ini(file, tree);
    }
}

BENCHMARK(ReadSetting<userHive, number>)->Name("read a setting/Utility:user's hive");
BENCHMARK(ReadSetting<machineHive, number>)->Name("read a setting/Utility:machine's hive");
BENCHMARK(ReadSetting<noHive, -1>)->Name("read a setting/Utility:in none");
BENCHMARK(ReadRaw)->Name("read a setting/SQLite, prepared");
BENCHMARK(ReadMapped)->Name("read a setting/LMDB");
BENCHMARK(ReadTree)->Name("read a setting/property tree in memory");

BENCHMARK(WriteSetting)->Name("write a setting/Utility");
BENCHMARK(WriteRaw)->Name("write a setting/SQLite, prepared");
BENCHMARK(WriteMapped)->Name("write a setting/LMDB");
BENCHMARK(WriteTree)->Name("write a setting/property tree to its file");

BENCHMARK(WriteAndReadSetting)->Name("write a setting and read it/Utility");
BENCHMARK(WriteAndReadRaw)->Name("write a setting and read it/SQLite, prepared");

BENCHMARK(FirstSettings)->Name("first settings object/Utility")->Unit(benchmark::kMillisecond)->Iterations(20);

}
