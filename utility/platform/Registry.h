#pragma once

// The store of the settings: two hives, one for the machine and one for the user, each a tree of keys with named values
// that carry a type tag. The registry on Windows; on Linux a hive is a SQLite database (platform/Hives.h says where).
//
//     HKEY key = nullptr;
//     if (Registry().RegOpenKeyExW(HKEY_CURRENT_USER, L"SOFTWARE\\Selvane", KEY_READ, key) == 0)
//         List(key);
//     Registry().RegCloseKey(key);

#include "utility/platform/ErrorCodes.h"
#include "utility/platform/Export.h"
#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <cstdint>

#ifndef _WIN32

/// The two hives: the user's, and the machine's.
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(std::intptr_t{static_cast<std::int32_t>(0x80000001)});
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(std::intptr_t{static_cast<std::int32_t>(0x80000002)});

inline constexpr DWORD KEY_READ = 0x20019;  ///< the right to read a key's values and to enumerate
inline constexpr DWORD KEY_WRITE = 0x20006; ///< the right to set values and to make subkeys

inline constexpr DWORD REG_NONE = 0;      ///< the type tag of bytes without a type
inline constexpr DWORD REG_SZ = 1;        ///< that of a text
inline constexpr DWORD REG_EXPAND_SZ = 2; ///< that of a text with names of environment variables
inline constexpr DWORD REG_BINARY = 3;    ///< that of bytes
inline constexpr DWORD REG_DWORD = 4;     ///< that of a number of 32 bits
inline constexpr DWORD REG_MULTI_SZ = 7;  ///< that of several texts, behind the last of which an empty one stands
inline constexpr DWORD REG_QWORD = 11;    ///< that of a number of 64 bits

#endif

namespace utility::platform
{

/// What a key holds.
struct RegistryKeyInfo
{
    DWORD subKeys = 0;          ///< how many
    DWORD longestSubKey = 0;    ///< characters of the longest name, without a terminator
    DWORD values = 0;           ///< how many
    DWORD longestValueName = 0; ///< characters, without a terminator
    DWORD largestValue = 0;     ///< bytes
};

/// Operations on keys, under the names that the system has for them. Any thread may call, and several processes may
/// use the same hive at once.
///
/// Each gives 0 for success or the registry's status number: no such key or value 2, not allowed 5, no key 6, the
/// buffer is too small 234, nothing more to enumerate 259, the key was deleted meanwhile 1018. Nothing throws.
///
/// A key is named by a path with backslashes, relative to its parent: HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE or an open
/// key; a null or empty path is the parent itself, one that begins with a backslash is refused (161). Names are found
/// in any case and keep the case they were made with. A key's name has at most 256 characters, a value's 16383; a
/// longer one is an invalid parameter (87). A null or empty value name is the key's unnamed value. Text in values is
/// stored as UTF-16, terminator included; the bytes are the caller's. Windows alone looks behind the bytes of a text
/// without a terminator, and stores one that it finds there as well.
class RegistryService
{
public:
    virtual ~RegistryService() = default;

    /// Opens a key, and creates it, with those on the way to it, where it is absent. The caller closes `key`.
    virtual LSTATUS RegCreateKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) = 0;

    /// Opens a key that exists. The caller closes `key`, which stays as it was on failure.
    virtual LSTATUS RegOpenKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) = 0;

    /// RegOpenKeyExW with the most access that can be had.
    virtual LSTATUS RegOpenKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) = 0;

    /// RegCreateKeyExW with all the access that can be had.
    virtual LSTATUS RegCreateKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) = 0;

    /// The value's type and its bytes. `size` has the room at `data` and gets the size of the value. With a null `data`
    /// type and size alone are given; where the room is too small the status is 234 and the bytes are unspecified.
    /// `type` may be null, and so may `size` where `data` is.
    virtual LSTATUS RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* type, void* data, DWORD* size) = 0;

    /// Stores a value: `size` bytes with a type tag, in the place of an earlier one. Null bytes need a size of 0.
    virtual LSTATUS RegSetValueExW(HKEY key, const wchar_t* name, DWORD type, const void* data, DWORD size) = 0;

    /// Sets the unnamed value of a subkey, which is created where it is absent, to a null-terminated text, as REG_SZ.
    /// Only that of the parent itself asks for the right to set values.
    virtual LSTATUS RegSetValueW(HKEY key, const wchar_t* subKey, const wchar_t* text) = 0;

    /// Deletes a value; 2 if there is none.
    virtual LSTATUS RegDeleteValueW(HKEY key, const wchar_t* name) = 0;

    /// Closes a key that was opened; the two hives' own are left alone.
    virtual LSTATUS RegCloseKey(HKEY key) = 0;

    /// Deletes a key with all that lies under it; of a hive as a whole, all but its root.
    virtual LSTATUS SHDeleteKeyW(HKEY parent, const wchar_t* subKey) = 0;

    /// The name of the subkey at a position, counted from 0. `length` has the room at `name` in characters, terminator
    /// included, and gets the length of the name, without it.
    virtual LSTATUS RegEnumKeyExW(HKEY key, DWORD index, wchar_t* name, DWORD& length) = 0;

    /// The value at a position, counted from 0: its name as in RegEnumKeyExW, the rest as in RegQueryValueExW.
    virtual LSTATUS RegEnumValueW(HKEY key, DWORD index, wchar_t* name, DWORD& length, DWORD* type, void* data,
                                  DWORD* size) = 0;

    /// How many subkeys and values a key has, and how much room the largest takes.
    virtual LSTATUS RegQueryInfoKeyW(HKEY key, RegistryKeyInfo& info) = 0;

    /// Closes the files that it keeps open, if it has any, until it is used again. Keys stay good.
    virtual void Rest() {}
};

/// Where a test puts a substitute in place.
UTILITY_API ServiceSlot<RegistryService>& RegistrySlot() noexcept;
/// The store of this process.
inline RegistryService& Registry() noexcept { return RegistrySlot().Get(); }

}
