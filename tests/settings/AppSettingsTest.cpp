#include "utility/settings/AppSettings.h"

#include "tests/support/PathsWithoutLocale.h"
#include "tests/support/ScratchHives.h"
#include "tests/support/TableModules.h"
#include "utility/framework/String.h"
#include "utility/platform/formats/Utf16.h"
#include "utility/platform/UntilUnload.h"
#include "utility/startup/LibraryFrame.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

constexpr HKEY noKey = nullptr;
constexpr wchar_t folder[] = L"Options\\General";
constexpr wchar_t name[] = L"Value";

template <class T>
std::string BytesOf(const T& value)
{
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

std::string BytesOfText(std::wstring_view text)
{
    const std::u16string units = utility::platform::formats::Utf16FromWide(text);
    return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t)};
}

std::wstring OwnKey() { return L"SOFTWARE\\Selvane\\" + boost::filesystem::unique_path("%%%%%%%%%%%%").wstring(); }

template <class T>
concept CanBeRead = requires(HKEY key, T& value)
{
    CQLMAppSettings::ReadValue(key, L"", DWORD{}, value);
};

// There is nothing to link with for another type, so a program does not compile.
static_assert(CanBeRead<std::wstring> && !CanBeRead<int> && !CanBeRead<double> && !CanBeRead<std::string>);

/// The settings of one application key.
class Settings : public CQLMAppSettings
{
public:
    explicit Settings(const std::wstring& appKey) : CQLMAppSettings(appKey) {}
};

struct Stored
{
    DWORD type = REG_NONE;
    std::string bytes;
    bool operator==(const Stored&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Stored& stored)
{
    return stream << "type " << stored.type << ", " << testing::PrintToString(stored.bytes);
}

/// Settings in hives of the test's own.
class AppSettingsTest : public testing::Test
{
protected:
    void Store(HKEY hive, DWORD type, const std::string& bytes, const wchar_t* subKey = folder)
    {
        const auto key = Settings::CreateKey(hive, PathOf(subKey).c_str(), KEY_READ | KEY_WRITE);
        EXPECT_EQ(hives.RegSetValueExW(key.get(), name, type, bytes.data(), static_cast<DWORD>(bytes.size())), 0);
    }

    /// What is in the hive; type 0xFFFFFFFF if nothing is.
    Stored Found(HKEY hive, const wchar_t* subKey = folder, const wchar_t* valueName = name)
    {
        const auto key = Settings::OpenKey(hive, PathOf(subKey).c_str(), KEY_READ);
        Stored stored;
        char bytes[256];
        DWORD size = sizeof bytes;
        if (hives.RegQueryValueExW(key.get(), valueName, &stored.type, bytes, &size) != 0)
            return nothing;
        stored.bytes.assign(bytes, size);
        return stored;
    }

    bool KeyExists(HKEY hive, const wchar_t* subKey)
    {
        return Settings::OpenKey(hive, PathOf(subKey).c_str(), KEY_READ) != nullptr;
    }

    std::wstring PathOf(const wchar_t* subKey) const { return appKey + L'\\' + subKey; }

    static inline const Stored nothing{0xFFFFFFFF, {}};

    support::ScratchHives hives;
    const std::wstring appKey = OwnKey();
    const Settings settings{appKey};
};

// --- numbers
// -----------------------------------------------------------------------------------------------------------

template <class T>
struct Sample
{
    static constexpr T value = static_cast<T>(-3);
    static constexpr T other = static_cast<T>(7);
    static constexpr DWORD type = sizeof(T) == 4 && std::is_integral_v<T> ? REG_DWORD : REG_BINARY;
    static std::string Bytes() { return BytesOf(value); }
};
template <>
struct Sample<bool>
{
    static constexpr bool value = true;
    static constexpr bool other = false;
    static constexpr DWORD type = REG_DWORD;
    static std::string Bytes() { return std::string("\1\0\0\0", 4); }
};
template <>
struct Sample<FILETIME>
{
    static constexpr FILETIME value = {0x01234567, 0x89ABCDEF};
    static constexpr FILETIME other = {1, 2};
    static constexpr DWORD type = REG_BINARY;
    static std::string Bytes() { return std::string("\x67\x45\x23\x01\xEF\xCD\xAB\x89", 8); }
};

template <class T>
class AppSettingsNumberTest : public AppSettingsTest
{
};

// All that there are: DWORD, std::int64_t and the like are names of some of these.
using Numbers = testing::Types<bool, int, unsigned int, long, unsigned long, long long, unsigned long long, float,
                               double, FILETIME>;
TYPED_TEST_SUITE(AppSettingsNumberTest, Numbers);

}

TYPED_TEST(AppSettingsNumberTest, IsStoredInItsFormAndReadBack)
{
    using Value = Sample<TypeParam>;
    EXPECT_TRUE(this->settings.SetValue(folder, name, Value::value));
    EXPECT_EQ(this->Found(HKEY_CURRENT_USER), (Stored{Value::type, Value::Bytes()}));
    EXPECT_EQ(this->Found(HKEY_LOCAL_MACHINE), this->nothing);
    const auto read = this->settings.GetValue(folder, name, Value::other);
    static_assert(std::is_same_v<decltype(read), const TypeParam>);
    EXPECT_EQ(BytesOf(read), BytesOf(Value::value));
}

TYPED_TEST(AppSettingsNumberTest, AbsentValueIsTheDefault)
{
    EXPECT_EQ(BytesOf(this->settings.GetValue(folder, name, Sample<TypeParam>::value)),
              BytesOf(Sample<TypeParam>::value));
}

TYPED_TEST(AppSettingsNumberTest, UsersValueComesFirstAndTheMachinesIsTakenWithoutOne)
{
    using Value = Sample<TypeParam>;
    this->Store(HKEY_LOCAL_MACHINE, Value::type, Value::Bytes());
    EXPECT_EQ(BytesOf(this->settings.GetValue(folder, name, Value::other)), BytesOf(Value::value));
    EXPECT_EQ(BytesOf(this->settings.GetValue(folder, name, Value::other, false)), BytesOf(Value::value));

    EXPECT_TRUE(this->settings.SetValue(folder, name, Value::other));
    EXPECT_EQ(BytesOf(this->settings.GetValue(folder, name, Value::value)), BytesOf(Value::other));
    EXPECT_EQ(BytesOf(this->settings.GetValue(folder, name, Value::other, false)), BytesOf(Value::value));
}

TYPED_TEST(AppSettingsNumberTest, WrittenValueIsNotSeenInTheMachinesHive)
{
    using Value = Sample<TypeParam>;
    EXPECT_TRUE(this->settings.SetValue(folder, name, Value::value));
    EXPECT_EQ(BytesOf(this->settings.GetValue(folder, name, Value::other, false)), BytesOf(Value::other));
}

TYPED_TEST(AppSettingsNumberTest, ValueOfAnotherFormCountsAsAbsent)
{
    using Value = Sample<TypeParam>;
    for (const DWORD type : {REG_NONE, REG_SZ, REG_BINARY, REG_DWORD, REG_QWORD})
    {
        if (type == Value::type)
            continue;
        this->Store(HKEY_CURRENT_USER, type, Value::Bytes());
        EXPECT_EQ(BytesOf(this->settings.GetValue(folder, name, Value::other)), BytesOf(Value::other)) << type;
    }
    this->Store(HKEY_LOCAL_MACHINE, Value::type, Value::Bytes());
    EXPECT_EQ(BytesOf(this->settings.GetValue(folder, name, Value::other)), BytesOf(Value::value));
}

TYPED_TEST(AppSettingsNumberTest, ValueThatIsTooLongCountsAsAbsent)
{
    using Value = Sample<TypeParam>;
    this->Store(HKEY_CURRENT_USER, Value::type, Value::Bytes() + '\0');
    EXPECT_EQ(BytesOf(this->settings.GetValue(folder, name, Value::other)), BytesOf(Value::other));
    this->Store(HKEY_LOCAL_MACHINE, Value::type, Value::Bytes());
    EXPECT_EQ(BytesOf(this->settings.GetValue(folder, name, Value::other)), BytesOf(Value::value));
}

TEST_F(AppSettingsTest, ShortNumberIsDeliberatelyCompletedByTheDefault)
{
    Store(HKEY_CURRENT_USER, REG_BINARY, "\x11\x22");
    EXPECT_EQ(settings.GetValue(folder, name, std::int64_t{0x7766554433221100}), 0x7766554433222211);
    Store(HKEY_CURRENT_USER, REG_BINARY, "");
    EXPECT_EQ(settings.GetValue(folder, name, 2.5), 2.5);
    Store(HKEY_CURRENT_USER, REG_DWORD, "\x11");
    EXPECT_EQ(settings.GetValue(folder, name, 0x44332200), 0x44332211);
}

TEST_F(AppSettingsTest, WhatTheUsersHiveHasOfAnotherFormDoesNotGetIntoAShortNumberOfTheMachines)
{
    Store(HKEY_CURRENT_USER, REG_SZ, "\xEE\xEE\xEE\xEE");
    Store(HKEY_LOCAL_MACHINE, REG_DWORD, "\x11");
    EXPECT_EQ(settings.GetValue(folder, name, 0x44332200), 0x44332211);
}

TEST_F(AppSettingsTest, EveryStoredNumberButZeroIsTrue)
{
    EXPECT_TRUE(settings.GetValue(folder, name, true));
    EXPECT_FALSE(settings.GetValue(folder, name, false));
    Store(HKEY_CURRENT_USER, REG_DWORD, std::string("\2\0\0\0", 4));
    EXPECT_TRUE(settings.GetValue(folder, name, true));
    EXPECT_TRUE(settings.GetValue(folder, name, false));
    Store(HKEY_CURRENT_USER, REG_DWORD, std::string(4, '\0'));
    EXPECT_FALSE(settings.GetValue(folder, name, true));
}

TEST_F(AppSettingsTest, SmallIntegersAreStoredAsInt)
{
    EXPECT_TRUE(settings.SetValue(folder, name, short{-2}));
    EXPECT_EQ(Found(HKEY_CURRENT_USER), (Stored{REG_DWORD, BytesOf(-2)}));
    EXPECT_EQ(settings.GetValue(folder, name, short{5}), -2);
    EXPECT_TRUE(settings.SetValue(folder, name, static_cast<unsigned char>(0xFE)));
    EXPECT_EQ(Found(HKEY_CURRENT_USER), (Stored{REG_DWORD, BytesOf(0xFE)}));
}

TEST_F(AppSettingsTest, BlockOfBytesIsStoredAsItIs)
{
    EXPECT_TRUE(settings.SetValue(folder, name, "a\0b", 3));
    EXPECT_EQ(Found(HKEY_CURRENT_USER), (Stored{REG_BINARY, std::string("a\0b", 3)}));
    EXPECT_TRUE(settings.SetValue(folder, name, nullptr, 0));
    EXPECT_EQ(Found(HKEY_CURRENT_USER), (Stored{REG_BINARY, ""}));
}

// --- texts
// -------------------------------------------------------------------------------------------------------------

class AppSettingsTextTest : public AppSettingsTest, public testing::WithParamInterface<std::wstring>
{
};

TEST_P(AppSettingsTextTest, IsStoredWithItsTerminatorAndReadBack)
{
    const Stored stored{REG_SZ, BytesOfText(GetParam() + L'\0')};
    EXPECT_TRUE(settings.SetValue(folder, name, GetParam()));
    EXPECT_EQ(Found(HKEY_CURRENT_USER), stored);
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), GetParam());
    EXPECT_TRUE(settings.SetValue(folder, name, GetParam().c_str()));
    EXPECT_EQ(Found(HKEY_CURRENT_USER), stored);
    EXPECT_EQ(settings.GetValue(folder, name, std::wstring(L"default")), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Texts, AppSettingsTextTest,
                         testing::Values(L"a", L"text", L"\u00E4\u20AC\u65E5", L"\U0001F600 beyond 16 bits",
                                         std::wstring(100, L'x')));

TEST_F(AppSettingsTest, EveryFormOfATextIsAText)
{
    wchar_t buffer[] = L"buffer";
    wchar_t* const pointer = buffer;
    EXPECT_TRUE(settings.SetValue(folder, name, pointer));
    EXPECT_EQ(settings.GetValue(folder, name, pointer), L"buffer");
    EXPECT_TRUE(settings.SetValue(folder, name, L"literal"));
    EXPECT_EQ(settings.GetValue(folder, name, L""), L"literal");
    static_assert(std::is_same_v<decltype(settings.GetValue(folder, name, L"")), std::wstring>);
}

TEST_F(AppSettingsTest, LongTextIsReadWhole)
{
    const std::wstring text(20000, L'\u00E4');
    EXPECT_TRUE(settings.SetValue(folder, name, text));
    EXPECT_EQ(settings.GetValue(folder, name, L""), text);
}

TEST_F(AppSettingsTest, TextOfTheMachineIsFoundAndTheUsersComesFirst)
{
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"default");
    Store(HKEY_LOCAL_MACHINE, REG_SZ, BytesOfText(L"machine"));
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"machine");
    EXPECT_EQ(settings.GetValue(folder, name, L"default", false), L"machine");
    EXPECT_TRUE(settings.SetValue(folder, name, L"user"));
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"user");
    EXPECT_EQ(settings.GetValue(folder, name, L"default", false), L"machine");
}

TEST_F(AppSettingsTest, EmptyStringIsDeliberatelyStoredWithoutBytesAndReadsAsTheDefault)
{
    Store(HKEY_LOCAL_MACHINE, REG_SZ, BytesOfText(L"machine"));
    EXPECT_TRUE(settings.SetValue(folder, name, std::wstring()));
    EXPECT_EQ(Found(HKEY_CURRENT_USER), (Stored{REG_SZ, ""}));
    // It is there, so that the machine's does not count.
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"default");
}

TEST_F(AppSettingsTest, EmptyTextByItsPointerIsDeliberatelyStoredWithItsTerminatorAndReadsAsEmpty)
{
    EXPECT_TRUE(settings.SetValue(folder, name, L""));
    EXPECT_EQ(Found(HKEY_CURRENT_USER), (Stored{REG_SZ, std::string(2, '\0')}));
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"");
}

TEST_F(AppSettingsTest, NullTextIsDeliberatelyStoredWithoutBytes)
{
    EXPECT_TRUE(settings.SetValue(folder, name, static_cast<const wchar_t*>(nullptr)));
    EXPECT_EQ(Found(HKEY_CURRENT_USER), (Stored{REG_SZ, ""}));
}

TEST_F(AppSettingsTest, StringIsStoredWithItsEmbeddedNullsAndReadUpToTheFirst)
{
    EXPECT_TRUE(settings.SetValue(folder, name, std::wstring(L"a\0b", 3)));
    EXPECT_EQ(Found(HKEY_CURRENT_USER), (Stored{REG_SZ, BytesOfText(std::wstring(L"a\0b\0", 4))}));
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"a");
}

TEST_F(AppSettingsTest, TextNeedsNoTerminator)
{
    Store(HKEY_CURRENT_USER, REG_SZ, BytesOfText(L"text"));
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"text");
}

TEST_F(AppSettingsTest, HalfACharacterAtTheEndIsLeftOut)
{
    Store(HKEY_CURRENT_USER, REG_SZ, BytesOfText(L"text") + 'x');
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"text");
    Store(HKEY_CURRENT_USER, REG_SZ, "x");
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"");
}

TEST_F(AppSettingsTest, NumberReadAsATextCountsAsAbsent)
{
    EXPECT_TRUE(settings.SetValue(folder, name, 65));
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"default");
    Store(HKEY_LOCAL_MACHINE, REG_SZ, BytesOfText(L"machine"));
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"machine");
    Store(HKEY_CURRENT_USER, REG_EXPAND_SZ, BytesOfText(L"user"));
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"machine");
}

TEST_F(AppSettingsTest, ReadValueGivesATextOfAnyTypeThatIsAskedFor)
{
    Store(HKEY_CURRENT_USER, REG_EXPAND_SZ, BytesOfText(L"%PATH%"));
    const auto key = Settings::OpenKey(HKEY_CURRENT_USER, PathOf(folder).c_str(), KEY_READ);
    std::wstring text = L"before";
    EXPECT_FALSE(Settings::ReadValue(key.get(), name, REG_SZ, text));
    EXPECT_FALSE(Settings::ReadValue(key.get(), L"absent", REG_EXPAND_SZ, text));
    EXPECT_FALSE(Settings::ReadValue(noKey, name, REG_EXPAND_SZ, text));
    EXPECT_EQ(text, L"before");
    EXPECT_TRUE(Settings::ReadValue(key.get(), name, REG_EXPAND_SZ, text));
    EXPECT_EQ(text, L"%PATH%");
}

namespace
{

/// The second and later queries of a text find what another process made of it meanwhile.
struct ChangingValue : support::ForwardingRegistry
{
    LSTATUS RegQueryValueExW(HKEY key, const wchar_t* valueName, DWORD* type, void* data, DWORD* size) override
    {
        if (data == nullptr)
            return ForwardingRegistry::RegQueryValueExW(key, valueName, type, data, size);
        ++queries;
        const Stored now = later.empty() ? Stored{REG_SZ, {}} : later.front();
        if (later.size() > 1)
            later.erase(later.begin());
        if (status != ERROR_SUCCESS)
            return status;
        *type = now.type;
        const bool fits = now.bytes.size() <= *size;
        if (fits)
            std::memcpy(data, now.bytes.data(), now.bytes.size());
        *size = static_cast<DWORD>(now.bytes.size());
        return static_cast<LSTATUS>(fits ? ERROR_SUCCESS : ERROR_MORE_DATA);
    }

    std::vector<Stored> later;
    LSTATUS status = ERROR_SUCCESS;
    int queries = 0;
};

}

TEST_F(AppSettingsTest, TextThatGrowsWhileItIsReadIsReadWhole)
{
    Store(HKEY_CURRENT_USER, REG_SZ, BytesOfText(L"a"));
    ChangingValue growing;
    growing.later = {{REG_SZ, BytesOfText(L"abc")},
                     {REG_SZ, BytesOfText(L"abcdef")},
                     {REG_SZ, BytesOfText(L"abcdefgh")},
                     {REG_SZ, BytesOfText(L"abcdefg")}};
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"abcdefg");
    EXPECT_EQ(growing.queries, 4);
}

TEST_F(AppSettingsTest, TextThatShrinksWhileItIsReadIsReadAsItIs)
{
    Store(HKEY_CURRENT_USER, REG_SZ, BytesOfText(L"abcdef"));
    ChangingValue shrinking;
    shrinking.later = {{REG_SZ, BytesOfText(L"xy")}};
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"xy");
    EXPECT_EQ(shrinking.queries, 1);
}

TEST_F(AppSettingsTest, TextThatIsOfAnotherTypeByNowCountsAsAbsent)
{
    Store(HKEY_CURRENT_USER, REG_SZ, BytesOfText(L"text"));
    ChangingValue changing;
    changing.later = {{REG_BINARY, BytesOfText(L"x")}};
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"default");
}

TEST_F(AppSettingsTest, TextThatCannotBeReadCountsAsAbsent)
{
    Store(HKEY_CURRENT_USER, REG_SZ, BytesOfText(L"text"));
    ChangingValue failing;
    failing.status = static_cast<LSTATUS>(ERROR_KEY_DELETED);
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"default");
    EXPECT_EQ(failing.queries, 1);
}

// --- the keys
// ----------------------------------------------------------------------------------------------------------

namespace
{

/// Tells the hives' keys apart, records what is done with which, and fails what it is told to.
class WatchedHives : public support::ForwardingRegistry
{
public:
    LSTATUS RegCreateKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        return Opened("create", parent, subKey, access, key, &RegistryService::RegCreateKeyExW);
    }
    LSTATUS RegOpenKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        return Opened("open", parent, subKey, access, key, &RegistryService::RegOpenKeyExW);
    }
    LSTATUS RegQueryValueExW(HKEY key, const wchar_t* valueName, DWORD* type, void* data, DWORD* size) override
    {
        const LSTATUS status = Status("query " + Name(key));
        return status != 0 ? status : ForwardingRegistry::RegQueryValueExW(key, valueName, type, data, size);
    }
    LSTATUS RegSetValueExW(HKEY key, const wchar_t* valueName, DWORD type, const void* data, DWORD size) override
    {
        const LSTATUS status = Status("set " + Name(key));
        return status != 0 ? status : ForwardingRegistry::RegSetValueExW(key, valueName, type, data, size);
    }
    LSTATUS SHDeleteKeyW(HKEY parent, const wchar_t* subKey) override
    {
        const LSTATUS status = Status("delete " + Name(parent));
        return status != 0 ? status : ForwardingRegistry::SHDeleteKeyW(parent, subKey);
    }
    LSTATUS RegCloseKey(HKEY key) override
    {
        Status("close " + Name(key));
        m_names.erase(key);
        return ForwardingRegistry::RegCloseKey(key);
    }

    using Calls = std::vector<std::string>;
    Calls TakeCalls() { return std::exchange(m_calls, {}); }

    std::map<std::string, DWORD> failing;

private:
    using Opening = LSTATUS (RegistryService::*)(HKEY, const wchar_t*, DWORD, HKEY&);

    LSTATUS Opened(const std::string& what, HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key, Opening open)
    {
        const std::string owner = Name(parent);
        LSTATUS status = Status(what + ' ' + owner +
                                (access == KEY_READ                 ? " to read"
                                 : access == (KEY_READ | KEY_WRITE) ? " to write"
                                                                    : " for something else"));
        if (status == 0)
            status = std::invoke(open, m_system, parent, subKey, access, key);
        if (status == 0)
            m_names[key] = owner;
        return status;
    }

    std::string Name(HKEY key) const
    {
        if (key == nullptr)
            return "nothing";
        const auto found = m_names.find(key);
        return found == m_names.end() ? "unknown" : found->second;
    }

    LSTATUS Status(const std::string& call)
    {
        m_calls.push_back(call);
        const auto found = failing.find(call);
        return found == failing.end() ? 0 : static_cast<LSTATUS>(found->second);
    }

    std::map<HKEY, std::string> m_names = {{HKEY_CURRENT_USER, "user"}, {HKEY_LOCAL_MACHINE, "machine"}};
    Calls m_calls;
};

using Calls = WatchedHives::Calls;

class AppSettingsKeysTest : public testing::Test
{
protected:
    support::ScratchHives hives;
    WatchedHives watched;
    const std::wstring appKey = OwnKey();
};

}

TEST_F(AppSettingsKeysTest, ApplicationKeyIsMadeInTheMachinesHiveAndThenInTheUsers)
{
    const Settings settings(appKey);
    EXPECT_EQ(watched.TakeCalls(), (Calls{"create machine to read", "create user to read"}));
    EXPECT_EQ(settings.AppSubKey(), boost::filesystem::path(appKey));
    EXPECT_NE(Settings::OpenKey(HKEY_LOCAL_MACHINE, settings.AppSubKey(), KEY_READ), nullptr);
    EXPECT_NE(Settings::OpenKey(HKEY_CURRENT_USER, settings.AppSubKey(), KEY_READ), nullptr);
}

TEST_F(AppSettingsKeysTest, ObjectsForOneKeyShareWhatTheyHold)
{
    const Settings first(appKey);
    watched.TakeCalls();
    const Settings second(appKey);
    EXPECT_EQ(watched.TakeCalls(), Calls());
    EXPECT_EQ(&first.AppSubKey(), &second.AppSubKey());
    const Settings other(appKey + L" II");
    EXPECT_EQ(watched.TakeCalls().size(), 2u);
    EXPECT_NE(&first.AppSubKey(), &other.AppSubKey());
}

TEST_F(AppSettingsKeysTest, ReadingOpensBothKeysAndClosesThem)
{
    const Settings settings(appKey);
    settings.CreateKey(folder);
    Settings::CreateKey(HKEY_LOCAL_MACHINE, (appKey + L'\\' + folder).c_str(), KEY_READ);
    watched.TakeCalls();
    settings.GetValue(folder, name, 1);
    EXPECT_EQ(watched.TakeCalls(), (Calls{"open user to read", "open machine to read", "query user", "query machine",
                                          "close machine", "close user"}));
    settings.GetValue(folder, name, 1, false);
    EXPECT_EQ(watched.TakeCalls(), (Calls{"open machine to read", "query machine", "close machine"}));
    settings.SetValue(folder, name, 1);
    EXPECT_EQ(watched.TakeCalls(), (Calls{"create user to write", "set user", "close user"}));
    settings.GetValue(folder, name, 1);
    EXPECT_EQ(watched.TakeCalls(),
              (Calls{"open user to read", "open machine to read", "query user", "close machine", "close user"}));
    settings.GetValue(L"absent", name, L"");
    EXPECT_EQ(watched.TakeCalls(), (Calls{"open user to read", "open machine to read"}));
}

TEST_F(AppSettingsKeysTest, WithoutTheUsersKeyReadsTakeTheMachinesAndWritesFail)
{
    watched.failing["create user to read"] = ERROR_ACCESS_DENIED;
    const Settings settings(appKey);
    watched.TakeCalls();
    EXPECT_FALSE(settings.SetValue(folder, name, 1));
    EXPECT_EQ(watched.TakeCalls(), Calls{"create nothing to write"});
    const auto key = Settings::CreateKey(HKEY_LOCAL_MACHINE, (appKey + L'\\' + folder).c_str(), KEY_READ | KEY_WRITE);
    EXPECT_EQ(hives.RegSetValueExW(key.get(), name, REG_DWORD, "\5\0\0\0", 4), 0);
    EXPECT_EQ(settings.GetValue(folder, name, 1), 5);
    EXPECT_FALSE(settings.CreateKey(folder));
    EXPECT_FALSE(settings.DeleteKey(folder));
    EXPECT_EQ(settings.GetValue(folder, name, 1), 5);
}

TEST_F(AppSettingsKeysTest, WithoutTheMachinesKeyTheUsersAloneCounts)
{
    watched.failing["create machine to read"] = ERROR_ACCESS_DENIED;
    const Settings settings(appKey);
    EXPECT_EQ(settings.GetValue(folder, name, 1), 1);
    EXPECT_TRUE(settings.SetValue(folder, name, 5));
    EXPECT_EQ(settings.GetValue(folder, name, 1), 5);
    EXPECT_EQ(settings.GetValue(folder, name, 1, false), 1);
}

TEST_F(AppSettingsKeysTest, StoreThatFailsGivesDefaultsAndFalse)
{
    const Settings settings(appKey);
    EXPECT_TRUE(settings.SetValue(folder, name, 5));
    watched.failing = {{"query user", ERROR_REGISTRY_IO_FAILED}, {"set user", ERROR_DISK_FULL}};
    EXPECT_EQ(settings.GetValue(folder, name, 1), 1);
    EXPECT_EQ(settings.GetValue(folder, name, L"default"), L"default");
    EXPECT_FALSE(settings.SetValue(folder, name, 1));
    EXPECT_FALSE(settings.SetValue(folder, name, L"text"));
    watched.failing = {{"create user to write", ERROR_ACCESS_DENIED}, {"open user to read", ERROR_ACCESS_DENIED}};
    EXPECT_EQ(settings.GetValue(folder, name, 1), 1);
    EXPECT_FALSE(settings.SetValue(folder, name, 1));
    EXPECT_FALSE(settings.CreateKey(folder));
    watched.failing.clear();
    EXPECT_EQ(settings.GetValue(folder, name, 1), 5);
}

TEST_F(AppSettingsKeysTest, CreateKeyMakesASubkeyOfTheUsersAndClosesIt)
{
    const Settings settings(appKey);
    watched.TakeCalls();
    EXPECT_TRUE(settings.CreateKey(folder));
    EXPECT_EQ(watched.TakeCalls(), (Calls{"create user to write", "close user"}));
    EXPECT_TRUE(settings.CreateKey(folder));
    EXPECT_NE(Settings::OpenKey(HKEY_CURRENT_USER, settings.AppSubKey() / folder, KEY_READ), nullptr);
    EXPECT_EQ(Settings::OpenKey(HKEY_LOCAL_MACHINE, settings.AppSubKey() / folder, KEY_READ), nullptr);
}

TEST_F(AppSettingsTest, PartsOfAPathAreKeysInEveryCall)
{
    const boost::filesystem::path path = boost::filesystem::path("Options") / "General";
    EXPECT_TRUE(settings.SetValue(path, name, 7));
    EXPECT_EQ(settings.GetValue(folder, name, 1), 7);
    EXPECT_EQ(settings.GetValue(path, name, 1), 7);
    EXPECT_EQ(settings.GetValue(boost::filesystem::path("Options/General"), name, 1), 7);
    EXPECT_TRUE(settings.SetValue(path, L"Bytes", "abc", 3));
    EXPECT_EQ(Found(HKEY_CURRENT_USER, folder, L"Bytes").bytes, "abc");
    EXPECT_TRUE(settings.CreateKey(path / "Below"));
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, L"Options\\General\\Below"));
    const boost::filesystem::path full = settings.AppSubKey() / path;
    EXPECT_NE(Settings::CreateKey(HKEY_LOCAL_MACHINE, full, KEY_READ), nullptr);
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, folder));
    EXPECT_NE(Settings::OpenKey(HKEY_LOCAL_MACHINE, full, KEY_READ), nullptr);
    EXPECT_TRUE(settings.DeleteKey(path));
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, folder));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, folder));
    resource_ptr<HKEY> top = Settings::CreateKey(HKEY_CURRENT_USER, settings.AppSubKey(), KEY_READ | KEY_WRITE);
    EXPECT_TRUE(CreateRegValue(top.get(), path, L"text"));
    EXPECT_EQ(Found(HKEY_CURRENT_USER, folder, L"").type, DWORD{REG_SZ});
    EXPECT_TRUE(CreateRegSubKeyAndValue(top.release(), path / "Below", name, L"text"));
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, L"Options\\General\\Below"));
    EXPECT_TRUE(Settings::DeleteKey(HKEY_CURRENT_USER, full));
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, folder));
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, L"Options"));
}

TEST_F(AppSettingsTest, SlashInWideTextIsPartOfAName)
{
    const std::wstring text = L"Options/General";
    EXPECT_TRUE(settings.SetValue(text, name, 7));
    EXPECT_EQ(settings.GetValue(text, name, 1), 7);
    EXPECT_EQ(settings.GetValue(text.c_str(), name, 1), 7);
    EXPECT_EQ(settings.GetValue(folder, name, 1), 1);
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, L"Options"));
    EXPECT_NE(Settings::OpenKey(HKEY_CURRENT_USER, PathOf(text.c_str()), KEY_READ), nullptr);
}

TEST_F(AppSettingsTest, NoFormOfAKeyAsksTheLocale)
{
    const CStringW string(L"\u00D6ptions");
    const std::wstring text = string.GetString();
    const boost::filesystem::path path = settings.AppSubKey();
    const support::PathsWithoutLocale unconverted;
    EXPECT_TRUE(settings.SetValue(string, name, 7));
    EXPECT_EQ(settings.GetValue(text, name, 1), 7);
    EXPECT_EQ(settings.GetValue(L"\u00D6ptions", name, 1), 7);
    EXPECT_NE(Settings::OpenKey(HKEY_CURRENT_USER, path, KEY_READ), nullptr);
    EXPECT_NE(Settings::OpenKey(HKEY_CURRENT_USER, PathOf(text.c_str()), KEY_READ), nullptr);
    EXPECT_NE(Settings::OpenKey(HKEY_CURRENT_USER, nullptr, KEY_READ), nullptr);
}

TEST_F(AppSettingsTest, DeleteKeyTakesAKeyFromBothHivesWithAllUnderIt)
{
    Store(HKEY_CURRENT_USER, REG_SZ, "");
    Store(HKEY_LOCAL_MACHINE, REG_SZ, "");
    EXPECT_TRUE(settings.DeleteKey(L"Options"));
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, L"Options"));
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, L"Options"));
    EXPECT_FALSE(settings.DeleteKey(L"Options"));
}

TEST_F(AppSettingsTest, DeleteKeyOfASubkeyThatOnlyTheMachineHasDeliberatelyDeletesNothing)
{
    Store(HKEY_LOCAL_MACHINE, REG_SZ, "");
    EXPECT_FALSE(settings.DeleteKey(folder));
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, folder));
}

TEST_F(AppSettingsTest, DeleteKeyOfASubkeyThatOnlyTheUserHasDeletesItAndFails)
{
    Store(HKEY_CURRENT_USER, REG_SZ, "");
    EXPECT_FALSE(settings.DeleteKey(folder));
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, folder));
}

TEST_F(AppSettingsKeysTest, DeleteKeyGoesToTheUsersHiveFirst)
{
    const Settings settings(appKey);
    settings.CreateKey(folder);
    watched.TakeCalls();
    settings.DeleteKey(folder);
    EXPECT_EQ(watched.TakeCalls(), (Calls{"delete user", "delete machine"}));
    settings.DeleteKey(folder);
    EXPECT_EQ(watched.TakeCalls(), Calls{"delete user"});
}

TEST_F(AppSettingsTest, OpenKeyDoesNotCreateAndCreateKeyOpensWhatIsThere)
{
    EXPECT_EQ(Settings::OpenKey(HKEY_CURRENT_USER, L"Absent", KEY_READ), nullptr);
    EXPECT_EQ(Settings::OpenKey(HKEY_CURRENT_USER, L"Absent", KEY_READ), nullptr);
    EXPECT_EQ(Settings::OpenKey(noKey, L"Absent", KEY_READ), nullptr);
    EXPECT_EQ(Settings::CreateKey(noKey, L"Absent", KEY_READ), nullptr);
    EXPECT_NE(Settings::CreateKey(HKEY_CURRENT_USER, L"Absent", KEY_READ), nullptr);
    EXPECT_NE(Settings::CreateKey(HKEY_CURRENT_USER, L"Absent", KEY_READ), nullptr);
    EXPECT_NE(Settings::OpenKey(HKEY_CURRENT_USER, L"Absent", KEY_READ), nullptr);
    EXPECT_TRUE(Settings::DeleteKey(HKEY_CURRENT_USER, L"Absent"));
    EXPECT_FALSE(Settings::DeleteKey(HKEY_CURRENT_USER, L"Absent"));
    EXPECT_FALSE(Settings::DeleteKey(noKey, L"Absent"));
}

TEST_F(AppSettingsTest, WithoutASubkeyTheApplicationKeyItselfHoldsTheValue)
{
    for (const wchar_t* const none : {static_cast<const wchar_t*>(nullptr), L""})
    {
        EXPECT_TRUE(settings.SetValue(none, name, 5));
        EXPECT_EQ(settings.GetValue(none, name, 1), 5);
        EXPECT_TRUE(settings.SetValue(none, nullptr, L"unnamed"));
        EXPECT_EQ(settings.GetValue(none, L"", L""), L"unnamed");
    }
    EXPECT_EQ(Found(HKEY_CURRENT_USER, L""), (Stored{REG_DWORD, BytesOf(5)}));
}

// --- who the application is
// --------------------------------------------------------------------------------------------

namespace
{

/// A host whose string table has a title, for its lifetime.
class TitledHost
{
public:
    explicit TitledHost(const wchar_t* title)
    {
        static support::FakeModule host;
        static const bool joined = (ZeloInitMFCExtensionDLL(host.Handle(), host.Handle()), true);
        static_cast<void>(joined);
        m_modules.strings[{host.Handle(), 0xE000}] = title;
    }

private:
    support::TableModules m_modules;
    support::Substitute<utility::platform::ModuleService> m_scope{utility::platform::ModulesSlot(), m_modules};
};

}

TEST_F(AppSettingsTest, TitleComesFromTheHostsStrings)
{
    EXPECT_EQ(settings.GetAppName(), L"");
    EXPECT_EQ(settings.GetCaptionBarString(), L" 2022 RC (2022.0.2114)");
    const TitledHost host(L"App");
    EXPECT_EQ(settings.GetAppName(), L"App");
    EXPECT_EQ(settings.GetCaptionBarString(), L"App 2022 RC (2022.0.2114)");
}

TEST_F(AppSettingsTest, BuildIsNeitherBrandedNorAheadOfItsReleaseWhateverTheCaptionSays)
{
    EXPECT_FALSE(settings.IsBranded());
    EXPECT_FALSE(settings.IsPreReleaseVersion());
    EXPECT_FALSE(settings.IsDebugOrPreReleaseVersion());
}

TEST(AppSettingsNamesTest, KeysAreNamedAfterTheCompany)
{
    EXPECT_EQ(CQLMAppSettings::CompanyKeyName(), L"SOFTWARE\\Selvane\\");
    EXPECT_STREQ(RegistryString::m_szRegistryKey, L"Selvane");
    EXPECT_STREQ(RegistryString::m_szRootSection, L"2022.0");
}

/// What happens once in a process has a process for each test.
class AppSettingsInstanceTest : public testing::Test
{
protected:
    AppSettingsInstanceTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    static bool IsKeyOfInstance(const wchar_t* appKey)
    {
        return CQLMAppSettings::instance().AppSubKey() == boost::filesystem::path(appKey);
    }
};

TEST_F(AppSettingsInstanceTest, ProductNameSetAfterTheFirstInstanceDoesNotMoveTheKey)
{
    const auto instanceStays = []
    {
        const support::ScratchHives hives;
        CQLMAppSettings::SetProductName(L"Mill");
        const CQLMAppSettings* const first = &CQLMAppSettings::instance();
        const bool isNamed = IsKeyOfInstance(L"SOFTWARE\\Selvane\\Mill");
        CQLMAppSettings::SetProductName(L"Lathe");
        return isNamed && &CQLMAppSettings::instance() == first && IsKeyOfInstance(L"SOFTWARE\\Selvane\\Mill");
    };
    EXPECT_EXIT(std::exit(instanceStays() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(AppSettingsInstanceTest, WithoutAProductNameTheKeyIsNamedAfterTheTitle)
{
    const auto instanceHasTheTitle = []
    {
        const support::ScratchHives hives;
        const TitledHost host(L"App");
        CQLMAppSettings::SetProductName(L"");
        return IsKeyOfInstance(L"SOFTWARE\\Selvane\\App");
    };
    EXPECT_EXIT(std::exit(instanceHasTheTitle() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(AppSettingsInstanceTest, AtUnloadTheUsersKeyIsClosedAheadOfTheMachines)
{
    const auto endWatched = []
    {
        struct LastCalls : support::ForwardingRegistry
        {
            LSTATUS RegCreateKeyExW(HKEY parent, const wchar_t*, DWORD, HKEY& key) override
            {
                key = parent;
                return ERROR_SUCCESS;
            }
            LSTATUS RegCloseKey(HKEY key) override
            {
                if (key == HKEY_LOCAL_MACHINE)
                    std::_Exit(userIsClosed ? 7 : 8);
                userIsClosed = key == HKEY_CURRENT_USER;
                return ERROR_SUCCESS;
            }
            bool userIsClosed = false;
        };
        static_cast<void>(new LastCalls); // until the process ends
        const Settings settings(OwnKey());
        utility::platform::RunTearDowns();
        std::_Exit(9);
    };
    EXPECT_EXIT(endWatched(), testing::ExitedWithCode(7), "");
}

// --- values of other keys
// ----------------------------------------------------------------------------------------------

namespace
{

class CreateRegValueTest : public AppSettingsTest
{
protected:
    HKEY NewKey()
    {
        HKEY key = nullptr;
        EXPECT_EQ(hives.RegCreateKeyW(HKEY_CURRENT_USER, PathOf(L"Files").c_str(), key), 0);
        return key;
    }

    bool IsOpen(HKEY key)
    {
        utility::platform::RegistryKeyInfo info;
        return hives.RegQueryInfoKeyW(key, info) == 0;
    }
};

}

TEST_F(CreateRegValueTest, SubKeyAndValueDeliberatelySetsTheValueOfTheKeyAndClosesIt)
{
    const HKEY key = NewKey();
    EXPECT_TRUE(CreateRegSubKeyAndValue(key, L"Sub", name, L"text"));
    EXPECT_FALSE(IsOpen(key));
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, L"Files\\Sub"));
    EXPECT_EQ(Found(HKEY_CURRENT_USER, L"Files"), (Stored{REG_SZ, BytesOfText(std::wstring(L"text\0", 5))}));
    EXPECT_EQ(Found(HKEY_CURRENT_USER, L"Files\\Sub"), nothing);
}

TEST_F(CreateRegValueTest, SubKeyAndEmptyValueHasItsTerminator)
{
    EXPECT_TRUE(CreateRegSubKeyAndValue(NewKey(), L"Sub", name, L""));
    EXPECT_EQ(Found(HKEY_CURRENT_USER, L"Files"), (Stored{REG_SZ, std::string(2, '\0')}));
}

TEST_F(CreateRegValueTest, SubKeyStaysOpen)
{
    struct Created : support::ForwardingRegistry
    {
        LSTATUS RegCreateKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) override
        {
            const LSTATUS status = ForwardingRegistry::RegCreateKeyW(parent, subKey, key);
            created.reset(key);
            return status;
        }
        resource_ptr<HKEY> created;
    };
    const HKEY key = NewKey();
    Created watched;
    EXPECT_TRUE(CreateRegSubKeyAndValue(key, L"Sub", name, L"text"));
    EXPECT_TRUE(IsOpen(watched.created.get()));
}

TEST_F(CreateRegValueTest, WithoutASubKeyNothingIsSetAndTheKeyStaysOpen)
{
    struct NoSubKey : support::ForwardingRegistry
    {
        LSTATUS RegCreateKeyW(HKEY, const wchar_t*, HKEY&) override
        {
            return static_cast<LSTATUS>(ERROR_ACCESS_DENIED);
        }
    };
    const resource_ptr<HKEY> key(NewKey());
    {
        const NoSubKey failing;
        EXPECT_FALSE(CreateRegSubKeyAndValue(key.get(), L"Sub", name, L"text"));
    }
    EXPECT_TRUE(IsOpen(key.get()));
    EXPECT_EQ(Found(HKEY_CURRENT_USER, L"Files"), nothing);
}

TEST_F(CreateRegValueTest, ValueThatCannotBeSetFailsAndTheKeyIsClosed)
{
    struct NoValue : support::ForwardingRegistry
    {
        LSTATUS RegSetValueExW(HKEY, const wchar_t*, DWORD, const void*, DWORD) override
        {
            return static_cast<LSTATUS>(ERROR_ACCESS_DENIED);
        }
    };
    const HKEY key = NewKey();
    {
        const NoValue failing;
        EXPECT_FALSE(CreateRegSubKeyAndValue(key, L"Sub", name, L"text"));
    }
    EXPECT_FALSE(IsOpen(key));
}

TEST_F(CreateRegValueTest, KeyThatCannotBeClosedFails)
{
    struct NoClose : support::ForwardingRegistry
    {
        LSTATUS RegCloseKey(HKEY key) override
        {
            ForwardingRegistry::RegCloseKey(key);
            return static_cast<LSTATUS>(ERROR_INVALID_HANDLE);
        }
    };
    const HKEY key = NewKey();
    {
        const NoClose failing;
        EXPECT_FALSE(CreateRegSubKeyAndValue(key, L"Sub", name, L"text"));
    }
    EXPECT_EQ(Found(HKEY_CURRENT_USER, L"Files").type, REG_SZ);
}

TEST_F(CreateRegValueTest, UnnamedValueOfASubKeyIsSetAndTheKeyStaysOpen)
{
    const resource_ptr<HKEY> key(NewKey());
    EXPECT_TRUE(CreateRegValue(key.get(), L"Sub", L"text"));
    EXPECT_EQ(Found(HKEY_CURRENT_USER, L"Files\\Sub", L""), (Stored{REG_SZ, BytesOfText(std::wstring(L"text\0", 5))}));
    EXPECT_TRUE(CreateRegValue(key.get(), L"", L"own"));
    EXPECT_EQ(Found(HKEY_CURRENT_USER, L"Files", L""), (Stored{REG_SZ, BytesOfText(std::wstring(L"own\0", 4))}));
    EXPECT_FALSE(CreateRegValue(noKey, L"Sub", L"text"));
}
