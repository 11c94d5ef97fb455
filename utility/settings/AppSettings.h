#pragma once

// The application's settings: named values in two hives, one for the machine and one for the user. A read takes the
// user's value if there is one, else the machine's, else the caller's default; a write goes to the user's hive.
//
//     CQLMAppSettings::SetProductName(L"Mill"); // ahead of the first instance()
//     CQLMAppSettings& settings = CQLMAppSettings::instance();
//     settings.SetValue(L"Options\\General", L"Tolerance", 0.01);
//     assert(settings.GetValue(L"Options\\General", L"Tolerance", 0.1) == 0.01);
//     assert(settings.GetValue(L"Options\\General", L"Machine", L"none") == L"none");
//
// Values are not kept in memory: every call goes to the store, in which each type has its own form.
//
//   text                                std::wstring, const wchar_t*          REG_SZ
//   integers of 32 bits or fewer, bool  int, unsigned int, DWORD, ...         REG_DWORD
//   integers of 64 bits                 std::int64_t, std::uint64_t, ...      REG_BINARY, 8 bytes
//   other numbers, points in time       float, double, FILETIME               REG_BINARY, 4 or 8 bytes
//   a block of bytes                    const void* and a size, write only    REG_BINARY
//
// A value of another form, or one that is longer than its type, counts as absent; of a shorter number the missing bytes
// are those of the default.
//
// Any thread may call, once the objects are made; SetProductName and the making of objects are not guarded. Nothing is
// reported and a store that fails throws nothing: a failed read gives the default, a failed write false.
//
// A key is named by wide text, in which the backslash alone separates and a slash is part of a name, or by a path,
// whose parts are the keys on the way: AppSubKey() / "Options" is the same key on every system.

#include "utility/guards/ResourcePtr.h"
#include "utility/platform/Export.h"
#include "utility/platform/Types.h"
#include "utility/settings/RegistryString.h"

#include <concepts>
#include <string>
#include <string_view>

namespace boost::filesystem
{
class path;
}

namespace utility
{

/// The name of a key as a caller has it: anything that is null-terminated wide text, or a path. Made where it is
/// passed. What stands behind a null character is not part of it.
class KeyName
{
public:
    /// A text by its pointer stays the caller's, for as long as the name is used.
    template <std::convertible_to<const wchar_t*> Text>
    KeyName(const Text& text) : m_text(text)
    {
    }
    /// Likewise, up to the first null character.
    KeyName(const std::wstring& text) : m_text(text.c_str()) {}
    /// The parts of the path, joined by backslashes.
    UTILITY_API KeyName(const boost::filesystem::path& path);
    KeyName(const KeyName&) = delete;
    KeyName& operator=(const KeyName&) = delete;

    /// The name, null-terminated.
    const wchar_t* Text() const { return m_text; }

private:
    std::wstring m_joined; ///< the parts of a path
    const wchar_t* m_text;
};

}

class UTILITY_API CQLMAppSettings
{
public:
    CQLMAppSettings(const CQLMAppSettings&) = delete;
    CQLMAppSettings& operator=(const CQLMAppSettings&) = delete;

    /// The settings of the application. The first call makes their key: CompanyKeyName and the product name or, if that
    /// is empty, the application's title.
    static CQLMAppSettings& instance();

    /// The start of every application key: "SOFTWARE\Selvane\".
    static const std::wstring& CompanyKeyName();

    /// Has an effect ahead of the first instance() only.
    static void SetProductName(const std::wstring& name);

    /// The application key, relative to the root of each hive.
    const boost::filesystem::path& AppSubKey() const;

    /// The application's title, the numbered string 0xE000; empty if no module holds one.
    std::wstring GetAppName() const;

    /// The title and the release, as in "App 2022 RC (2022.0.2114)".
    std::wstring GetCaptionBarString() const;

    /// What kind of build this is: neither branded nor ahead of its release. The tag in the caption does not count.
    bool IsBranded() const { return false; }
    bool IsPreReleaseVersion() const { return false; }
    bool IsDebugOrPreReleaseVersion() const { return false; }

    /// The value under a name in a subkey of the application key, or the default. With `useUserHive` false the
    /// machine's hive alone is looked at: what SetValue wrote is not seen. Gives the type of the default; for a wide
    /// text, which may not be null, a std::wstring.
    template <class T>
    auto GetValue(const utility::KeyName& subKey, const wchar_t* name, const T& defaultValue,
                  bool useUserHive = true) const
    {
        return DoGetValue(subKey.Text(), name, defaultValue, useUserHive);
    }

    /// Stores a value in the user's hive; the subkey is created if absent. True on success. A null text and an empty
    /// std::wstring are stored as nothing at all, which reads as the default; an empty text by its pointer is stored as
    /// an empty text.
    template <class T>
    bool SetValue(const utility::KeyName& subKey, const wchar_t* name, const T& value) const
    {
        return DoSetValue(subKey.Text(), name, value);
    }

    /// Stores a block of `size` bytes.
    bool SetValue(const utility::KeyName& subKey, const wchar_t* name, const void* data, DWORD size) const
    {
        return DoSetValue(subKey.Text(), name, data, size);
    }

    /// A key that exists; null on failure.
    [[nodiscard]] static resource_ptr<HKEY> OpenKey(HKEY parent, const utility::KeyName& subKey, DWORD access);

    /// Opens a key, which is created if absent; null on failure.
    static resource_ptr<HKEY> CreateKey(HKEY parent, const utility::KeyName& subKey, DWORD access);

    /// Deletes a key with all that lies under it.
    static bool DeleteKey(HKEY parent, const utility::KeyName& subKey);

    /// Creates a subkey of the application key in the user's hive. True if it is there.
    bool CreateKey(const utility::KeyName& subKey) const;

    /// Deletes a subkey of the application key in the user's hive, and then in the machine's. True if both succeed; a
    /// failure in the user's hive, where it may just be absent, deliberately leaves the machine's untouched.
    bool DeleteKey(const utility::KeyName& subKey) const;

    /// A value of this type tag: true if there is one, and `value` gets it; one of size 0 leaves `value` as it was.
    /// There is one for std::wstring and no other: the text up to its first null.
    template <class T>
    static bool ReadValue(HKEY key, const wchar_t* name, DWORD type, T& value) = delete;

protected:
    /// For a key relative to the root of each hive, which is created in both if absent. Objects for one key share what
    /// they hold, and a hive in which the key could not be had is left out.
    explicit CQLMAppSettings(const std::wstring& appKey);

private:
    struct Data;
    struct UTILITY_LOCAL DataMap;

    std::wstring DoGetValue(const wchar_t* subKey, const wchar_t* name, const std::wstring& defaultValue,
                            bool useUserHive) const;
    std::wstring DoGetValue(const wchar_t* subKey, const wchar_t* name, const wchar_t* defaultValue,
                            bool useUserHive) const;
    bool DoGetValue(const wchar_t* subKey, const wchar_t* name, bool defaultValue, bool useUserHive) const;
    int DoGetValue(const wchar_t* subKey, const wchar_t* name, int defaultValue, bool useUserHive) const;
    unsigned int DoGetValue(const wchar_t* subKey, const wchar_t* name, unsigned int defaultValue,
                            bool useUserHive) const;
    // Which of these have 64 bits is the system's matter, and so is which of them std::int64_t and DWORD are.
    long DoGetValue(const wchar_t* subKey, const wchar_t* name, long defaultValue, bool useUserHive) const;
    unsigned long DoGetValue(const wchar_t* subKey, const wchar_t* name, unsigned long defaultValue,
                             bool useUserHive) const;
    long long DoGetValue(const wchar_t* subKey, const wchar_t* name, long long defaultValue, bool useUserHive) const;
    unsigned long long DoGetValue(const wchar_t* subKey, const wchar_t* name, unsigned long long defaultValue,
                                  bool useUserHive) const;
    float DoGetValue(const wchar_t* subKey, const wchar_t* name, float defaultValue, bool useUserHive) const;
    double DoGetValue(const wchar_t* subKey, const wchar_t* name, double defaultValue, bool useUserHive) const;
    FILETIME DoGetValue(const wchar_t* subKey, const wchar_t* name, const FILETIME& defaultValue,
                        bool useUserHive) const;
    // Any other pointer would be a bool. NOLINTNEXTLINE(modernize-use-equals-delete): callers do not see the others
    void DoGetValue(const wchar_t* subKey, const wchar_t* name, const void* defaultValue,
                    bool useUserHive) const = delete;

    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, const std::wstring& value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, const wchar_t* value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, bool value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, int value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, unsigned int value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, long value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, unsigned long value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, long long value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, unsigned long long value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, float value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, double value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, const FILETIME& value) const;
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, const void* data, DWORD size) const;
    // NOLINTNEXTLINE(modernize-use-equals-delete)
    bool DoSetValue(const wchar_t* subKey, const wchar_t* name, const void* value) const = delete;

    UTILITY_LOCAL static Data& DataOf(const std::wstring& appKey);

    template <class T>
    UTILITY_LOCAL T Read(const wchar_t* subKey, const wchar_t* name, const T& defaultValue, bool useUserHive) const;
    template <class T>
    UTILITY_LOCAL bool WriteNumber(const wchar_t* subKey, const wchar_t* name, const T& value) const;
    UTILITY_LOCAL bool WriteText(const wchar_t* subKey, const wchar_t* name, std::wstring_view value) const;
    UTILITY_LOCAL bool WriteValue(const wchar_t* subKey, const wchar_t* name, DWORD type, const unsigned char* data,
                                  DWORD size) const;

    Data& m_data;
};

/// The text up to its first null; one of size 0 leaves `value` as it was.
template <>
UTILITY_API bool CQLMAppSettings::ReadValue(HKEY key, const wchar_t* name, DWORD type, std::wstring& value);

/// Opens or creates a subkey of `key`; then stores a text under a name in `key` itself, deliberately not in the subkey,
/// and closes `key`: the call consumes the caller's handle unless there is no subkey to be had, and the subkey stays
/// open. True if the text was stored and the handle closed.
UTILITY_API bool CreateRegSubKeyAndValue(HKEY key, const utility::KeyName& subKey, const std::wstring& name,
                                         const std::wstring& value);

/// Stores a text as the unnamed value of a subkey of `key`, which is created if absent. A null character ends the text.
UTILITY_API bool CreateRegValue(HKEY key, const utility::KeyName& subKey, const std::wstring& value);
