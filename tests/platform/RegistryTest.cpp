#include "utility/platform/Registry.h"

#include "tests/support/ScratchHives.h"

#include <array>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace
{

using support::ScratchHives;
using utility::platform::Registry;
using utility::platform::RegistryKeyInfo;

constexpr DWORD readWrite = KEY_READ | KEY_WRITE;

LSTATUS Status(DWORD error) { return static_cast<LSTATUS>(error); }

const LSTATUS missing = Status(ERROR_FILE_NOT_FOUND);

/// An empty hive with one open key in it.
class RegistryTest : public ::testing::Test
{
protected:
    RegistryTest() { EXPECT_EQ(Registry().RegCreateKeyExW(HKEY_CURRENT_USER, L"Top", readWrite, m_top), 0); }
    ~RegistryTest() override { Registry().RegCloseKey(m_top); }

    HKEY Create(HKEY parent, const wchar_t* subKey, DWORD access = readWrite)
    {
        HKEY key = nullptr;
        EXPECT_EQ(Registry().RegCreateKeyExW(parent, subKey, access, key), 0);
        return key;
    }

    LSTATUS Opening(HKEY parent, const wchar_t* subKey, DWORD access = KEY_READ)
    {
        HKEY key = nullptr;
        const LSTATUS status = Registry().RegOpenKeyExW(parent, subKey, access, key);
        if (status == 0)
            Registry().RegCloseKey(key);
        return status;
    }

    void SetNumber(HKEY key, const wchar_t* name, DWORD number)
    {
        EXPECT_EQ(Registry().RegSetValueExW(key, name, REG_DWORD, &number, sizeof(number)), 0);
    }

    /// The number there is, 0xFFFFFFFF if there is none.
    DWORD Number(HKEY key, const wchar_t* name)
    {
        DWORD type = 0;
        DWORD number = 0;
        DWORD size = sizeof(number);
        const LSTATUS status = Registry().RegQueryValueExW(key, name, &type, &number, &size);
        return status == 0 && type == REG_DWORD && size == sizeof(number) ? number : 0xFFFFFFFF;
    }

    ScratchHives m_hives;
    HKEY m_top = nullptr;
};

TEST_F(RegistryTest, ValueComesBackWithItsTypeAndBytes)
{
    const std::array<unsigned char, 5> bytes{1, 0, 255, 0, 7};
    ASSERT_EQ(Registry().RegSetValueExW(m_top, L"Bytes", REG_BINARY, bytes.data(), 5), 0);
    std::array<unsigned char, 5> read{};
    DWORD type = 0;
    DWORD size = 5;
    EXPECT_EQ(Registry().RegQueryValueExW(m_top, L"Bytes", &type, read.data(), &size), 0);
    EXPECT_EQ(type, DWORD{REG_BINARY});
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(read, bytes);
}

TEST_F(RegistryTest, SecondSetReplacesTypeAndBytes)
{
    SetNumber(m_top, L"Value", 1);
    EXPECT_EQ(Registry().RegSetValueExW(m_top, L"VALUE", 77, "abc", 3), 0);
    DWORD type = 0;
    DWORD size = 0;
    EXPECT_EQ(Registry().RegQueryValueExW(m_top, L"Value", &type, nullptr, &size), 0);
    EXPECT_EQ(type, 77u);
    EXPECT_EQ(size, 3u);
}

TEST_F(RegistryTest, WithoutBufferTypeAndSizeAreGiven)
{
    SetNumber(m_top, L"Value", 1);
    DWORD type = 0;
    DWORD size = 99;
    EXPECT_EQ(Registry().RegQueryValueExW(m_top, L"Value", &type, nullptr, &size), 0);
    EXPECT_EQ(type, DWORD{REG_DWORD});
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(Registry().RegQueryValueExW(m_top, L"Value", nullptr, nullptr, nullptr), 0);
}

TEST_F(RegistryTest, SmallBufferGivesMoreDataAndTheSizeNeeded)
{
    SetNumber(m_top, L"Value", 1);
    DWORD type = 0;
    char small[3];
    DWORD size = sizeof(small);
    EXPECT_EQ(Registry().RegQueryValueExW(m_top, L"Value", &type, small, &size), Status(ERROR_MORE_DATA));
    EXPECT_EQ(type, DWORD{REG_DWORD});
    EXPECT_EQ(size, 4u);
}

TEST_F(RegistryTest, BufferWithoutSizeIsRefused)
{
    SetNumber(m_top, L"Value", 1);
    DWORD number = 0;
    EXPECT_EQ(Registry().RegQueryValueExW(m_top, L"Value", nullptr, &number, nullptr), Status(ERROR_INVALID_PARAMETER));
    wchar_t name[10];
    DWORD length = 10;
    EXPECT_EQ(Registry().RegEnumValueW(m_top, 0, name, length, nullptr, &number, nullptr),
              Status(ERROR_INVALID_PARAMETER));
}

TEST_F(RegistryTest, ValueOfSizeZeroExists)
{
    EXPECT_EQ(Registry().RegSetValueExW(m_top, L"Empty", REG_SZ, nullptr, 0), 0);
    DWORD type = 0;
    DWORD size = 99;
    EXPECT_EQ(Registry().RegQueryValueExW(m_top, L"Empty", &type, nullptr, &size), 0);
    EXPECT_EQ(type, DWORD{REG_SZ});
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(Registry().RegSetValueExW(m_top, L"Empty", REG_SZ, nullptr, 4), Status(ERROR_NOACCESS));
}

TEST_F(RegistryTest, LargeValueComesBackWhole)
{
    const std::string bytes(1000000, '\x5A');
    ASSERT_EQ(Registry().RegSetValueExW(m_top, L"Large", REG_BINARY, bytes.data(), 1000000), 0);
    std::string read(1000000, '\0');
    DWORD size = 1000000;
    EXPECT_EQ(Registry().RegQueryValueExW(m_top, L"Large", nullptr, read.data(), &size), 0);
    EXPECT_EQ(read, bytes);
}

TEST_F(RegistryTest, AbsentValueIsMissing)
{
    DWORD size = 0;
    EXPECT_EQ(Registry().RegQueryValueExW(m_top, L"Nothing", nullptr, nullptr, &size), missing);
    EXPECT_EQ(Registry().RegQueryValueExW(m_top, nullptr, nullptr, nullptr, &size), missing);
    EXPECT_EQ(Registry().RegDeleteValueW(m_top, L"Nothing"), missing);
}

TEST_F(RegistryTest, ReadAgainAValueIsWhatItIsNow)
{
    EXPECT_EQ(Number(m_top, L"Value"), 0xFFFFFFFFu);
    SetNumber(m_top, L"Value", 1);
    EXPECT_EQ(Number(m_top, L"Value"), 1u);
    EXPECT_EQ(Number(m_top, L"value"), 1u);
    SetNumber(m_top, L"Value", 2);
    EXPECT_EQ(Number(m_top, L"Value"), 2u);
    EXPECT_EQ(Registry().RegDeleteValueW(m_top, L"VALUE"), 0);
    EXPECT_EQ(Number(m_top, L"Value"), 0xFFFFFFFFu);
}

TEST_F(RegistryTest, NullAndEmptyNameAreTheUnnamedValue)
{
    SetNumber(m_top, nullptr, 5);
    EXPECT_EQ(Number(m_top, L""), 5u);
    EXPECT_EQ(Registry().RegDeleteValueW(m_top, L""), 0);
    EXPECT_EQ(Number(m_top, nullptr), 0xFFFFFFFFu);
}

TEST_F(RegistryTest, TextOfASubKeyIsItsUnnamedValue)
{
    ASSERT_EQ(Registry().RegSetValueW(m_top, L"New\\Sub", L"h\u00e9"), 0);
    HKEY key = Create(m_top, L"New\\Sub");
    DWORD type = 0;
    char16_t text[8] = u"";
    DWORD size = sizeof(text);
    EXPECT_EQ(Registry().RegQueryValueExW(key, nullptr, &type, text, &size), 0);
    EXPECT_EQ(type, DWORD{REG_SZ});
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(std::u16string_view(text, 3), std::u16string_view(u"h\u00e9\0", 3));
    Registry().RegCloseKey(key);
}

TEST_F(RegistryTest, TextOfAKeyItselfAsksForTheRightToSetIt)
{
    HKEY reader = Create(m_top, L"", KEY_READ);
    for (const wchar_t* const itself : {L"", static_cast<const wchar_t*>(nullptr)})
    {
        EXPECT_EQ(Registry().RegSetValueW(reader, itself, L"text"), Status(ERROR_ACCESS_DENIED));
        EXPECT_EQ(Registry().RegQueryValueExW(m_top, nullptr, nullptr, nullptr, nullptr), missing);
        EXPECT_EQ(Registry().RegSetValueW(m_top, itself, L"text"), 0);
        EXPECT_EQ(Registry().RegDeleteValueW(m_top, nullptr), 0);
    }
    // A subkey of its own is another matter.
    EXPECT_EQ(Registry().RegSetValueW(reader, L"Sub", L"text"), 0);
    Registry().RegCloseKey(reader);
}

TEST_F(RegistryTest, OpeningCreatesNothing)
{
    EXPECT_EQ(Opening(m_top, L"Sub"), missing);
    EXPECT_EQ(Opening(m_top, L"Sub\\Below"), missing);
    Registry().RegCloseKey(Create(m_top, L"Sub\\Below"));
    EXPECT_EQ(Opening(m_top, L"Sub"), 0);
    EXPECT_EQ(Opening(m_top, L"Sub\\Below"), 0);
}

TEST_F(RegistryTest, FailedOpeningLeavesTheKeyAlone)
{
    HKEY key = m_top;
    EXPECT_EQ(Registry().RegOpenKeyExW(m_top, L"Nothing", KEY_READ, key), missing);
    EXPECT_EQ(key, m_top);
}

TEST_F(RegistryTest, OpeningWithAllAccessReadsAndWritesWhatExistsAndCreatesNothing)
{
    HKEY key = m_top;
    EXPECT_EQ(Registry().RegOpenKeyW(m_top, L"Sub", key), missing);
    EXPECT_EQ(key, m_top);
    EXPECT_EQ(Opening(m_top, L"Sub"), missing);
    Registry().RegCloseKey(Create(m_top, L"Sub"));
    ASSERT_EQ(Registry().RegOpenKeyW(m_top, L"SUB", key), 0);
    SetNumber(key, L"Value", 5);
    EXPECT_EQ(Number(key, L"Value"), 5u);
    Registry().RegCloseKey(key);
}

TEST_F(RegistryTest, CreatingFindsWhatExists)
{
    HKEY first = Create(m_top, L"Sub");
    SetNumber(first, L"Value", 3);
    HKEY second = nullptr;
    ASSERT_EQ(Registry().RegCreateKeyW(m_top, L"SUB", second), 0);
    EXPECT_EQ(Number(second, L"Value"), 3u);
    SetNumber(second, L"Value", 4);
    EXPECT_EQ(Number(first, L"Value"), 4u);
    Registry().RegCloseKey(first);
    Registry().RegCloseKey(second);
}

TEST_F(RegistryTest, EmptyPathIsTheKeyItself)
{
    SetNumber(m_top, L"Value", 8);
    for (const wchar_t* const path : {L"", static_cast<const wchar_t*>(nullptr)})
    {
        HKEY opened = nullptr;
        ASSERT_EQ(Registry().RegOpenKeyExW(m_top, path, KEY_READ, opened), 0);
        EXPECT_EQ(Number(opened, L"Value"), 8u);
        Registry().RegCloseKey(opened);
        HKEY created = Create(m_top, path);
        EXPECT_EQ(Number(created, L"Value"), 8u);
        Registry().RegCloseKey(created);
    }
}

TEST_F(RegistryTest, BackslashMayEndAPathAndBeDoubledButNotBeginIt)
{
    Registry().RegCloseKey(Create(m_top, L"A\\B"));
    EXPECT_EQ(Opening(m_top, L"A\\"), 0);
    EXPECT_EQ(Opening(m_top, L"A\\\\B"), 0);
    HKEY key = nullptr;
    EXPECT_EQ(Opening(m_top, L"\\A"), Status(ERROR_BAD_PATHNAME));
    EXPECT_EQ(Registry().RegCreateKeyExW(m_top, L"\\C", readWrite, key), Status(ERROR_BAD_PATHNAME));
    EXPECT_EQ(Opening(m_top, L"C"), missing);
}

TEST_F(RegistryTest, SlashIsPartOfAName)
{
    Registry().RegCloseKey(Create(m_top, L"A/B"));
    EXPECT_EQ(Opening(m_top, L"A/B"), 0);
    EXPECT_EQ(Opening(m_top, L"A"), missing);
}

TEST_F(RegistryTest, LongestNamesAreAccepted)
{
    Registry().RegCloseKey(Create(m_top, std::wstring(256, L'k').c_str()));
    EXPECT_EQ(Opening(m_top, std::wstring(256, L'K').c_str()), 0);
    EXPECT_EQ(Opening(m_top, std::wstring(255, L'K').c_str()), missing);
    HKEY key = nullptr;
    EXPECT_EQ(Opening(m_top, std::wstring(257, L'k').c_str()), Status(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(Registry().RegCreateKeyExW(m_top, std::wstring(257, L'k').c_str(), KEY_READ, key),
              Status(ERROR_INVALID_PARAMETER));
    SetNumber(m_top, std::wstring(16383, L'v').c_str(), 6);
    EXPECT_EQ(Number(m_top, std::wstring(16383, L'V').c_str()), 6u);
    const std::wstring tooLong(16384, L'v');
    EXPECT_EQ(Registry().RegSetValueExW(m_top, tooLong.c_str(), REG_DWORD, "1234", 4), Status(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(Number(m_top, tooLong.c_str()), 0xFFFFFFFFu);
}

struct CaseOfName
{
    const wchar_t* name;
    const wchar_t* other;
    bool same;
};

class NamesOfRegistryTest : public RegistryTest, public ::testing::WithParamInterface<CaseOfName>
{
};

TEST_P(NamesOfRegistryTest, AreComparedWithoutRegardToCase)
{
    const auto [name, other, same] = GetParam();
    SetNumber(m_top, name, 1);
    EXPECT_EQ(Number(m_top, other) == 1, same);
    Registry().RegCloseKey(Create(m_top, name));
    EXPECT_EQ(Opening(m_top, other) == 0, same);
}

INSTANTIATE_TEST_SUITE_P(
    Letters, NamesOfRegistryTest,
    ::testing::Values(CaseOfName{L"tool Diameter 2", L"TOOL dIAMETER 2", true}, CaseOfName{L"[a_", L"{A_", false},
                      CaseOfName{L"\u00e4\u00f6\u00e9", L"\u00c4\u00d6\u00c9", true}, // Latin
                      CaseOfName{L"x\u00ff", L"X\u0178", true},
                      CaseOfName{L"\u03b1\u03c9", L"\u0391\u03a9", true},                              // Greek
                      CaseOfName{L"\u0434", L"\u0414", true},                                          // Cyrillic
                      CaseOfName{L"\uff41", L"\uff21", true},                                          // full width
                      CaseOfName{L"\u0131", L"I", false},                                              // dotless i
                      CaseOfName{L"\u017f", L"S", false},                                              // long s
                      CaseOfName{L"\u00df", L"SS", false}, CaseOfName{L"\u00b5", L"\u039c", false},    // micro
                      CaseOfName{L"\u03c3", L"\u03a3", true}, CaseOfName{L"\u03c2", L"\u03a3", false}, // final sigma
                      CaseOfName{L"\u01c6", L"\u01c4", true}, CaseOfName{L"\u01c5", L"\u01c4", false}, // d with z
                      CaseOfName{L"\u1e9b", L"\u1e60", false}, CaseOfName{L"\u0345", L"\u0399", false},
                      CaseOfName{L"\u65e5\u672c", L"\u65e5\u672c", true}, CaseOfName{L"a", L"\u00e1", false}));

TEST_F(RegistryTest, NamesKeepTheCaseTheyWereMadeWith)
{
    Registry().RegCloseKey(Create(m_top, L"MixedCase"));
    Registry().RegCloseKey(Create(m_top, L"mixedcase"));
    SetNumber(m_top, L"FirstName", 1);
    SetNumber(m_top, L"FIRSTNAME", 2);
    wchar_t name[40];
    DWORD length = 40;
    EXPECT_EQ(Registry().RegEnumKeyExW(m_top, 0, name, length), 0);
    EXPECT_STREQ(name, L"MixedCase");
    EXPECT_EQ(length, 9u);
    length = 40;
    EXPECT_EQ(Registry().RegEnumValueW(m_top, 0, name, length, nullptr, nullptr, nullptr), 0);
    EXPECT_STREQ(name, L"FirstName");
    EXPECT_EQ(length, 9u);
}

TEST_F(RegistryTest, LoneSurrogatesInNamesAreKeptApart)
{
    // As from a file whose name is no UTF-8.
    const std::set<std::wstring> names{L"part\xDCE9", L"part\xDCFC",   L"part\xD800",
                                       L"part\xFFFD", L"\xDCC3\xDCA9", L"\u00E9"};
    DWORD count = 0;
    for (const auto& each : names)
    {
        SetNumber(m_top, each.c_str(), count);
        HKEY key = Create(m_top, each.c_str());
        SetNumber(key, L"Value", count++);
        Registry().RegCloseKey(key);
    }
    std::set<std::wstring> keys;
    std::set<std::wstring> values;
    wchar_t name[40];
    DWORD length = 40;
    for (DWORD i = 0; Registry().RegEnumKeyExW(m_top, i, name, length) == 0; ++i, length = 40)
        keys.emplace(name, length);
    for (DWORD i = 0; Registry().RegEnumValueW(m_top, i, name, length, nullptr, nullptr, nullptr) == 0;
         ++i, length = 40)
        values.emplace(name, length);
    EXPECT_EQ(keys, names);
    EXPECT_EQ(values, names);
    count = 0;
    for (const auto& each : names)
    {
        EXPECT_EQ(Number(m_top, each.c_str()), count);
        HKEY key = Create(m_top, each.c_str());
        EXPECT_EQ(Number(key, L"Value"), count++);
        Registry().RegCloseKey(key);
    }
}

TEST_F(RegistryTest, EveryKeyAndValueIsEnumerated)
{
    const std::set<std::wstring> names{L"Alpha", L"beta", L"Gamma", L"\u0394"};
    for (const auto& each : names)
    {
        Registry().RegCloseKey(Create(m_top, (each + L"\\Below").c_str()));
        SetNumber(m_top, each.c_str(), static_cast<DWORD>(each.size()));
    }
    std::set<std::wstring> keys;
    std::set<std::wstring> values;
    wchar_t name[40];
    DWORD length = 40;
    for (DWORD i = 0; Registry().RegEnumKeyExW(m_top, i, name, length) == 0; ++i, length = 40)
        keys.emplace(name, length);
    DWORD type = 0;
    DWORD number = 0;
    DWORD size = sizeof(number);
    for (DWORD i = 0; Registry().RegEnumValueW(m_top, i, name, length, &type, &number, &size) == 0; ++i, length = 40)
    {
        EXPECT_EQ(type, DWORD{REG_DWORD});
        EXPECT_EQ(size, 4u);
        EXPECT_EQ(number, length);
        values.emplace(name, length);
    }
    EXPECT_EQ(keys, names);
    EXPECT_EQ(values, names);
    EXPECT_EQ(Registry().RegEnumKeyExW(m_top, 4, name, length), Status(ERROR_NO_MORE_ITEMS));
    EXPECT_EQ(Registry().RegEnumValueW(m_top, 4, name, length, nullptr, nullptr, nullptr), Status(ERROR_NO_MORE_ITEMS));
}

TEST_F(RegistryTest, EnumerationSaysWhenRoomIsMissing)
{
    Registry().RegCloseKey(Create(m_top, L"Four"));
    SetNumber(m_top, L"Five5", 1);
    wchar_t name[6];
    DWORD length = 4;
    EXPECT_EQ(Registry().RegEnumKeyExW(m_top, 0, name, length), Status(ERROR_MORE_DATA));
    length = 5;
    EXPECT_EQ(Registry().RegEnumKeyExW(m_top, 0, name, length), 0);
    DWORD size = 4;
    DWORD number = 0;
    length = 5;
    EXPECT_EQ(Registry().RegEnumValueW(m_top, 0, name, length, nullptr, &number, &size), Status(ERROR_MORE_DATA));
    length = 6;
    size = 3;
    EXPECT_EQ(Registry().RegEnumValueW(m_top, 0, name, length, nullptr, &number, &size), Status(ERROR_MORE_DATA));
    EXPECT_EQ(size, 4u);
    length = 6;
    EXPECT_EQ(Registry().RegEnumValueW(m_top, 0, name, length, nullptr, &number, &size), 0);
    EXPECT_EQ(number, 1u);
}

TEST_F(RegistryTest, KeyInformationCountsAndMeasures)
{
    RegistryKeyInfo info;
    info.values = 99;
    ASSERT_EQ(Registry().RegQueryInfoKeyW(m_top, info), 0);
    EXPECT_EQ(info.subKeys + info.values + info.longestSubKey + info.longestValueName + info.largestValue, 0u);
    Registry().RegCloseKey(Create(m_top, L"One"));
    Registry().RegCloseKey(Create(m_top, L"Eleven\\Below"));
    SetNumber(m_top, L"V", 1);
    EXPECT_EQ(Registry().RegSetValueExW(m_top, L"\u00e9\u00e9\u00e9", REG_BINARY, "1234567", 7), 0);
    ASSERT_EQ(Registry().RegQueryInfoKeyW(m_top, info), 0);
    EXPECT_EQ(info.subKeys, 2u);
    EXPECT_EQ(info.longestSubKey, 6u);
    EXPECT_EQ(info.values, 2u);
    EXPECT_EQ(info.longestValueName, 3u);
    EXPECT_EQ(info.largestValue, 7u);
}

TEST_F(RegistryTest, DeletingAKeyTakesAllBelowIt)
{
    HKEY deep = Create(m_top, L"Tree\\A\\B\\C");
    SetNumber(deep, L"Value", 1);
    Registry().RegCloseKey(Create(m_top, L"Trees"));
    EXPECT_EQ(Registry().SHDeleteKeyW(m_top, L"Tree"), 0);
    EXPECT_EQ(Opening(m_top, L"Tree"), missing);
    EXPECT_EQ(Opening(m_top, L"Trees"), 0);
    EXPECT_EQ(Registry().SHDeleteKeyW(m_top, L"Tree"), missing);
    Registry().RegCloseKey(deep);
    // What is made again is empty.
    deep = Create(m_top, L"Tree\\A\\B\\C");
    EXPECT_EQ(Number(deep, L"Value"), 0xFFFFFFFFu);
    Registry().RegCloseKey(deep);
}

TEST_F(RegistryTest, DeletedKeyGivesNothingMore)
{
    HKEY key = Create(m_top, L"Gone");
    SetNumber(key, L"Value", 1);
    EXPECT_EQ(Number(key, L"Value"), 1u);
    ASSERT_EQ(Registry().SHDeleteKeyW(m_top, L"Gone"), 0);
    const LSTATUS deleted = Status(ERROR_KEY_DELETED);
    HKEY other = nullptr;
    wchar_t name[40];
    DWORD length = 40;
    DWORD number = 0;
    RegistryKeyInfo info;
    // Also when there is a key of that name again.
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(Registry().RegQueryValueExW(key, L"Value", nullptr, nullptr, nullptr), deleted);
        EXPECT_EQ(Registry().RegSetValueExW(key, L"Value", REG_DWORD, &number, 4), deleted);
        EXPECT_EQ(Registry().RegDeleteValueW(key, L"Value"), deleted);
        EXPECT_EQ(Registry().RegOpenKeyExW(key, L"Sub", KEY_READ, other), deleted);
        EXPECT_EQ(Registry().RegOpenKeyExW(key, L"", KEY_READ, other), deleted);
        EXPECT_EQ(Registry().RegCreateKeyExW(key, L"Sub", KEY_READ, other), deleted);
        EXPECT_EQ(Registry().RegEnumKeyExW(key, 0, name, length), deleted);
        EXPECT_EQ(Registry().RegEnumValueW(key, 0, name, length, nullptr, nullptr, nullptr), deleted);
        EXPECT_EQ(Registry().RegQueryInfoKeyW(key, info), deleted);
        Registry().RegCloseKey(Create(m_top, L"Gone"));
    }
    EXPECT_EQ(Registry().RegCloseKey(key), 0);
}

TEST_F(RegistryTest, OperationsAskForTheirRight)
{
    SetNumber(m_top, L"Value", 1);
    HKEY reader = Create(m_top, L"", KEY_READ);
    HKEY writer = Create(m_top, L"", KEY_WRITE);
    const LSTATUS denied = Status(ERROR_ACCESS_DENIED);
    wchar_t name[40];
    DWORD length = 40;
    DWORD number = 2;
    EXPECT_EQ(Registry().RegSetValueExW(reader, L"Value", REG_DWORD, &number, 4), denied);
    EXPECT_EQ(Registry().RegDeleteValueW(reader, L"Value"), denied);
    EXPECT_EQ(Registry().RegQueryValueExW(writer, L"Value", nullptr, nullptr, nullptr), denied);
    EXPECT_EQ(Registry().RegEnumValueW(writer, 0, name, length, nullptr, nullptr, nullptr), denied);
    EXPECT_EQ(Registry().RegEnumKeyExW(writer, 0, name, length), denied);
    EXPECT_EQ(Number(reader, L"Value"), 1u);
    // Whether a key can be made depends on the store, not on how its parent was opened.
    Registry().RegCloseKey(Create(reader, L"Sub"));
    EXPECT_EQ(Opening(reader, L"Sub", readWrite), 0);
    Registry().RegCloseKey(reader);
    Registry().RegCloseKey(writer);
}

TEST_F(RegistryTest, NoKeyIsAnInvalidHandle)
{
    const LSTATUS invalid = Status(ERROR_INVALID_HANDLE);
    HKEY key = nullptr;
    EXPECT_EQ(Opening(nullptr, L"Top"), invalid);
    EXPECT_EQ(Registry().RegCreateKeyExW(nullptr, L"Top", KEY_READ, key), invalid);
    EXPECT_EQ(Registry().RegQueryValueExW(nullptr, L"Value", nullptr, nullptr, nullptr), invalid);
    EXPECT_EQ(Registry().RegSetValueExW(nullptr, L"Value", REG_DWORD, "1234", 4), invalid);
    EXPECT_EQ(Registry().RegCloseKey(nullptr), invalid);
}

TEST_F(RegistryTest, ClosedKeyIsAnInvalidHandle)
{
    HKEY key = Create(m_top, L"Sub");
    EXPECT_EQ(Registry().RegCloseKey(key), 0);
    EXPECT_EQ(Registry().RegCloseKey(key), Status(ERROR_INVALID_HANDLE));
    EXPECT_EQ(Registry().RegQueryValueExW(key, L"Value", nullptr, nullptr, nullptr), Status(ERROR_INVALID_HANDLE));
}

TEST_F(RegistryTest, PredefinedKeysStayOpen)
{
    EXPECT_EQ(Registry().RegCloseKey(HKEY_CURRENT_USER), 0);
    EXPECT_EQ(Registry().RegCloseKey(HKEY_LOCAL_MACHINE), 0);
    EXPECT_EQ(Opening(HKEY_CURRENT_USER, L"Top"), 0);
    EXPECT_EQ(Opening(HKEY_LOCAL_MACHINE, L"Top"), missing);
}

TEST_F(RegistryTest, ManyKeysCanBeOpenAtOnce)
{
    std::array<HKEY, 300> keys{};
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        keys[i] = Create(m_top, (L"Key" + std::to_wstring(i)).c_str());
        SetNumber(keys[i], L"Value", static_cast<DWORD>(i));
    }
    EXPECT_EQ(std::set<HKEY>(keys.begin(), keys.end()).size(), keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        EXPECT_EQ(Number(keys[i], L"Value"), i);
        EXPECT_EQ(Registry().RegCloseKey(keys[i]), 0);
    }
}

}
