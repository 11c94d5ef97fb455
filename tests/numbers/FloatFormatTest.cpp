#include "utility/numbers/FloatFormat.h"

#include "tests/support/Doubles.h"
#include "tests/support/FloatFormatModel.h"
#include "tests/support/ForwardingLocale.h"
#include "tests/support/GuardedText.h"
#include "tests/support/KeepFloatingControl.h"
#include "tests/support/Thorough.h"
#include "utility/numbers/FloatParse.h"
#include "utility/numbers/PowersOfTen.h"
#include "utility/platform/FloatingPoint.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using support::infinity;
using support::quietNan;

/// What FormatFixed writes, into just as much memory as it asks for: nothing beside that may change.
template <class Char>
std::basic_string<Char> Formatted(double value, int decimals, bool showPlus, std::basic_string_view<Char> symbol,
                                  bool trimZeros, bool keepSymbol)
{
    const auto format = [&](std::span<Char> text)
    { return FormatFixed(text, value, decimals, showPlus, symbol, trimZeros, keepSymbol); };
    const std::size_t length = format({});
    std::basic_string<Char> text(length + 2, Char{'#'});
    EXPECT_EQ(format(std::span(text).subspan(1, length)), length);
    EXPECT_EQ(text.front(), Char{'#'});
    EXPECT_EQ(text.back(), Char{'#'});
    return text.substr(1, length);
}

/// That it writes `text`, narrow and wide.
void ExpectFormatted(const std::wstring& text, double value, int decimals, bool showPlus, const std::wstring& symbol,
                     bool trimZeros, bool keepSymbol)
{
    const std::string narrowSymbol(symbol.begin(), symbol.end());
    ASSERT_EQ(Formatted<wchar_t>(value, decimals, showPlus, symbol, trimZeros, keepSymbol), text);
    ASSERT_EQ(Formatted<char>(value, decimals, showPlus, narrowSymbol, trimZeros, keepSymbol),
              std::string(text.begin(), text.end()));
}

// --- to_wstring

struct FixedCase
{
    double value;
    int decimals;
    bool showPlus;
    bool trimZeros;
    bool keepSymbol;
    const wchar_t* text;
};

class ToWStringTest : public ::testing::TestWithParam<FixedCase>
{
};

TEST_P(ToWStringTest, IsFixedPointText)
{
    const FixedCase& each = GetParam();
    EXPECT_EQ(to_wstring(each.value, each.decimals, each.showPlus, L".", each.trimZeros, each.keepSymbol), each.text);
    ExpectFormatted(each.text, each.value, each.decimals, each.showPlus, L".", each.trimZeros, each.keepSymbol);
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, ToWStringTest,
    ::testing::Values(
        FixedCase{1.5, 3, false, false, false, L"1.500"}, FixedCase{1.5, 3, true, false, false, L"+1.500"},
        FixedCase{-1.5, 3, true, false, false, L"-1.500"}, FixedCase{1.5, 3, false, true, false, L"1.5"},
        FixedCase{2.0, 3, false, false, false, L"2.000"}, FixedCase{2.0, 3, false, true, false, L"2"},
        FixedCase{2.0, 3, false, true, true, L"2."}, FixedCase{2.0, 0, false, false, false, L"2"},
        FixedCase{2.0, 0, false, false, true, L"2."}, FixedCase{2.0, 0, false, true, true, L"2."},
        FixedCase{0.05, 3, false, true, false, L"0.05"}, FixedCase{0.05, 3, false, false, false, L"0.050"},
        FixedCase{0.0, 3, false, false, false, L"0.000"}, FixedCase{0.0, 3, true, false, false, L"+0.000"},
        FixedCase{0.0, 3, false, true, false, L"0"}, FixedCase{0.0, 3, false, true, true, L"0."},
        FixedCase{100.0, 0, false, true, false, L"100"}, FixedCase{0.0004, 3, false, true, true, L"0."},
        FixedCase{0.0006, 3, false, false, false, L"0.001"},
        FixedCase{123456789.987654321, 9, false, false, false, L"123456789.987654328"}));

INSTANTIATE_TEST_SUITE_P(OfNoNumber, ToWStringTest,
                         ::testing::Values(FixedCase{infinity, 3, false, false, false, L"inf"},
                                           FixedCase{infinity, 3, true, false, true, L"+inf"},
                                           FixedCase{-infinity, 3, false, false, false, L"-inf"},
                                           FixedCase{quietNan, 3, false, true, true, L"nan"},
                                           FixedCase{-quietNan, 400, false, false, false, L"nan"}));

INSTANTIATE_TEST_SUITE_P(WithNegativePlaces, ToWStringTest,
                         ::testing::Values(FixedCase{1250.0, -2, false, true, false, L"1200"},
                                           // As with other places, only trimming drops the symbol.
                                           FixedCase{1250.0, -2, false, false, false, L"1200."},
                                           FixedCase{1250.0, -400, false, true, false, L"0"},
                                           FixedCase{-1250.0, -400, false, false, false, L"-0."},
                                           FixedCase{1250.0, INT_MIN, false, true, true, L"0."}));

TEST(ToWStringOfTest, NegativeValueThatRoundsToZeroKeepsItsSign)
{
    EXPECT_EQ(to_wstring(-0.0004, 3), L"-0.000");
    EXPECT_EQ(to_wstring(-0.0004, 3, false, L".", true), L"-0");
}

TEST(ToWStringOfTest, NegativeZeroHasNoSign)
{
    EXPECT_EQ(to_wstring(-0.0, 3), L"0.000");
    EXPECT_EQ(to_wstring(-0.0, 3, true), L"+0.000");
}

TEST(ToWStringOfTest, FloatIsItsDoubleExpansion) { EXPECT_EQ(to_wstring(0.1F, 10), L"0.1000000015"); }

TEST(ToWStringOfTest, FloatHasTheSameLayout)
{
    EXPECT_EQ(to_wstring(2.5F, 3, true, L",", true, false), L"+2,5");
    EXPECT_EQ(to_wstring(2.0F, 3, false, L",", true, true), L"2,");
}

TEST(ToWStringOfTest, SymbolOfSeveralCharactersIsWrittenWhole)
{
    EXPECT_EQ(to_wstring(1.5, 3, false, L"::"), L"1::500");
    EXPECT_EQ(to_wstring(-12.25, 1, false, L"<point>", true), L"-12<point>2");
    EXPECT_EQ(to_wstring(1.5, 3, false, L""), L"1500");
    EXPECT_EQ(to_wstring(1.5, 3, false, L"0"), L"10500");
}

TEST(ToWStringOfTest, SymbolMayBeOfAnyLength)
{
    for (const std::size_t length : {100U, 110U, 115U, 119U, 120U, 121U, 122U, 127U, 128U, 129U, 1'000'000U})
    {
        const std::wstring symbol(length, L'#');
        EXPECT_TRUE(to_wstring(-12.25, 2, false, symbol) == L"-12" + symbol + L"25") << length;
        EXPECT_TRUE(QLMFormatFloatE(-12.5, 2, false, symbol) == L"-1" + symbol + L"25E+001") << length;
    }
}

TEST(ToWStringOfTest, PlacesBeyondTheExactValueAreZeros)
{
    const std::wstring tenth = L"0.1000000000000000055511151231257827021181583404541015625";
    EXPECT_EQ(to_wstring(0.1, 400), tenth + std::wstring(400 + 2 - tenth.size(), L'0'));
    EXPECT_EQ(to_wstring(0.1, 400, false, L".", true), tenth);
    EXPECT_EQ(to_wstring(2.5, 100'000, false, L",").size(), 100'002U);
}

TEST(ToWStringOfTest, TrimmedTextOfAnyNumberOfPlacesIsShort)
{
    EXPECT_EQ(to_wstring(-2.5, INT_MAX, false, L".", true), L"-2.5");
    EXPECT_EQ(to_wstring(7.0, INT_MAX, false, L".", true), L"7");
}

TEST(ToWStringOfTest, SubnormalValueHasItsDigits)
{
    EXPECT_EQ(to_wstring(DBL_TRUE_MIN, 3), L"0.000");
    EXPECT_EQ(to_wstring(-DBL_TRUE_MIN, 326), L"-0." + std::wstring(323, L'0') + L"494");
    EXPECT_EQ(to_wstring(DBL_TRUE_MIN, 2000, false, L".", true).size(), 1076U);
}

TEST(ToWStringOfTest, DirectionOfRoundingOfTheThreadIsIgnored)
{
    const support::KeepFloatingControl keep;
    for (const unsigned int direction : {_RC_NEAR, _RC_DOWN, _RC_UP, _RC_CHOP})
    {
        utility::platform::FloatingControl(direction, _MCW_RC);
        const std::wstring tie = to_wstring(0.125, 2);
        const std::wstring above = to_wstring(2.0000001, 3);
        const std::wstring longText = to_wstring(1e25, 1);
        utility::platform::FloatingControl(_RC_NEAR, _MCW_RC);
        EXPECT_EQ(tie, L"0.12");
        EXPECT_EQ(above, L"2.000");
        EXPECT_EQ(longText, L"10000000000000000905969664.0");
    }
}

// --- FormatFixed

TEST(ToWStringOfTest, NoNumberRaisesNoExceptionOfTheProcessor)
{
    // Somebody may trap them.
    for (const double value : {quietNan, -quietNan, infinity, -infinity})
    {
        char text[8];
        std::feclearexcept(FE_ALL_EXCEPT);
        const std::wstring fixed = to_wstring(value, 3);
        const std::size_t length = FormatFixed(text, value, 3);
        const std::wstring precise = QLMFormatFloatPrecise(value, 3);
        const std::wstring scientific = QLMFormatFloatE(value, 3);
        EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT & ~FE_INEXACT), 0) << value;
        EXPECT_EQ(length, fixed.size());
        EXPECT_EQ(precise, std::isnan(value) ? L"0.000" : fixed);
        EXPECT_EQ(scientific, std::isnan(value) ? L"0.000E+000" : fixed + L"E+000");
    }
}

TEST(FormatFixedTest, TextThatDoesNotFitIsNotWrittenAndItsLengthTold)
{
    for (const auto& [value, decimals] : {std::pair(-12.5, 3), {7.0, 0}, {123456.789, 9}, {0.1, 70}, {infinity, 2}})
    {
        const std::string whole = Formatted<char>(value, decimals, false, ".", false, false);
        for (std::size_t room = 0; room != whole.size() + 20; ++room)
        {
            std::string text(whole.size() + 20, '#');
            std::wstring wide(whole.size() + 20, L'#');
            ASSERT_EQ(FormatFixed(std::span(text).first(room), value, decimals), whole.size());
            ASSERT_EQ(FormatFixed(std::span(wide).first(room), value, decimals), whole.size());
            const std::size_t written = room < whole.size() ? 0 : whole.size();
            ASSERT_EQ(text, whole.substr(0, written) + std::string(text.size() - written, '#'));
            ASSERT_TRUE(std::equal(text.begin(), text.end(), wide.begin()));
        }
        EXPECT_EQ(FormatFixed(std::span<char>(), value, decimals), whole.size());
        EXPECT_EQ(FormatFixed(std::span<wchar_t>(), value, decimals), whole.size());
    }
}

TEST(FormatFixedTest, NothingBesideTheTextIsTouched)
{
    for (const int decimals : {0, 1, 2, 3, 6, 9, 12, 19, 30, -1})
    {
        for (const double value : {0.0, -1.0, 12.5, -123.456, 1234567.25, 12345678.5, -123456789012345.0, 1e25})
        {
            const std::wstring expected = to_wstring(value, decimals);
            for (const auto touches :
                 {support::GuardedText::Touches::pageBehind, support::GuardedText::Touches::pageInFront})
            {
                const support::GuardedText narrow(std::string(expected.size(), '#'), touches);
                const support::GuardedText wide(std::string(expected.size() * sizeof(wchar_t), '#'), touches);
                const std::span text(const_cast<char*>(narrow.First()), expected.size());
                ASSERT_EQ(FormatFixed(text, value, decimals), expected.size());
                ASSERT_TRUE(std::equal(expected.begin(), expected.end(), text.begin(), text.end()));
                auto* const first = reinterpret_cast<wchar_t*>(const_cast<char*>(wide.First()));
                ASSERT_EQ(FormatFixed(std::span(first, expected.size()), value, decimals), expected.size());
                ASSERT_EQ(std::wstring_view(first, expected.size()), expected);
            }
        }
    }
}

TEST(FormatFixedTest, TextIsTheSameInARoomOfAnySize)
{
    for (const double value : {0.0, 1.0, -9.5, 12.125, -999.9995, 1234567.0625, 12345678.5, 99999999.875, -1e15})
    {
        for (int decimals = 0; decimals <= 16; ++decimals)
        {
            for (const bool trims : {false, true})
            {
                const std::string text = Formatted<char>(value, decimals, true, ",", trims, false);
                const std::wstring wide(text.begin(), text.end());
                ASSERT_EQ(to_wstring(value, decimals, true, L",", trims), wide);
                for (std::size_t room = text.size(); room != text.size() + 20; ++room)
                {
                    std::string place(room, '#');
                    std::wstring widePlace(room, L'#');
                    ASSERT_EQ(FormatFixed(std::span(place), value, decimals, true, ",", trims), text.size());
                    ASSERT_EQ(FormatFixed(std::span(widePlace), value, decimals, true, L",", trims), text.size());
                    ASSERT_EQ(place, text + std::string(room - text.size(), '#'));
                    ASSERT_EQ(widePlace, wide + std::wstring(room - text.size(), L'#'));
                }
            }
        }
    }
}

TEST(FormatFixedTest, SymbolMayBeAnyText)
{
    // In more bytes than one, in one that is no ASCII, and beyond those.
    EXPECT_EQ(Formatted<char>(1.5, 2, false, "\xD9\xAB", false, false), "1\xD9\xAB"
                                                                        "50");
    EXPECT_EQ(Formatted<char>(1.5, 2, false, "\xB7", false, false), "1\xB7"
                                                                    "50");
    EXPECT_EQ(Formatted<wchar_t>(1.5, 2, false, L"\x00B7", false, false), L"1\x00B7"
                                                                          L"50");
    EXPECT_EQ(Formatted<wchar_t>(1.5, 2, false, L"\x066B", false, false), L"1\x066B"
                                                                          L"50");
    EXPECT_EQ(Formatted<char>(1.5, 2, false, std::string_view("\0", 1), false, false), std::string("1\00050", 4));
    EXPECT_EQ(Formatted<char>(-1.5, 2, false, std::string(300, '#'), true, false), "-1" + std::string(300, '#') + "5");
}

TEST(FormatFixedTest, AnyNumberOfPlacesIsWritten)
{
    for (const int decimals : {INT_MIN, -400, -20, -1, 0, 10, 15, 16, 17, 18, 19, 20, 100, 1074, 1075, 5000})
    {
        for (const double value : {0.1, -2.5, 98765.4321, 1e15, -1e16, 9007199254740993.0, 18446744073709549568.0, 1e22,
                                   DBL_MAX, DBL_MIN, DBL_TRUE_MIN, 0.0})
        {
            ExpectFormatted(to_wstring(value, decimals), value, decimals, false, L".", false, false);
            ExpectFormatted(to_wstring(value, decimals, true, L",", true), value, decimals, true, L",", true, false);
        }
    }
    EXPECT_EQ(FormatFixed(std::span<char>(), -1.0, INT_MAX), std::size_t{INT_MAX} + 3);
}

// --- QLMFormatFloatE

struct ScientificCase
{
    double value;
    int decimals;
    bool trimZeros;
    const wchar_t* text;
};

class QLMFormatFloatETest : public ::testing::TestWithParam<ScientificCase>
{
};

TEST_P(QLMFormatFloatETest, IsAMantissaAndAnExponent)
{
    EXPECT_EQ(QLMFormatFloatE(GetParam().value, GetParam().decimals, false, L".", GetParam().trimZeros),
              GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Values, QLMFormatFloatETest,
    ::testing::Values(ScientificCase{1500.0, 2, false, L"1.50E+003"}, ScientificCase{1500.0, 2, true, L"1.5E+003"},
                      ScientificCase{-0.00125, 2, false, L"-1.25E-003"}, ScientificCase{0.5, 1, false, L"5.0E-001"},
                      ScientificCase{0.0, 2, false, L"0.00E+000"}, ScientificCase{-0.0, 2, false, L"0.00E+000"},
                      ScientificCase{1e21, 1, false, L"1.0E+021"}, ScientificCase{1.0, 0, false, L"1E+000"},
                      ScientificCase{DBL_MAX, 3, false, L"1.798E+308"}, ScientificCase{1e308, 1, false, L"1.0E+308"},
                      ScientificCase{DBL_MIN, 3, false, L"2.225E-308"}));

INSTANTIATE_TEST_SUITE_P(OfNoNumber, QLMFormatFloatETest,
                         ::testing::Values(ScientificCase{quietNan, 2, false, L"0.00E+000"},
                                           ScientificCase{infinity, 2, false, L"infE+000"},
                                           ScientificCase{-infinity, 2, true, L"-infE+000"}));

TEST(QLMFormatFloatEOfTest, MantissaThatRoundsUpToTenIsNotBroughtBack)
{
    EXPECT_EQ(QLMFormatFloatE(9996.0, 2), L"10.00E+003");
    EXPECT_EQ(QLMFormatFloatE(0.999999, 2), L"10.00E-001");
}

TEST(QLMFormatFloatEOfTest, MantissaOfTheSmallestValuesIsAnInfinity)
{
    EXPECT_EQ(QLMFormatFloatE(1e-310, 2), L"infE-310");
    EXPECT_EQ(QLMFormatFloatE(-DBL_TRUE_MIN, 2, true, L".", true, true), L"-infE-324");
}

TEST(QLMFormatFloatEOfTest, SmallValueIsMultipliedAndLargeOneDivided)
{
    const double small = 1.2345678901234567e-15;
    const double large = 1.2345678901234567e+15;
    EXPECT_EQ(QLMFormatFloatE(small, 17), to_wstring(pow10(15) * small, 17) + L"E-015");
    EXPECT_EQ(QLMFormatFloatE(large, 17), to_wstring(large / pow10(15), 17) + L"E+015");
}

TEST(QLMFormatFloatEOfTest, PlusIsOfTheMantissaAlone)
{
    EXPECT_EQ(QLMFormatFloatE(1500.0, 2, true), L"+1.50E+003");
    EXPECT_EQ(QLMFormatFloatE(2000.0, 2, false, L",", true, true), L"2,E+003");
}

TEST(QLMFormatFloatEOfTest, PowersOfTenHaveTheirExponent)
{
    for (int exponent = -300; exponent <= 308; ++exponent)
    {
        const std::string narrow = "1e" + std::to_string(exponent);
        const std::wstring text = QLMFormatFloatE(std::stod(narrow), 3);
        EXPECT_EQ(std::stoi(text.substr(text.find(L'E') + 1)), exponent);
        EXPECT_EQ(text.substr(0, text.find(L'E')), L"1.000");
    }
}

TEST(QLMFormatFloatEOfTest, ValuesBesideAPowerOfTenHaveTheExponentOfTheirLogarithmOnEverySystem)
{
    // Just below a power of ten the logarithm rounds up to it: the mantissa is a little below 1 then.
    EXPECT_EQ(QLMFormatFloatE(std::nextafter(1e15, 0.0), 3), L"1.000E+015");
    EXPECT_EQ(QLMFormatFloatE(std::nextafter(1e-15, 0.0), 17).substr(0, 4), L"0.99");
    struct Row
    {
        int exponent;
        int below; ///< how many of the eight doubles ahead of this power of ten have the exponent before
    };
    // Where the logarithm, correctly rounded, is below the exponent. It is for none ahead of any other power.
    const std::vector<Row> rows{{-7, 1}, {-6, 4}, {-5, 2}, {-4, 1}, {-3, 6}, {-2, 5}, {-1, 6}, {0, 8},
                                {1, 8},  {2, 7},  {3, 4},  {4, 6},  {5, 1},  {7, 3},  {8, 2}};
    const auto textFor = [](const wchar_t* mantissa, int exponent)
    {
        std::wstring digits = std::to_wstring(std::abs(exponent));
        digits.insert(0, 3 - digits.size(), L'0');
        return mantissa + std::wstring(exponent < 0 ? L"E-" : L"E+") + digits;
    };
    for (int exponent = -300; exponent <= 308; ++exponent)
    {
        const auto row = std::ranges::find(rows, exponent, &Row::exponent);
        const int below = row == rows.end() ? 0 : row->below;
        double value = std::stod("1e" + std::to_string(exponent));
        for (int i = 0; i < 8; ++i)
            value = std::nextafter(value, 0.0);
        for (int i = 0; i < 16; ++i, value = std::nextafter(value, DBL_MAX))
            EXPECT_EQ(QLMFormatFloatE(value, 9),
                      i < below ? textFor(L"10.000000000", exponent - 1) : textFor(L"1.000000000", exponent))
                << i - 8 << " steps from 1e" << exponent;
    }
}

// --- QLMFormatFloatPrecise

struct PreciseCase
{
    double value;
    int decimals;
    const wchar_t* text;
};

class QLMFormatFloatPreciseTest : public ::testing::TestWithParam<PreciseCase>
{
};

TEST_P(QLMFormatFloatPreciseTest, IsFixedPointText)
{
    EXPECT_EQ(QLMFormatFloatPrecise(GetParam().value, GetParam().decimals), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Values, QLMFormatFloatPreciseTest,
                         ::testing::Values(PreciseCase{1234.5678, 2, L"1234.57"}, PreciseCase{1.6, 0, L"2"},
                                           PreciseCase{0.001, 2, L"0.00"}, PreciseCase{-0.006, 2, L"-0.01"},
                                           PreciseCase{-1234.5678, 3, L"-1234.568"}, PreciseCase{0.0, 0, L"0"},
                                           PreciseCase{2.0, 3, L"2.000"}));

INSTANTIATE_TEST_SUITE_P(NeverANegativeZero, QLMFormatFloatPreciseTest,
                         ::testing::Values(PreciseCase{-0.004, 2, L"0.00"}, PreciseCase{-0.0, 2, L"0.00"},
                                           PreciseCase{-0.4, 0, L"0"}, PreciseCase{-1e-300, 9, L"0.000000000"},
                                           PreciseCase{-4.0, -1, L"0."}));

INSTANTIATE_TEST_SUITE_P(NanIsZero, QLMFormatFloatPreciseTest,
                         ::testing::Values(PreciseCase{quietNan, 2, L"0.00"}, PreciseCase{-quietNan, 0, L"0"}));

INSTANTIATE_TEST_SUITE_P(ExtremePlaces, QLMFormatFloatPreciseTest,
                         ::testing::Values(PreciseCase{1250.0, -2, L"1200."}, PreciseCase{1250.0, -400, L"0."},
                                           PreciseCase{-1250.0, -400, L"0."}, PreciseCase{1250.0, INT_MIN, L"0."},
                                           PreciseCase{infinity, 2, L"inf"}, PreciseCase{-infinity, 2, L"-inf"}));

TEST(QLMFormatFloatPreciseOfTest, GuardLooksAtTenthsOfTheLastPlace)
{
    // The tie is not zero by the guard, though its text is rounded to even.
    EXPECT_EQ(QLMFormatFloatPrecise(-0.5, 0), L"-0");
    EXPECT_EQ(QLMFormatFloatPrecise(-0.125, 2), L"-0.12");
}

TEST(QLMFormatFloatPreciseOfTest, ManyPlacesAreZeros)
{
    EXPECT_EQ(QLMFormatFloatPrecise(-2.5, 400), L"-2.5" + std::wstring(399, L'0'));
}

// --- All of them

TEST(FloatFormatTest, RandomNumbersAreAsTheStepsGiveThem)
{
    std::mt19937_64 random(1836);
    const std::wstring symbols[] = {L".", L",", L"::", L""};
    for (int i = 0; i < support::Cases(300'000); ++i)
    {
        double value = std::bit_cast<double>(random());
        if (i % 2 == 0)
            value = static_cast<double>(static_cast<std::int64_t>(random())) *
                    std::pow(10.0, -static_cast<int>(random() % 30));
        if (!std::isfinite(value))
            continue;
        const int decimals = static_cast<int>(random() % 24);
        const bool showPlus = random() % 2 == 0;
        const std::wstring& symbol = symbols[random() % 4];
        const bool trimZeros = random() % 2 == 0;
        const bool keepSymbol = random() % 2 == 0;
        const std::wstring text = support::ModelFixed(value, decimals, showPlus, symbol, trimZeros, keepSymbol);
        ASSERT_EQ(to_wstring(value, decimals, showPlus, symbol, trimZeros, keepSymbol), text);
        ExpectFormatted(text, value, decimals, showPlus, symbol, trimZeros, keepSymbol);
        ASSERT_EQ(QLMFormatFloatE(value, decimals, showPlus, symbol, trimZeros, keepSymbol),
                  support::ModelScientific(value, decimals, showPlus, symbol, trimZeros, keepSymbol));
        ASSERT_EQ(QLMFormatFloatPrecise(value, decimals), support::ModelPrecise(value, decimals));
    }
}

class RoundTripTest : public ::testing::TestWithParam<int>
{
};

/// Half a unit of the last place is what the text drops; the parser adds some units in the last place of its own.
TEST_P(RoundTripTest, ParsedTextIsTheValueWithinItsPlaces)
{
    const int decimals = GetParam();
    std::mt19937_64 random(static_cast<unsigned>(decimals));
    for (int i = 0; i < 62'500; ++i)
    {
        const double fraction = static_cast<double>(static_cast<std::int64_t>(random())) * 0x1p-63;
        const double value = fraction * std::pow(10.0, static_cast<int>(random() % 16));
        const std::wstring text = QLMFormatFloatPrecise(value, decimals);
        double parsed = quietNan;
        ASSERT_TRUE(QLMParseFloat(text.c_str(), L".", parsed));
        ASSERT_LE(std::fabs(parsed - value), 0.5 / std::pow(10.0, decimals) + std::fabs(value) * 4 * DBL_EPSILON)
            << text.c_str();
        ASSERT_EQ(text, QLMFormatFloatPrecise(value, decimals));
        if (std::fabs(value) < 1e15 / std::pow(10.0, decimals))
        {
            ASSERT_EQ(QLMFormatFloatPrecise(parsed, decimals), text);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Places, RoundTripTest, ::testing::Range(0, 16));

// --- The settings of the process

TEST(DecimalSymbolTest, IsAPointWhateverItIsSetTo)
{
    EXPECT_EQ(GetDecimalSymbol(), L".");
    SetDecimalSymbol(L",");
    EXPECT_EQ(GetDecimalSymbol(), L".");
    SetDecimalSymbol(static_cast<const wchar_t*>(nullptr));
    EXPECT_EQ(GetDecimalSymbol(), L".");
    SetDecimalSymbol(DWORD{0x0407});
    EXPECT_EQ(GetDecimalSymbol(), L".");
    EXPECT_EQ(QLMFormatFloatPrecise(1.5, 1), L"1.5");
}

TEST(DecimalSymbolTest, LocaleIsAskedTwiceAndItsAnswerDropped)
{
    struct Question
    {
        DWORD locale;
        bool hasBuffer;
        int size;
        bool operator==(const Question&) const = default;
    };
    struct : support::ForwardingLocale
    {
        std::vector<Question> questions;
        int DecimalSymbol(LCID locale, wchar_t* buffer, int size) override
        {
            questions.push_back({locale, buffer != nullptr, size});
            return 0;
        }
    } locale;
    SetDecimalSymbol(DWORD{0x0407});
    EXPECT_EQ(locale.questions, (std::vector<Question>{{0x0407, false, 0}, {0x0407, true, 10}}));
    EXPECT_EQ(GetDecimalSymbol(), L".");
}

TEST(DialogDecimalPlacesTest, AreFourAtFirst) { EXPECT_EQ(DialogDecimalPlaces(), 4); }

TEST(DialogDecimalPlacesTest, OfAUnitAreConstant)
{
    EXPECT_EQ(DialogDecimalPlaces(DISTANCE_UNITS_MM), 4);
    EXPECT_EQ(DialogDecimalPlaces(DISTANCE_UNITS_INCH), 6);
    EXPECT_EQ(DialogDecimalPlaces(DISTANCE_UNITS_METRE), 6);
}

TEST(DialogDecimalPlacesTest, AreStoredUnchecked)
{
    for (const int places : {7, -3, INT_MAX, INT_MIN})
    {
        SetDialogDecimalPlaces(places);
        EXPECT_EQ(DialogDecimalPlaces(), places);
    }
    EXPECT_EQ(DialogDecimalPlaces(DISTANCE_UNITS_MM), 4);
    SetDialogDecimalPlaces(4);
}

}
