#include "utility/framework/internal/Format.h"

#include "tests/support/DecimalComma.h"
#include "utility/text/ResourceString.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <limits>
#include <ostream>

namespace
{

std::wstring Format(const wchar_t* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::wstring text = utility::framework::FormatWide(format, arguments);
    va_end(arguments);
    return text;
}

struct FormatCase
{
    std::wstring text;
    const wchar_t* expected;
};

void PrintTo(const FormatCase& row, std::ostream* stream) { *stream << from_utf(row.expected, 65001); }

class FormatTest : public ::testing::TestWithParam<FormatCase>
{
};

}

TEST_P(FormatTest, HasTheWindowsMeaning) { EXPECT_EQ(GetParam().text, GetParam().expected); }

INSTANTIATE_TEST_SUITE_P(
    Integers, FormatTest,
    ::testing::Values(FormatCase{Format(L"%d|%i", -7, 7), L"-7|7"},
                      FormatCase{Format(L"%d %d", INT_MIN, INT_MAX), L"-2147483648 2147483647"},
                      FormatCase{Format(L"%u", -1), L"4294967295"}, FormatCase{Format(L"%o", 8), L"10"},
                      FormatCase{Format(L"%x|%X", 0xBEEF, 0xBEEF), L"beef|BEEF"},
                      FormatCase{Format(L"%hd|%hu", 0x18001, 0x18001), L"-32767|32769"},
                      FormatCase{Format(L"%hhd|%hhu|%hhx", 0x181, 0x181, 0x1FF), L"-127|129|ff"},
                      FormatCase{Format(L"%ld|%lu|%lx", INT_MIN, UINT_MAX, 0x1234ABCD),
                                 L"-2147483648|4294967295|1234abcd"},
                      FormatCase{Format(L"%I32d|%I32u", -1, -1), L"-1|4294967295"},
                      FormatCase{Format(L"%I64d|%I64u|%I64x", LLONG_MIN, ULLONG_MAX, 0x123456789ABLL),
                                 L"-9223372036854775808|18446744073709551615|123456789ab"},
                      FormatCase{Format(L"%lld|%llu|%llX", LLONG_MIN, ULLONG_MAX, 0x123456789ABLL),
                                 L"-9223372036854775808|18446744073709551615|123456789AB"},
                      FormatCase{Format(L"%Id %jd %zd %td %zu", -1LL, -2LL, -3LL, -4LL, ULLONG_MAX),
                                 L"-1 -2 -3 -4 18446744073709551615"},
                      FormatCase{Format(L"%ld,%d", -1, 5), L"-1,5"},
                      FormatCase{Format(L"%I64d,%d", 1LL << 40, 5), L"1099511627776,5"},
                      FormatCase{Format(L"%5d|%-5d|%05d", 42, 42, 42), L"   42|42   |00042"},
                      FormatCase{Format(L"%+d|% d|%+d|% d", 4, 4, -4, -4), L"+4| 4|-4|-4"},
                      FormatCase{Format(L"%#x|%#X|%#o|%#x", 255, 255, 8, 0), L"0xff|0XFF|010|0"},
                      FormatCase{Format(L"%.4d|%8.4d|%-8.4d|", 42, -42, 42), L"0042|   -0042|0042    |"},
                      FormatCase{Format(L"[%.0d][%.d][%.0d]", 0, 0, 1), L"[][][1]"},
                      FormatCase{Format(L"%*d|%-*d|%*d|", 4, 7, 4, 7, -4, 7), L"   7|7   |7   |"},
                      FormatCase{Format(L"%.*d|%.*d", 3, 7, -3, 7), L"007|7"},
                      FormatCase{Format(L"%08x", 0xBEEF), L"0000beef"}));

INSTANTIATE_TEST_SUITE_P(
    Reals, FormatTest,
    ::testing::Values(
        FormatCase{Format(L"%f|%.2f|%.0f", 1.5, 2.345678, 2.5), L"1.500000|2.35|2"},
        FormatCase{Format(L"%8.3f|%-8.3f|%08.3f", 3.14159, 3.14159, -3.14159), L"   3.142|3.142   |-003.142"},
        FormatCase{Format(L"%e|%E", 12345.678, 1e-10), L"1.234568e+04|1.000000E-10"},
        FormatCase{Format(L"%.3e", 1e100), L"1.000e+100"},
        FormatCase{Format(L"%g|%G|%g|%#g", 0.0001, 1e-5, 1e20, 1.0), L"0.0001|1E-05|1e+20|1.00000"},
        FormatCase{Format(L"%.17g", 0.1), L"0.10000000000000001"},
        FormatCase{Format(L"%lf|%Lf|%d", 1.5, 2.5L, 3), L"1.500000|2.500000|3"},
        FormatCase{Format(L"%+.1f|% .1f|%.1f", 1.0, 1.0, -0.0), L"+1.0| 1.0|-0.0"},
        FormatCase{Format(L"%.20Lf|%Lg|%d", 0.1L, 1.5L, 3), L"0.10000000000000000555|1.5|3"},
        FormatCase{Format(L"%08.1f|%-8.1f|%+08.1f|%08.1f|% 08.1f", -2.5, 2.5, 2.5,
                          std::numeric_limits<double>::infinity(), 2.5),
                   L"-00002.5|2.5     |+00002.5|     inf| 00002.5"},
        FormatCase{Format(L"%012a|%-08.1f|", 1.0, 2.5), L"0x0000001p+0|2.5     |"},
        FormatCase{Format(L"%f|%F|%g", std::numeric_limits<double>::infinity(),
                          -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()),
                   L"inf|-INF|inf"},
        FormatCase{Format(L"%a|%A", 1.0, 0.5), L"0x1p+0|0X1P-1"},
        FormatCase{Format(L"%.1f", 1e22), L"10000000000000000000000.0"}));

INSTANTIATE_TEST_SUITE_P(
    Texts, FormatTest,
    ::testing::Values(
        FormatCase{Format(L"%s|%ls|%ws", L"a", L"b", L"c"), L"a|b|c"},
        FormatCase{Format(L"%S|%hs|%hS", "a", "b", "c"), L"a|b|c"}, FormatCase{Format(L"%lS", L"wide"), L"wide"},
        FormatCase{Format(L"%s", L"\u00B0\u65E5"), L"\u00B0\u65E5"},
        FormatCase{Format(L"%5s|%-5s|%.2s|%5.1s|", L"abc", L"abc", L"abc", L"abc"), L"  abc|abc  |ab|    a|"},
        FormatCase{Format(L"%5S|%-5S|%.2S|%5.1S|", "abc", "abc", "abc", "abc"), L"  abc|abc  |ab|    a|"},
        FormatCase{Format(L"%*s|%.*s|%.*s", 4, L"ab", 1, L"ab", -1, L"ab"), L"  ab|a|ab"},
        FormatCase{Format(L"%.0s|", L"abc"), L"|"}, FormatCase{Format(L"%s|%S", L"", ""), L"|"},
        FormatCase{Format(L"%s|%S|%.3s", static_cast<const wchar_t*>(nullptr), static_cast<const char*>(nullptr),
                          static_cast<const wchar_t*>(nullptr)),
                   L"(null)|(null)|(nu"},
        FormatCase{Format(L"%c%C%hc%lc", L'a', 'b', 'c', L'd'), L"abcd"},
        FormatCase{Format(L"%3c|%-3c|", L'a', L'b'), L"  a|b  |"}, FormatCase{Format(L"%c", L'\u65E5'), L"\u65E5"},
        FormatCase{Format(L"%c", -61), L"\xFFC3"},
        FormatCase{Format(L"%c|%3c|", 0x1F600, 0x1F600), L"\U0001F600| \U0001F600|"},
        FormatCase{Format(L"%c", 0x110041), L"A"},
        FormatCase{Format(L"%3s|%.1s|%.2s|%.3s", L"\U0001F600", L"\U0001F600", L"\U0001F600", L"a\U0001F600b"),
                   L" \U0001F600||\U0001F600|a\U0001F600"}));

INSTANTIATE_TEST_SUITE_P(
    Others, FormatTest,
    ::testing::Values(
        FormatCase{Format(L""), L""}, FormatCase{Format(L"plain \u00B0 text"), L"plain \u00B0 text"},
        FormatCase{Format(L"100%%|%d", 5), L"100%|5"},
        FormatCase{Format(L"%p", reinterpret_cast<void*>(std::uintptr_t{0x1234ABCD})), L"000000001234ABCD"},
        FormatCase{Format(L"%p", static_cast<void*>(nullptr)), L"0000000000000000"},
        FormatCase{Format(L"%20p|", reinterpret_cast<void*>(~std::uintptr_t{0})), L"    FFFFFFFFFFFFFFFF|"},
        FormatCase{Format(L"%y %d", 5), L"%y 5"}, FormatCase{Format(L"%-5.3y|"), L"%-5.3y|"},
        FormatCase{Format(L"100%"), L"100%"}, FormatCase{Format(L"%5"), L"%5"}, FormatCase{Format(L"%I"), L"%I"},
        FormatCase{Format(L"%ll"), L"%ll"}));

TEST(FormatTextTest, NullCharacterStandsInTheResult)
{
    EXPECT_EQ(Format(L"[%c][%hc]", 0, 0), std::wstring(L"[\0][\0]", 6));
}

TEST(FormatTextTest, PrecisionBoundsTheReadingOfATextWithoutNull)
{
    const wchar_t wide[] = {L'a', L'b'};
    const char narrow[] = {'c', 'd'};
    EXPECT_EQ(Format(L"%.2s%.2S", wide, narrow), L"abcd");
}

TEST(FormatTextTest, NarrowTextIsInTheSystemsNarrowEncoding)
{
    const std::string narrow = from_utf(L"\u00E4b", 0);
    EXPECT_EQ(Format(L"%S|%4S", narrow.c_str(), narrow.c_str()), L"\u00E4b|  \u00E4b");
}

TEST(FormatRuntimeLocaleTest, DecimalSymbolIsThePointInEveryLocale)
{
    const support::DecimalComma scope;
    char text[8];
    std::snprintf(text, sizeof text, "%.1f", 2.5);
    ASSERT_STREQ(text, "2,5");
    EXPECT_EQ(Format(L"%.2f|%8.2f|%e|%#g|%a|%#.0f", 2.5, -2.5, 1.5, 1.0, 1.5, 2.0),
              L"2.50|   -2.50|1.500000e+00|1.00000|0x1.8p+0|2.");
    EXPECT_EQ(Format(L"%f", std::numeric_limits<double>::infinity()), L"inf");
}

TEST(FormatStoreTest, NothingIsStored)
{
    int stored = 77;
    EXPECT_EQ(Format(L"ab%n|%d", &stored, 5), L"ab|5");
    EXPECT_EQ(stored, 77);
}

TEST(FormatSizeTest, LongResultsAreWhole)
{
    EXPECT_EQ(Format(L"%s", std::wstring(100000, L'x').c_str()), std::wstring(100000, L'x'));
    EXPECT_EQ(Format(L"%5000d", 7), std::wstring(4999, L' ') + L"7");
    EXPECT_EQ(Format(L"%.300f", 1e300).size(), 602u);
}

TEST(FormatSizeTest, DamagedWidthIsBounded)
{
    EXPECT_EQ(Format(L"%99999999999999999999d", 7).size(), 100000u);
    EXPECT_EQ(Format(L"%*d", INT_MIN, 7).size(), 100000u);
    EXPECT_EQ(Format(L"%*d", INT_MAX, 7).size(), 100000u);
}
