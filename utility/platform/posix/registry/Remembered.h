#pragma once

#include "utility/platform/Types.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

struct sqlite3;

namespace utility::platform::posix
{

/// What was read from a hive's database, for as long as that is as it was. That is seen without a system call: a
/// database with a write-ahead log has an index of the log in memory that all its users share, whose header changes
/// with every commit of any of them.
///
///     const std::int64_t* key = remembered.FindKey(parent, path);
///     if (key == nullptr)
///         remembered.KeepKey(LookUp(parent, remembered.Fold()));
class Remembered
{
public:
    /// A value, or the status of one that is not there.
    struct Value
    {
        LSTATUS status;
        DWORD type;
        std::string data;
    };

    /// Looks at the header of a database that has a log. Nothing is remembered of one that is not followed.
    void Follow(sqlite3* database);

    /// Forgets all, and the database.
    void Clear();

    /// What a name below a key was kept as, null if it was not. The key at a path is 0 where there is none.
    const std::int64_t* FindKey(std::int64_t parent, std::wstring_view path);
    const Value* FindValue(std::int64_t key, std::wstring_view name);

    enum class Names
    {
        ofKeys,
        ofValues
    };
    /// A position among the names below a key, in the order of the names as they are looked up.
    struct Place
    {
        DWORD index = 0;
        std::string fold;
    };

    /// The place last kept for the key, unless that is beyond a position; then, and without any, the start.
    Place PlaceUpTo(Names names, std::int64_t key, DWORD index);

    /// The name last looked for, as it is looked up in the database.
    std::string_view Fold() const { return std::string_view(m_wanted).substr(sizeof(std::int64_t)); }

    /// Keeps what was read since that under the name, unless the database has changed meanwhile.
    void KeepKey(std::int64_t key);
    void KeepValue(LSTATUS status, DWORD type, std::string_view data);
    /// Keeps where an enumeration came to since PlaceUpTo.
    void KeepPlace(Names names, std::int64_t key, Place place);

private:
    /// The header of the log's index: two copies of 48 bytes.
    using Header = std::array<std::uint64_t, 12>;

    void Want(std::int64_t key, std::wstring_view name);
    bool ReadHeader(Header& header) const;
    bool IsUnchanged() const;
    void Forget();
    void ForgetWhatMayHaveChanged();

    std::uint64_t* m_sharedHeader = nullptr;
    Header m_header{};                                               ///< when what is remembered was read
    std::unordered_map<std::string, std::int64_t> m_keys;            ///< by parent and path
    std::unordered_map<std::string, Value> m_values;                 ///< by key and name
    std::array<std::unordered_map<std::int64_t, Place>, 2> m_places; ///< by what is enumerated, and key
    std::string m_wanted;                                            ///< what was last looked for in one of the two
};

}
