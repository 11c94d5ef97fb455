#include "utility/numbers/FloatParse.h"

#include "tests/support/Doubles.h"
#include "tests/support/FloatParseModel.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cwctype>
#include <ostream>
#include <random>
#include <string>

namespace
{

using support::infinity;
using support::Same;

struct Parsed
{
    double value = -77.0;
    std::ptrdiff_t stop = -1;
};

Parsed Parse(const std::wstring& text, const wchar_t* symbol = L".")
{
    Parsed result;
    result.stop = QLMParseFloat1(text.c_str(), symbol, result.value) - text.c_str();
    return result;
}

void ExpectAsTheModel(const std::wstring& text, const wchar_t* symbol)
{
    const support::ParsedNumber expected = support::ModelParse(text.c_str(), symbol);
    const Parsed parsed = Parse(text, symbol);
    ASSERT_TRUE(Same(parsed.value, expected.value));
    ASSERT_EQ(parsed.stop, expected.end - text.c_str());
}

struct ParseCase
{
    const wchar_t* text;
    double value;
    std::ptrdiff_t stop;
    bool reachesEnd;
};

class QLMParseFloat1Test : public ::testing::TestWithParam<ParseCase>
{
};

TEST_P(QLMParseFloat1Test, GivesTheValueAndWhereItEnds)
{
    const Parsed parsed = Parse(GetParam().text);
    EXPECT_TRUE(Same(parsed.value, GetParam().value));
    EXPECT_EQ(parsed.stop, GetParam().stop);
}

TEST_P(QLMParseFloat1Test, FormWithASymbolSaysWhetherThatIsTheEnd)
{
    double value = -77.0;
    EXPECT_EQ(QLMParseFloat(GetParam().text, L".", value), GetParam().reachesEnd);
    EXPECT_TRUE(Same(value, GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(NothingNumeric, QLMParseFloat1Test,
                         ::testing::Values(ParseCase{L"", 0.0, 0, true}, ParseCase{L"   ", 0.0, 3, true},
                                           ParseCase{L"-", -0.0, 1, true}, ParseCase{L"+", 0.0, 1, true},
                                           ParseCase{L".", 0.0, 1, true}, ParseCase{L"E", 0.0, 1, true},
                                           ParseCase{L"E5", 0.0, 2, true}, ParseCase{L"-.", -0.0, 2, true},
                                           ParseCase{L"x", 0.0, 0, false}, ParseCase{L" x", 0.0, 1, false}));

INSTANTIATE_TEST_SUITE_P(Numbers, QLMParseFloat1Test,
                         ::testing::Values(ParseCase{L"0", 0.0, 1, true}, ParseCase{L"1234567", 1234567.0, 7, true},
                                           ParseCase{L".5", 0.5, 2, true}, ParseCase{L"-.5", -0.5, 3, true},
                                           ParseCase{L".05", 0.05, 3, true}, ParseCase{L"1.", 1.0, 2, true},
                                           ParseCase{L"1.E2", 100.0, 4, true}, ParseCase{L"-0.25", -0.25, 5, true},
                                           ParseCase{L"+12.5", 12.5, 5, true}, ParseCase{L"\t\n 7", 7.0, 4, true}));

INSTANTIATE_TEST_SUITE_P(Exponents, QLMParseFloat1Test,
                         ::testing::Values(ParseCase{L"1D3", 1000.0, 3, true}, ParseCase{L"1d-3", 0.001, 4, true},
                                           ParseCase{L"2e+2", 200.0, 4, true}, ParseCase{L"1E 5", 100000.0, 4, true},
                                           ParseCase{L"1E", 1.0, 2, true}, ParseCase{L"1Ex", 1.0, 2, false},
                                           ParseCase{L"1E-", 1.0, 2, false}, ParseCase{L"1E \t", 1.0, 2, false},
                                           ParseCase{L"1E+-5", 1.0, 2, false}, ParseCase{L"1E5E5", 100000.0, 3, false},
                                           ParseCase{L"1E5.5", 100000.0, 3, false},
                                           ParseCase{L"-1.5e1x", -15.0, 6, false}));

INSTANTIATE_TEST_SUITE_P(Signs, QLMParseFloat1Test,
                         ::testing::Values(ParseCase{L"000-12", -12.0, 6, true}, ParseCase{L"00-5", -5.0, 4, true},
                                           ParseCase{L"0+7", 7.0, 3, true}, ParseCase{L"12-3", 12.0, 2, false},
                                           ParseCase{L"--5", -0.0, 1, false}, ParseCase{L"+-5", 0.0, 1, false},
                                           ParseCase{L"- 5", -0.0, 1, false}, ParseCase{L"-0-5", -0.0, 2, false}));

INSTANTIATE_TEST_SUITE_P(SomethingBehind, QLMParseFloat1Test,
                         ::testing::Values(ParseCase{L"1.2.3", 1.2, 3, false}, ParseCase{L"1,5", 1.0, 1, false},
                                           ParseCase{L"1.5F", 1.5, 3, false}, ParseCase{L"42  ", 42.0, 2, false},
                                           ParseCase{L"0x10", 0.0, 1, false}, ParseCase{L"inf", 0.0, 0, false},
                                           ParseCase{L"nan", 0.0, 0, false}, ParseCase{L"1.-5", 1.0, 2, false}));

INSTANTIATE_TEST_SUITE_P(ByPlainArithmetic, QLMParseFloat1Test,
                         ::testing::Values(ParseCase{L"1E400", infinity, 5, true},
                                           ParseCase{L"-1E400", -infinity, 6, true}, ParseCase{L"1E-400", 0.0, 6, true},
                                           ParseCase{L"5E-324", 0.0, 6, true},
                                           ParseCase{L"1E23", 1.0000000000000001e+23, 4, true},
                                           ParseCase{L"1E2147483648", infinity, 12, true},
                                           ParseCase{L"1E-2147483649", 0.0, 13, true},
                                           ParseCase{L"1E99999999999999999999999", infinity, 25, true}));

TEST(QLMParseFloat1OfTest, ZeroTimesAnInfinitePowerStaysNan)
{
    double value = 0.0;
    EXPECT_TRUE(QLMParseFloat(L"0E999", L".", value));
    EXPECT_TRUE(std::isnan(value));
}

TEST(QLMParseFloat1OfTest, ExponentIsCutToThirtyTwoBits)
{
    // Whatever is beyond is as large; in 32 bits these would be 1 and -1.
    EXPECT_EQ(Parse(L"1E4294967297").value, infinity);
    EXPECT_EQ(Parse(L"1E-4294967297").value, 0.0);
    EXPECT_EQ(Parse(L"1E18446744073709551617").value, infinity);
    EXPECT_EQ(Parse(L"1E00000000000000000000000000002").value, 100.0);
}

TEST(QLMParseFloat1OfTest, LongFractionOfZerosIsZeroAndAnyOtherNan)
{
    const std::wstring zeros(309, L'0');
    EXPECT_EQ(Parse(L"1." + zeros).value, 1.0);
    EXPECT_TRUE(std::isnan(Parse(L"1." + std::wstring(310, L'9')).value));
    EXPECT_EQ(Parse(L"1." + std::wstring(300, L'9')).value, 2.0);
}

TEST(QLMParseFloat1OfTest, MillionDigitsAreRead)
{
    const std::wstring digits(1'000'000, L'7');
    const Parsed whole = Parse(digits);
    EXPECT_EQ(whole.value, infinity);
    EXPECT_EQ(whole.stop, 1'000'000);
    const Parsed zeros = Parse(std::wstring(1'000'000, L'0') + L"-5." + std::wstring(1'000'000, L'0'));
    EXPECT_EQ(zeros.value, -5.0);
    EXPECT_EQ(zeros.stop, 2'000'003);
    const Parsed exponent = Parse(L"2E" + std::wstring(1'000'000, L'0') + L"1");
    EXPECT_EQ(exponent.value, 20.0);
    EXPECT_EQ(exponent.stop, 1'000'003);
    EXPECT_TRUE(std::isnan(Parse(L"0." + digits).value));
}

TEST(QLMParseFloat1OfTest, WithoutTextOrSymbolNothingIsDone)
{
    double value = 5.0;
    EXPECT_EQ(QLMParseFloat1(nullptr, L".", value), nullptr);
    const wchar_t* const text = L"1";
    EXPECT_EQ(QLMParseFloat1(text, nullptr, value), text);
    EXPECT_EQ(value, 5.0);
}

TEST(QLMParseFloat1OfTest, EmptySymbolMatchesAtOnce)
{
    EXPECT_EQ(Parse(L"1E3", L"").value, 1000.0);
    EXPECT_EQ(Parse(L"1E3", L"").stop, 3);
    EXPECT_EQ(Parse(L"1x", L"").value, 1.0);
    EXPECT_EQ(Parse(L"1x", L"").stop, 1);
    EXPECT_EQ(Parse(L"1.5", L"").stop, 1);
    EXPECT_EQ(Parse(L"-", L"").stop, 1);
}

TEST(QLMParseFloat1OfTest, LongSymbolMustMatchWhole)
{
    EXPECT_EQ(Parse(L"1::5", L"::").value, 1.5);
    EXPECT_EQ(Parse(L"1::5", L"::").stop, 4);
    EXPECT_EQ(Parse(L"1:5", L"::").value, 1.0);
    EXPECT_EQ(Parse(L"1:5", L"::").stop, 1);
    EXPECT_EQ(Parse(L"1:", L"::").stop, 1);
    const std::wstring symbol(100'000, L'#');
    EXPECT_EQ(Parse(L"-2" + symbol + L"25", symbol.c_str()).value, -2.25);
}

TEST(QLMParseFloat1OfTest, SymbolComesBehindDigitsAndSignButAheadOfExponents)
{
    EXPECT_EQ(Parse(L"1E5", L"E").value, 1.5);
    EXPECT_EQ(Parse(L"1E5E1", L"E").value, 15.0);
    EXPECT_EQ(Parse(L"151", L"5").value, 151.0);
    EXPECT_EQ(Parse(L"1-5", L"-").value, 1.5);
    EXPECT_EQ(Parse(L"0-5", L"-").value, -5.0);
    EXPECT_EQ(Parse(L"1,5", L",").value, 1.5);
    EXPECT_EQ(Parse(L"1.5", L",").stop, 1);
}

TEST(QLMParseFloat1OfTest, DigitsBeyondAsciiCountByTheirCode)
{
    // Which of these are digits and blanks is for the system to say.
    for (const wchar_t c : {L'\x00B2', L'\x00B9', L'\x0661', L'\x0967', L'\xFF11', L'\x2003', L'\x3000'})
    {
        const bool isDigit = std::iswdigit(static_cast<std::wint_t>(c)) != 0;
        EXPECT_EQ(Parse(std::wstring(L"1") + c).value, isDigit ? 10.0 + (c - 48) : 1.0);
        const bool isBlank = std::iswspace(static_cast<std::wint_t>(c)) != 0;
        EXPECT_EQ(Parse(c + std::wstring(L"1")).stop, isBlank || isDigit ? 2 : 0);
    }
}

TEST(QLMParseFloat1OfTest, ErrorNumberStays)
{
    for (const wchar_t* const text : {L"1E999999999999999999999", L"1E", L"x", L"1E400"})
    {
        errno = 12345;
        Parse(text);
        EXPECT_EQ(errno, 12345);
    }
    errno = 0;
}

TEST(QLMParseFloatTest, FormsDifferAtBlanksBehindTheNumber)
{
    double value = 0.0;
    EXPECT_FALSE(QLMParseFloat(L" 42 ", L".", value));
    EXPECT_TRUE(QLMParseFloat(L" 42 \t\n", value));
    EXPECT_EQ(value, 42.0);
    EXPECT_FALSE(QLMParseFloat(L"42 x", value));
    EXPECT_EQ(value, 42.0);
}

TEST(QLMParseFloatTest, FailureStillOverwritesTheValue)
{
    double value = 5.0;
    EXPECT_FALSE(QLMParseFloat(L"-x", value));
    EXPECT_TRUE(Same(value, -0.0));
}

TEST(QLMParseFloatTest, SeveralNumbersAreScannedOneByOne)
{
    const wchar_t* at = L" 1.5 -2D1\t3 ; 4";
    double value = 0.0;
    for (const double expected : {1.5, -20.0, 3.0})
    {
        at = QLMParseFloat(at, L'\0', value);
        EXPECT_EQ(value, expected);
    }
    EXPECT_STREQ(at, L"; 4");
}

TEST(QLMParseFloatTest, CharacterOfTheCallerIsIgnored)
{
    double value = 0.0;
    EXPECT_STREQ(QLMParseFloat(L"1,5", L',', value), L",5");
    EXPECT_EQ(value, 1.0);
    EXPECT_STREQ(QLMParseFloat(L"1.5", L',', value), L"");
    EXPECT_EQ(value, 1.5);
}

TEST(QLMParseFloatTest, RandomTextsAreAsTheStepsGiveThem)
{
    std::mt19937 random(4711);
    const std::wstring pieces[] = {L"0",   L"1",          L"9",     L"00", L"-", L"+",
                                   L".",   L",",          L"E",     L"d",  L"e", L"D",
                                   L" ",   L"\t",         L"x",     L"::", L":", L"12345678901234567890",
                                   L"999", L"2147483648", L"\x00E9"};
    const wchar_t* const symbols[] = {L".", L",", L"::", L"", L"E", L"-", L"1"};
    for (int i = 0; i < 1'000'000; ++i)
    {
        std::wstring text;
        for (auto count = random() % 9; count != 0; --count)
            text += pieces[random() % std::size(pieces)];
        ASSERT_NO_FATAL_FAILURE(ExpectAsTheModel(text, symbols[random() % std::size(symbols)]));
    }
}

TEST(QLMParseFloatTest, LongRunsOfDigitsAreAddedUpAsDoubles)
{
    std::mt19937 random(42);
    for (int i = 0; i < 100'000; ++i)
    {
        std::wstring text;
        for (auto count = random() % 40; count != 0; --count)
            text += static_cast<wchar_t>(L'0' + random() % 10);
        text.insert(random() % (text.size() + 1), 1, L'.');
        ASSERT_NO_FATAL_FAILURE(ExpectAsTheModel(text, L"."));
    }
}

}
