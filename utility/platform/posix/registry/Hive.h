#pragma once

#include "utility/platform/posix/registry/HiveFile.h"
#include "utility/platform/posix/registry/Remembered.h"
#include "utility/platform/posix/registry/Statements.h"
#include "utility/platform/Registry.h"

#include <array>
#include <boost/filesystem/path.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace utility::platform::posix
{

/// A tree of keys with named values, kept in a SQLite database that several processes may use at once. A value that
/// was acknowledged survives the death of its writer; what a crash of the whole machine may take is the last few, and
/// where there is a log none of those from before the last user closed the hive.
///
/// Who reads waits for nobody where there is a log, and elsewhere a moment; who writes waits for some seconds.
///
/// Operations give the registry's status numbers. One thread at a time. What was read is remembered for as long as the
/// database is as it was.
class Hive
{
public:
    using Key = std::int64_t;
    static constexpr Key root = 1;

    using Owner = HiveOwner;

    Hive(boost::filesystem::path file, Owner owner, std::uint32_t generation = 0);
    Hive(const Hive&) = delete;
    Hive& operator=(const Hive&) = delete;
    ~Hive();

    const boost::filesystem::path& File() const { return m_file; }
    Owner Whose() const { return m_owner; }

    /// Changes when another file has come into the place of the hive's: keys other than the root are then deleted.
    std::uint32_t Generation() const { return m_generation; }

    /// Lets go of the database, which the next operation opens again. Keys stay good.
    void Close();

    /// The same for who cannot wait for the disk: what is in the log stays there until a later use.
    void CloseAtOnce();

    enum class Purpose
    {
        reading,
        writing
    };
    /// The purpose is that of what comes next: it says how long to wait.
    LSTATUS Find(Key parent, std::wstring_view path, Key& key, Purpose purpose = Purpose::reading);
    LSTATUS FindOrCreate(Key parent, std::wstring_view path, Key& key);
    /// Of the root's tree all but the root.
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
    LSTATUS Open(Key used, Purpose purpose = Purpose::reading);
    LSTATUS OpenFile(bool immutable, Purpose purpose, std::uint64_t& lot);
    LSTATUS OpenForWriting(Key used);
    void WaitFor(Purpose purpose);
    bool HasChanged() const;
    LSTATUS OpenOrMake(Key used);
    std::string Log() const { return m_file.native() + "-wal"; }

    Run Use(Statement& statement) { return {m_database.get(), statement}; }

    enum class Missing
    {
        fails,
        isMade
    };
    LSTATUS LookUp(Key parent, std::wstring_view path, Key& key);
    LSTATUS Walk(Key parent, std::wstring_view path, Missing then, Key& key);
    LSTATUS Number(Statement& statement, std::int64_t& number);
    LSTATUS Existing(Key key);
    LSTATUS NothingAt(Key key, LSTATUS status, LSTATUS otherwise);
    bool Reach(Run& run, Remembered::Names names, Key key, DWORD index);

    boost::filesystem::path m_file;
    Owner m_owner;
    Database m_database;
    Statements m_statements;
    /// Of a file that is read as if it could not change: device, number, size, and the time of the last change.
    using Stamp = std::array<std::int64_t, 5>;
    bool m_immutable = false;
    std::optional<Stamp> m_stamp; ///< when it was opened, unless another change could have left it the same

    /// Of a file: its device, its number there, and the lot that was drawn when it was made.
    using Identity = std::array<std::uint64_t, 3>;
    std::optional<Identity> m_identity;
    std::uint32_t m_generation;

    Remembered m_remembered;
    std::string m_data; ///< of the value last given, if it is not remembered
};

}
