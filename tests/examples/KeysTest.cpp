#include "examples/settings/Keys.h"

#include "tests/support/ScratchHives.h"

#include <gtest/gtest.h>

using regtext::DataOfText;
using regtext::Key;
using regtext::Value;

namespace
{

struct PlaceCase
{
    const wchar_t* name;
    HKEY hive;
    const wchar_t* full;
    const wchar_t* subKey;
};

class KeysLocateTest : public testing::TestWithParam<PlaceCase>
{
};

TEST_P(KeysLocateTest, FindsTheHive)
{
    const keys::Place place = keys::Locate(GetParam().name);
    EXPECT_EQ(place.hive, GetParam().hive);
    EXPECT_EQ(place.name, GetParam().full);
    EXPECT_EQ(place.subKey, GetParam().subKey);
}

INSTANTIATE_TEST_SUITE_P(
    Names, KeysLocateTest,
    testing::Values(PlaceCase{L"HKCU\\a\\b", HKEY_CURRENT_USER, L"HKEY_CURRENT_USER\\a\\b", L"a\\b"},
                    PlaceCase{L"hkey_local_machine\\A", HKEY_LOCAL_MACHINE, L"HKEY_LOCAL_MACHINE\\A", L"A"},
                    PlaceCase{L"HKLM", HKEY_LOCAL_MACHINE, L"HKEY_LOCAL_MACHINE", L""},
                    PlaceCase{L"HKLM\\\\", HKEY_LOCAL_MACHINE, L"HKEY_LOCAL_MACHINE", L""},
                    PlaceCase{L"HKCU\\a\\", HKEY_CURRENT_USER, L"HKEY_CURRENT_USER\\a", L"a"},
                    PlaceCase{L"HKCUX\\a", nullptr, L"HKCUX\\a", L""},
                    PlaceCase{L"HKEY_USERS\\a", nullptr, L"HKEY_USERS\\a", L""}, PlaceCase{L"", nullptr, L"", L""}));

class KeysTest : public testing::Test
{
protected:
    static LSTATUS StatusOf(const std::function<void()>& work)
    {
        try
        {
            work();
        }
        catch (const keys::Failure& failure)
        {
            EXPECT_EQ(failure.key, L"HKEY_CURRENT_USER\\a");
            return failure.status;
        }
        return ERROR_SUCCESS;
    }

    support::ScratchHives hives;
    const keys::Place place = keys::Locate(L"HKCU\\a");
    const Value text{L"text", REG_SZ, DataOfText(L"x"), false};
    const Value unknown{L"Unknown", 0x1234, std::string(5000, 'b'), false};
    const Value unnamed{L"", REG_BINARY, "", false};
};

TEST_F(KeysTest, TreeIsWhatWasApplied)
{
    keys::Apply({L"HKEY_CURRENT_USER\\a", {text, unnamed, unknown}, false});
    keys::Apply({L"HKEY_CURRENT_USER\\a\\z", {text}, false});
    keys::Apply({L"HKEY_CURRENT_USER\\a\\b\\c", {}, false});
    EXPECT_EQ(keys::SubKeys(place), (std::vector<std::wstring>{L"b", L"z"}));
    EXPECT_EQ(keys::Tree(place), (std::vector<Key>{{L"HKEY_CURRENT_USER\\a", {unnamed, unknown, text}, false},
                                                   {L"HKEY_CURRENT_USER\\a\\b", {}, false},
                                                   {L"HKEY_CURRENT_USER\\a\\b\\c", {}, false},
                                                   {L"HKEY_CURRENT_USER\\a\\z", {text}, false}}));
    EXPECT_EQ(keys::Tree(keys::Locate(L"HKLM")), (std::vector<Key>{{L"HKEY_LOCAL_MACHINE", {}, false}}));
}

TEST_F(KeysTest, DeletionsAreAppliedInTheirOrderAndMayFindNothing)
{
    const Value noText{L"text", REG_NONE, "", true};
    keys::Apply({L"HKEY_CURRENT_USER\\a", {noText, text, unknown, noText}, false});
    EXPECT_EQ(keys::Read(place).values, std::vector<Value>{unknown});
    keys::Apply({L"HKEY_CURRENT_USER\\a", {}, true});
    keys::Apply({L"HKEY_CURRENT_USER\\a", {}, true});
    EXPECT_EQ(keys::SubKeys(keys::Locate(L"HKCU")), std::vector<std::wstring>());
}

TEST_F(KeysTest, ValueIsReadByItsName)
{
    keys::Apply({L"HKEY_CURRENT_USER\\a", {text, unknown}, false});
    Value value;
    EXPECT_TRUE(keys::ReadValue(place, L"Unknown", value));
    EXPECT_EQ(value, unknown);
    EXPECT_FALSE(keys::ReadValue(place, L"absent", value));
}

TEST_F(KeysTest, CounterTablesOfARegistryFileAreThereForTheirReader)
{
    // As the registry's editor writes them, in lines.
    const std::vector<Key> file =
        regtext::Parse("Windows Registry Editor Version 5.00\r\n\r\n"
                       "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Perflib\\009]\r\n"
                       "\"Counter\"=hex(7):32,00,33,00,38,00,00,00,50,00,72,00,6f,00,63,00,65,00,73,00,73,\\\r\n"
                       "  00,6f,00,72,00,00,00,36,00,00,00,49,00,64,00,6c,00,65,00,00,00,00,00\r\n"
                       "\"Help\"=hex(7):37,00,00,00,53,00,6c,00,65,00,65,00,70,00,73,00,00,00,00,00\r\n");
    for (const Key& key : file)
        keys::Apply(key);
    CPerfLib names(9, true, false);
    EXPECT_EQ(names.GetTitleIndex(L"Processor"), 238u);
    EXPECT_EQ(names.GetTitleIndex(L"Idle"), 6u);
    std::map<int, std::wstring> help;
    EXPECT_TRUE(names.GetPerformanceDataCounterHelp(help));
    EXPECT_EQ(help, (std::map<int, std::wstring>{{7, L"Sleeps"}}));
}

TEST_F(KeysTest, WhatIsAbsentIsAFailure)
{
    constexpr auto absent = static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
    Value value;
    EXPECT_EQ(StatusOf([&] { keys::Read(place); }), absent);
    EXPECT_EQ(StatusOf([&] { keys::SubKeys(place); }), absent);
    EXPECT_EQ(StatusOf([&] { keys::ReadValue(place, L"n", value); }), absent);
    EXPECT_EQ(StatusOf([&] { keys::DeleteTree(place); }), absent);
    EXPECT_EQ(StatusOf([&] { keys::DeleteValue(place, L"n"); }), absent);
    keys::Apply({L"HKEY_CURRENT_USER\\a", {text}, false});
    EXPECT_EQ(StatusOf([&] { keys::DeleteValue(place, L"n"); }), absent);
    EXPECT_EQ(StatusOf([&] { keys::DeleteValue(place, L"text"); }), 0);
    EXPECT_EQ(StatusOf([&] { keys::DeleteTree(place); }), 0);
}

TEST_F(KeysTest, WhatTheStoreRefusesIsAFailure)
{
    struct Refusing : support::ForwardingRegistry
    {
        LSTATUS RegSetValueExW(HKEY, const wchar_t*, DWORD, const void*, DWORD) override
        {
            return static_cast<LSTATUS>(ERROR_DISK_FULL);
        }
        LSTATUS RegEnumValueW(HKEY, DWORD, wchar_t*, DWORD&, DWORD*, void*, DWORD*) override
        {
            return static_cast<LSTATUS>(ERROR_KEY_DELETED);
        }
    };
    const Refusing refusing;
    EXPECT_EQ(StatusOf(
                  [&] {
                      keys::Apply({L"HKEY_CURRENT_USER\\a", {text}, false});
                  }),
              static_cast<LSTATUS>(ERROR_DISK_FULL));
    EXPECT_EQ(StatusOf([&] { keys::Tree(place); }), static_cast<LSTATUS>(ERROR_KEY_DELETED));
}

}
