#include "examples/settings/ValueText.h"

#include <gtest/gtest.h>

using regtext::DataOfText;
using regtext::Value;

namespace
{

struct ValueCase
{
    const char* type;
    std::vector<std::wstring> parts;
    DWORD tag;
    std::string data;
    const wchar_t* plain;
};

class ValueTextTest : public testing::TestWithParam<ValueCase>
{
};

TEST_P(ValueTextTest, IsTypedAndSeen)
{
    const Value value = valuetext::Typed(L"n", GetParam().type, GetParam().parts);
    EXPECT_EQ(value, (Value{L"n", GetParam().tag, GetParam().data, false}));
    EXPECT_EQ(valuetext::Plain(value), GetParam().plain);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ValueTextTest,
    testing::Values(ValueCase{"REG_SZ", {L"text \u00E4"}, REG_SZ, DataOfText(L"text \u00E4"), L"text \u00E4"},
                    ValueCase{"REG_SZ", {L""}, REG_SZ, DataOfText(L""), L""},
                    ValueCase{"REG_EXPAND_SZ", {L"%A%"}, REG_EXPAND_SZ, DataOfText(L"%A%"), L"%A%"},
                    ValueCase{"REG_MULTI_SZ", {}, REG_MULTI_SZ, DataOfText(L""), L""},
                    ValueCase{"REG_MULTI_SZ",
                              {L"a", L"b c"},
                              REG_MULTI_SZ,
                              DataOfText(L"a") + DataOfText(L"b c") + DataOfText(L""),
                              L"a\nb c"},
                    ValueCase{"REG_DWORD", {L"258"}, REG_DWORD, std::string("\2\1\0\0", 4), L"258"},
                    ValueCase{"REG_DWORD", {L"0xFFFFFFFF"}, REG_DWORD, "\xFF\xFF\xFF\xFF", L"4294967295"},
                    ValueCase{
                        "REG_QWORD", {L"0x100000000"}, REG_QWORD, std::string("\0\0\0\0\1\0\0\0", 8), L"4294967296"},
                    ValueCase{"REG_BINARY", {L"00fF10"}, REG_BINARY, std::string("\0\xFF\x10", 3), L"00ff10"},
                    ValueCase{"REG_BINARY", {L""}, REG_BINARY, "", L""}));

struct BadValue
{
    const char* type;
    std::vector<std::wstring> parts;
};

class ValueTextBadTest : public testing::TestWithParam<BadValue>
{
};

TEST_P(ValueTextBadTest, IsRefused)
{
    EXPECT_THROW(valuetext::Typed(L"n", GetParam().type, GetParam().parts), std::invalid_argument);
}

INSTANTIATE_TEST_SUITE_P(Values, ValueTextBadTest,
                         testing::Values(BadValue{"reg_sz", {L"x"}}, BadValue{"", {L"x"}}, BadValue{"REG_SZ", {}},
                                         BadValue{"REG_SZ", {L"a", L"b"}}, BadValue{"REG_DWORD", {L""}},
                                         BadValue{"REG_DWORD", {L"0x"}}, BadValue{"REG_DWORD", {L"-1"}},
                                         BadValue{"REG_DWORD", {L"1x"}}, BadValue{"REG_DWORD", {L"4294967296"}},
                                         BadValue{"REG_QWORD", {L"18446744073709551616"}},
                                         BadValue{"REG_BINARY", {L"0"}}, BadValue{"REG_BINARY", {L"0g"}},
                                         BadValue{"REG_BINARY", {L"00 "}}));

TEST(ValueTextPlainTest, NumberOfAnotherSizeAndUnknownTypesAreDigits)
{
    EXPECT_EQ(valuetext::Plain({L"n", REG_DWORD, "\1\2", false}), L"0102");
    EXPECT_EQ(valuetext::Plain({L"n", REG_QWORD, "\1\2\3\4", false}), L"01020304");
    EXPECT_EQ(valuetext::Plain({L"n", 77, "\xAB", false}), L"ab");
}

TEST(ValueTextPlainTest, DoublesAreShownAsNumbersBesideTheirBytes)
{
    const auto plain = [](std::string bytes) { return valuetext::Plain({L"n", REG_BINARY, std::move(bytes), false}); };
    EXPECT_EQ(plain("\x9A\x99\x99\x99\x99\x99\xB9\x3F"), L"9a9999999999b93f (0.1)");
    EXPECT_EQ(plain(std::string("\0\0\0\0\0\0\xF8\xBF", 8)), L"000000000000f8bf (-1.5)");
    EXPECT_EQ(plain(std::string(8, '\0')), L"0000000000000000 (0)");
    // A small integer, a time, none and one of another size.
    EXPECT_EQ(plain(std::string("\1\0\0\0\0\0\0\0", 8)), L"0100000000000000");
    EXPECT_EQ(plain("\x67\x45\x23\x01\xAB\x89\xDA\x01"), L"67452301ab89da01");
    EXPECT_EQ(plain(std::string(8, '\xFF')), L"ffffffffffffffff");
    EXPECT_EQ(plain("\xCD\xCC\xCC\x3D"), L"cdcccc3d");
}

TEST(ValueTextPlainTest, TextNeedsNoTerminatorAndNoWholeCharacterAtItsEnd)
{
    EXPECT_EQ(valuetext::Plain({L"n", REG_SZ, std::string("A\0B\0C", 5), false}), L"AB");
    EXPECT_EQ(valuetext::Plain({L"n", REG_SZ, "", false}), L"");
    EXPECT_EQ(valuetext::Plain({L"n", REG_MULTI_SZ, std::string("A\0\0\0B\0", 6), false}), L"A\nB");
}

}
