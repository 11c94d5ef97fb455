#pragma once

#include "utility/platform/Registry.h"

#include <array>
#include <boost/filesystem/path.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;

namespace utility::platform::posix
{

/// A tree of keys with named values, kept in a SQLite database that several processes may use at once. A value that
/// was acknowledged survives the death of its writer; what a crash of the whole machine may take is the last few.
///
/// Operations give the registry's status numbers. One thread at a time.
///
/// What was read is remembered, and used as long as the database is as it was. That is seen without a system call: a
/// database with a write-ahead log has an index of the log in memory that all its users share, whose header changes
/// with every commit of any of them.
class Hive
{
public:
    using Key = std::int64_t;
    static constexpr Key root = 1;

    enum class Owner
    {
        User,
        Machine ///< all may read it
    };

    Hive(boost::filesystem::path file, Owner owner, std::uint32_t generation = 0);
    Hive(const Hive&) = delete;
    Hive& operator=(const Hive&) = delete;
    ~Hive();

    /// Where it is unless it was moved; empty for a user without a home.
    static boost::filesystem::path UsualFile(Owner owner);

    const boost::filesystem::path& File() const { return m_file; }
    Owner Whose() const { return m_owner; }

    /// Changes when another file has come into the place of the hive's: keys other than the root are then deleted.
    std::uint32_t Generation() const { return m_generation; }

    /// Lets go of the database, which the next operation opens again. Keys stay good.
    void Close();

    LSTATUS Find(Key parent, std::wstring_view path, Key& key);
    LSTATUS FindOrCreate(Key parent, std::wstring_view path, Key& key);
    LSTATUS DeleteTree(Key parent, std::wstring_view path);
    /// Whether values can be set and keys made.
    LSTATUS Writable();

    struct Value
    {
        DWORD type;
        std::string_view data; ///< good until the next operation
    };
    LSTATUS Query(Key key, std::wstring_view name, Value& value);
    LSTATUS Set(Key key, std::wstring_view name, DWORD type, std::string_view data);
    LSTATUS DeleteValue(Key key, std::wstring_view name);

    LSTATUS SubKeyAt(Key key, DWORD index, std::wstring& name);
    LSTATUS ValueAt(Key key, DWORD index, std::wstring& name, Value& value);
    LSTATUS Info(Key key, RegistryKeyInfo& info);

private:
    struct DatabaseCloser
    {
        void operator()(sqlite3* database) const;
    };
    struct StatementCloser
    {
        void operator()(sqlite3_stmt* statement) const;
    };
    using StatementPtr = std::unique_ptr<sqlite3_stmt, StatementCloser>;

    enum StatementId
    {
        ApplicationId,
        UserVersion,
        JournalMode,
        Begin,
        Commit,
        Rollback,
        KeyExists,
        FindKey,
        InsertKey,
        DeleteValuesOfTree,
        DeleteKeysOfTree,
        QueryValue,
        SetValue,
        RemoveValue,
        KeyAtIndex,
        ValueAtIndex,
        CountKeys,
        CountValues,
        StatementCount
    };

    class Run;
    class Transaction;

    struct Remembered
    {
        LSTATUS status;
        DWORD type;
        std::string data;
    };

    /// The header of the log's index: two copies of 48 bytes.
    using Header = std::array<std::uint64_t, 12>;

    LSTATUS Open(Key used);
    LSTATUS OpenFile(bool immutable, std::uint64_t& lot);
    LSTATUS OpenForWriting(Key used);
    LSTATUS Make() const;
    std::string Log() const { return m_file.native() + "-wal"; }

    void MapHeader();
    bool ReadHeader(Header& header) const;
    void ForgetIfChanged();
    bool IsUnchanged() const;

    enum class Missing
    {
        Fails,
        IsMade
    };
    LSTATUS Walk(Key parent, std::wstring_view path, Missing then, Key& key);
    LSTATUS Existing(Key key);
    LSTATUS NothingAt(Key key, LSTATUS status, LSTATUS otherwise);
    LSTATUS StatusOf(int result) const;

    boost::filesystem::path m_file;
    Owner m_owner;
    std::unique_ptr<sqlite3, DatabaseCloser> m_database;
    std::array<StatementPtr, StatementCount> m_statements;
    bool m_immutable = false;

    /// Of a file: its device, its number there, and the lot that was drawn when it was made.
    using Identity = std::array<std::uint64_t, 3>;
    std::optional<Identity> m_identity;
    std::uint32_t m_generation;

    std::uint64_t* m_sharedHeader = nullptr;
    Header m_header{};                                    ///< when what is remembered was read
    std::unordered_map<std::string, Key> m_keys;          ///< by parent and path; 0 for an absent one
    std::unordered_map<std::string, Remembered> m_values; ///< by key and name
    std::string m_wanted;                                 ///< what is looked up in one of the two
    std::string m_data;                                   ///< of the value last given, if it is not remembered
};

}
