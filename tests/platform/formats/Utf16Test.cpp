#include "utility/platform/formats/Utf16.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

using utility::platform::formats::Utf16FromWide;
using utility::platform::formats::WideFromUtf16;

struct Pair
{
    std::wstring wide;
    std::u16string stored;
};

class StoredTextTest : public ::testing::TestWithParam<Pair>
{
};

TEST_P(StoredTextTest, IsUtf16AndComesBack)
{
    EXPECT_EQ(Utf16FromWide(GetParam().wide), GetParam().stored);
    EXPECT_EQ(WideFromUtf16(GetParam().stored.data(), GetParam().stored.size()), GetParam().wide);
}

INSTANTIATE_TEST_SUITE_P(Texts, StoredTextTest,
                         ::testing::Values(Pair{L"", u""}, Pair{L"Selvane 2022", u"Selvane 2022"},
                                           Pair{std::wstring(L"a\0b", 3), std::u16string(u"a\0b", 3)},
                                           Pair{L"\u00e9\u65e5\uffff", u"\u00e9\u65e5\uffff"},
                                           Pair{L"x\U0001F600\U0010FFFFy", u"x\U0001F600\U0010FFFFy"},
                                           Pair{{L'a', wchar_t(0xD83D)}, {u'a', 0xD83D}},
                                           Pair{{wchar_t(0xDE00), L'a'}, {0xDE00, u'a'}},
                                           Pair{{wchar_t(0xD83D), wchar_t(0xD83D)}, {0xD83D, 0xD83D}}));

TEST(StoredTextTest, IsReadFromAnyAddress)
{
    const char bytes[] = "?A\0B\0";
    EXPECT_EQ(WideFromUtf16(bytes + 1, 2), L"AB");
}

}
