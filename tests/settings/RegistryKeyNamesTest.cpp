#include "utility/settings/RegistryKeyNames.h"

#include <gtest/gtest.h>

#include <string>

TEST(IsValidRegistryKeyNameTest, EmptyTextIsNone)
{
    EXPECT_FALSE(IsValidRegistryKeyName(L""));
    EXPECT_FALSE(IsValidRegistryKeyName(nullptr));
}

TEST(IsValidRegistryKeyNameTest, TextWithABackslashIsNone)
{
    for (const wchar_t* const name : {L"a\\b", L"\\", L"\\a", L"a\\"})
        EXPECT_FALSE(IsValidRegistryKeyName(name)) << name;
}

TEST(IsValidRegistryKeyNameTest, AnyOtherTextIsOne)
{
    for (const wchar_t* const name : {L"a", L"a/b", L" ", L".", L"*?\"<>|:", L"\u20AC"})
        EXPECT_TRUE(IsValidRegistryKeyName(name)) << name;
    EXPECT_TRUE(IsValidRegistryKeyName(std::wstring(100000, L'x').c_str()));
}
