#include "utility/settings/Lang.h"

#include "tests/support/ForwardingLocale.h"
#include "tests/support/ScratchHives.h"
#include "utility/settings/RegistryString.h"

#include <gtest/gtest.h>

#include <vector>

using utility::platform::Registry;

namespace
{

constexpr const wchar_t* keyPath = L"SOFTWARE\\Selvane\\TOLVERAN\\2022.0\\Options\\General";
constexpr const wchar_t* valueName = L"DisplayLanguage";

/// The user's locale is one that no test chooses.
struct UserFromQuebec : support::ForwardingLocale
{
    LCID UserDefault() override { return 0x0C0C; }
};

class DisplayLanguageTest : public ::testing::Test
{
protected:
    static void Store(DWORD type, const void* data, DWORD size)
    {
        HKEY key = nullptr;
        ASSERT_EQ(Registry().RegCreateKeyExW(HKEY_CURRENT_USER, keyPath, KEY_READ | KEY_WRITE, key), 0);
        if (data != nullptr)
        {
            EXPECT_EQ(Registry().RegSetValueExW(key, valueName, type, data, size), 0);
        }
        EXPECT_EQ(Registry().RegCloseKey(key), 0);
    }
    static void MakeKey() { Store(REG_NONE, nullptr, 0); }

    support::ScratchHives m_hives;
    UserFromQuebec m_locale;
};

}

TEST_F(DisplayLanguageTest, IsTheUsersDefaultWithoutAKey)
{
    EXPECT_EQ(Lang::GetLanguage(), 0x0C0Cu);
    EXPECT_EQ(Lang::SetLanguage(1031), 0);
    HKEY key = nullptr;
    EXPECT_EQ(Registry().RegOpenKeyExW(HKEY_CURRENT_USER, L"SOFTWARE\\Selvane", KEY_READ, key),
              static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND));
}

TEST_F(DisplayLanguageTest, IsTheUsersDefaultWithoutAValue)
{
    MakeKey();
    EXPECT_EQ(Lang::GetLanguage(), 0x0C0Cu);
}

TEST_F(DisplayLanguageTest, ChoiceIsStoredUntilItIsCleared)
{
    MakeKey();
    EXPECT_EQ(Lang::SetLanguage(1031), 1);
    EXPECT_EQ(Lang::GetLanguage(), 1031u);
    EXPECT_EQ(Lang::SetLanguage(0), 1);
    EXPECT_EQ(Lang::GetLanguage(), 0x0C0Cu);
}

TEST_F(DisplayLanguageTest, ChoiceIsNotLookedUpInTheTable)
{
    MakeKey();
    for (const LCID choice : {0x0415u, 1u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(Lang::SetLanguage(choice), 1);
        EXPECT_EQ(Lang::GetLanguage(), choice);
    }
}

TEST_F(DisplayLanguageTest, ChoiceIsADoubleWordInTheUsersHive)
{
    MakeKey();
    EXPECT_EQ(Lang::SetLanguage(0x0C0A), 1);
    HKEY key = nullptr;
    ASSERT_EQ(Registry().RegOpenKeyExW(HKEY_CURRENT_USER, keyPath, KEY_READ, key), 0);
    DWORD type = REG_NONE;
    unsigned char bytes[8] = {};
    DWORD size = sizeof(bytes);
    EXPECT_EQ(Registry().RegQueryValueExW(key, valueName, &type, bytes, &size), 0);
    EXPECT_EQ(type, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(std::vector<unsigned char>(bytes, bytes + size), (std::vector<unsigned char>{0x0A, 0x0C, 0, 0}));
    Registry().RegCloseKey(key);
}

TEST_F(DisplayLanguageTest, ValueOfAnotherTypeOrSizeIsNoChoice)
{
    const char16_t text[] = u"7";
    Store(REG_SZ, text, sizeof(text));
    EXPECT_EQ(Lang::GetLanguage(), 0x0C0Cu);
    const unsigned char number[8] = {0x07, 0x04};
    Store(REG_BINARY, number, 4);
    EXPECT_EQ(Lang::GetLanguage(), 0x0C0Cu);
    Store(REG_DWORD, number, 8);
    EXPECT_EQ(Lang::GetLanguage(), 0x0C0Cu);
    Store(REG_DWORD, number, 4);
    EXPECT_EQ(Lang::GetLanguage(), 0x0407u);
}

TEST_F(DisplayLanguageTest, MachinesHiveHasNoSay)
{
    HKEY key = nullptr;
    ASSERT_EQ(Registry().RegCreateKeyExW(HKEY_LOCAL_MACHINE, keyPath, KEY_READ | KEY_WRITE, key), 0);
    const LCID choice = 1031;
    EXPECT_EQ(Registry().RegSetValueExW(key, valueName, REG_DWORD, &choice, sizeof(choice)), 0);
    EXPECT_EQ(Registry().RegCloseKey(key), 0);
    EXPECT_EQ(Lang::GetLanguage(), 0x0C0Cu);
}

namespace
{

/// A store with an empty key, which can refuse to write, and a record of what was asked of it.
struct RecordingRegistry : support::ForwardingRegistry
{
    LSTATUS RegOpenKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        opened.emplace_back(parent, subKey, access);
        if (openStatus == 0)
            key = handle;
        return openStatus;
    }
    LSTATUS RegQueryValueExW(HKEY, const wchar_t*, DWORD*, void*, DWORD*) override
    {
        return static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
    }
    LSTATUS RegSetValueExW(HKEY, const wchar_t*, DWORD, const void*, DWORD) override { return writeStatus; }
    LSTATUS RegCloseKey(HKEY key) override
    {
        closed.push_back(key);
        return static_cast<LSTATUS>(ERROR_INVALID_HANDLE);
    }

    HKEY handle = reinterpret_cast<HKEY>(std::intptr_t{0x1230});
    LSTATUS openStatus = 0;
    LSTATUS writeStatus = 0;
    std::vector<std::tuple<HKEY, std::wstring, DWORD>> opened;
    std::vector<HKEY> closed;
};

}

TEST(DisplayLanguageStoreTest, KeyIsOpenedForWhatIsDoneAndClosed)
{
    RecordingRegistry registry;
    Lang::GetLanguage();
    EXPECT_EQ(Lang::SetLanguage(1031), 1);
    EXPECT_EQ(registry.opened, (decltype(registry.opened){{HKEY_CURRENT_USER, keyPath, 0x20019},
                                                          {HKEY_CURRENT_USER, keyPath, 0x20006}}));
    EXPECT_EQ(registry.closed, (std::vector<HKEY>{registry.handle, registry.handle}));
}

TEST(DisplayLanguageStoreTest, CloseRunsAfterAFailedOpenToo)
{
    RecordingRegistry registry;
    registry.openStatus = static_cast<LSTATUS>(ERROR_ACCESS_DENIED);
    EXPECT_EQ(Lang::GetLanguage(), utility::platform::Locale().UserDefault());
    EXPECT_EQ(Lang::SetLanguage(1031), 0);
    EXPECT_EQ(registry.closed, (std::vector<HKEY>{nullptr, nullptr}));
}

TEST(DisplayLanguageStoreTest, RefusedWriteIsAFailure)
{
    RecordingRegistry registry;
    registry.writeStatus = static_cast<LSTATUS>(ERROR_ACCESS_DENIED);
    EXPECT_EQ(Lang::SetLanguage(1031), 0);
    EXPECT_EQ(registry.closed.size(), 1u);
}

TEST(LangTest, WindowsDefaultLanguageIsTheUsersDefault)
{
    const UserFromQuebec locale;
    EXPECT_EQ(Lang::IsWindowsDefaultLanguage(0x0C0C), 1);
    EXPECT_EQ(Lang::IsWindowsDefaultLanguage(0x040C), 0);
    EXPECT_EQ(Lang::IsWindowsDefaultLanguage(0), 0);
}

TEST(LangTest, TableOfTranslationsIsInItsOrderAndSpelling)
{
    const std::array<std::pair<LCID, std::wstring>, 12> expected{{{0, L"Use Windows Display Language"},
                                                                  {2057, L"English"},
                                                                  {2052, L"Chinese Simplified"},
                                                                  {1028, L"Chinese Traditional"},
                                                                  {1031, L"German"},
                                                                  {3082, L"Spanish"},
                                                                  {1036, L"French"},
                                                                  {1040, L"Italian"},
                                                                  {1041, L"Japanese"},
                                                                  {1042, L"Korean"},
                                                                  {1046, L"Brazillian Portugese"},
                                                                  {1055, L"Turkish"}}};
    EXPECT_EQ(Lang::GetAvailableTranslations(), expected);
}

TEST(LangTest, EveryTranslationIsKnownByNameAndAbbreviation)
{
    for (const auto& [lcid, english] : Lang::GetAvailableTranslations())
    {
        std::wstring text;
        if (lcid == 0)
            continue;
        EXPECT_EQ(Lang::GetLanguageLocale(lcid, text), 1);
        EXPECT_EQ(Lang::GetLanguageName(text, text), 1);
        EXPECT_EQ(Lang::GetLanguageAbbreviatedName(lcid, text), 1);
        EXPECT_EQ(text.size(), 3u);
    }
}

struct CodesCase
{
    std::wstring text;
    int result;
    std::vector<std::wstring> codes;
};

class LanguageCodesTest : public ::testing::TestWithParam<CodesCase>
{
};

TEST_P(LanguageCodesTest, AreSplitByTheirLength)
{
    std::vector<std::wstring> codes{L"earlier"};
    EXPECT_EQ(Lang::GetLanguageCodes(GetParam().text, codes), GetParam().result);
    EXPECT_EQ(codes, GetParam().codes);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, LanguageCodesTest,
    ::testing::Values(CodesCase{std::wstring(L"a407\0b809\0\0", 11), 1, {L"a407", L"b809"}},
                      CodesCase{std::wstring(L"0407\0\0", 6), 1, {L"0407"}}, CodesCase{L"0407xy", 1, {L"0407"}},
                      CodesCase{L"?", 1, {}}, CodesCase{std::wstring(1, L'\0'), 1, {}},
                      CodesCase{L"a,b c-d,e f.", 0, {L"earlier"}}, CodesCase{L"a,b c-d,e f", 1, {L"a,b ", L"-d,e"}},
                      CodesCase{L"", 0, {L"earlier"}}, CodesCase{L"0407", 0, {L"earlier"}},
                      CodesCase{L"0407,", 0, {L"earlier"}}, CodesCase{L"0407,0809", 0, {L"earlier"}}));

struct NamedCase
{
    const wchar_t* code;
    LCID lcid;
};

class NamedLcidTest : public ::testing::TestWithParam<NamedCase>
{
};

TEST_P(NamedLcidTest, IsFourHexadecimalDigits) { EXPECT_EQ(Lang::GetNamedLCID(GetParam().code), GetParam().lcid); }

INSTANTIATE_TEST_SUITE_P(Codes, NamedLcidTest,
                         ::testing::Values(NamedCase{L"0407", 1031}, NamedCase{L"0c0A", 3082},
                                           NamedCase{L"FFFF", 65535}, NamedCase{L"407", 0}, NamedCase{L"00407", 0},
                                           NamedCase{L"", 0}, NamedCase{L"wxyz", 0}, NamedCase{L"04x7", 4},
                                           NamedCase{L"0x1F", 31}, NamedCase{L"  1F", 31},
                                           NamedCase{L"-001", 0xFFFFFFFF}));

TEST(LangTest, NamesOfALocale)
{
    std::wstring text;
    EXPECT_EQ(Lang::GetLanguageLocale(0x0C07, text), 1);
    EXPECT_EQ(text, L"de-AT");
    EXPECT_EQ(Lang::GetLanguageName(0x040C, text), 1);
    EXPECT_EQ(text, L"fran\u00E7ais");
    EXPECT_EQ(Lang::GetLanguageName(L"it-IT", text), 1);
    EXPECT_EQ(text, L"italiano");
    EXPECT_EQ(Lang::GetLanguageAbbreviatedName(0x0809, text), 1);
    EXPECT_EQ(text, L"ENG");
}

TEST(LangTest, UnknownLocaleLeavesTheTextAsItWas)
{
    std::wstring text = L"earlier";
    EXPECT_EQ(Lang::GetLanguageLocale(0x9999, text), 0);
    EXPECT_EQ(Lang::GetLanguageName(0x9999, text), 0);
    EXPECT_EQ(Lang::GetLanguageName(L"no such locale", text), 0);
    EXPECT_EQ(Lang::GetLanguageAbbreviatedName(0x9999, text), 0);
    EXPECT_EQ(text, L"earlier");
}

TEST(LangTest, EmptyTextIsANameOfALocaleButNotOfALanguage)
{
    struct : support::ForwardingLocale
    {
        static int Empty(wchar_t* buffer)
        {
            *buffer = L'\0';
            return 1;
        }
        int Name(LCID, wchar_t* buffer, int) override { return Empty(buffer); }
        int NativeLanguageName(LCID, wchar_t* buffer, int) override { return Empty(buffer); }
        int NativeLanguageName(const wchar_t*, wchar_t* buffer, int) override { return Empty(buffer); }
        int LanguageAbbreviation(LCID, wchar_t* buffer, int) override { return Empty(buffer); }
    } const locale;
    std::wstring text = L"earlier";
    EXPECT_EQ(Lang::GetLanguageName(0x0407, text), 0);
    EXPECT_EQ(Lang::GetLanguageName(L"de-DE", text), 0);
    EXPECT_EQ(Lang::GetLanguageAbbreviatedName(0x0407, text), 0);
    EXPECT_EQ(text, L"earlier");
    EXPECT_EQ(Lang::GetLanguageLocale(0x0407, text), 1);
    EXPECT_EQ(text, L"");
}

TEST(LangTest, LocaleIsAskedWithRoomForTheLongestText)
{
    struct : support::ForwardingLocale
    {
        std::vector<int> sizes;
        int Refuse(int size)
        {
            sizes.push_back(size);
            return 0;
        }
        int Name(LCID, wchar_t*, int size) override { return Refuse(size); }
        int NativeLanguageName(LCID, wchar_t*, int size) override { return Refuse(size); }
        int NativeLanguageName(const wchar_t*, wchar_t*, int size) override { return Refuse(size); }
        int LanguageAbbreviation(LCID, wchar_t*, int size) override { return Refuse(size); }
    } locale;
    std::wstring text;
    Lang::GetLanguageLocale(0x0407, text);
    Lang::GetLanguageName(0x0407, text);
    Lang::GetLanguageName(L"de-DE", text);
    Lang::GetLanguageAbbreviatedName(0x0407, text);
    EXPECT_EQ(locale.sizes, (std::vector<int>{85, 512, 512, 512}));
}
