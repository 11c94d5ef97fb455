#include "utility/numbers/internal/FixedDigits.h"

#include "tests/support/Thorough.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

using utility::detail::FixedDigits;
using utility::detail::FixedNumber;

namespace
{

/// As plain text: the whole part, a point and the places that have digits of their own.
template <class Digits>
std::string Text(const Digits& digits)
{
    std::vector<wchar_t> wide(digits.WholeLength() + 1 + digits.FractionLength());
    digits.WriteWhole(wide.data());
    wchar_t* const point = wide.data() + digits.WholeLength();
    digits.WriteFraction(point + 1);
    *point = L'.';
    const std::size_t length = digits.WholeLength() + (digits.FractionLength() == 0 ? 0 : 1 + digits.FractionLength());
    return {wide.data(), wide.data() + length};
}

/// With the zeros behind them. What two numbers hold is the same by them.
std::string Text(double value, int decimals)
{
    const FixedDigits digits(value, decimals);
    const std::size_t places = decimals > 0 ? static_cast<std::size_t>(decimals) : 0;
    const std::string point = digits.FractionLength() == 0 && places != 0 ? "." : "";
    std::string text = Text(digits) + point + std::string(places - digits.FractionLength(), '0');
    FixedNumber number;
    if (number.Holds(value, decimals))
    {
        EXPECT_EQ(Text(number), text) << std::hexfloat << value << " with " << decimals << " places";
    }
    return text;
}

/// The same by the standard library, of a magnitude: it rounds exactly, too, and has no negative number of places.
std::string Expected(double value, int decimals)
{
    std::array<char, 2048> text;
    return {text.data(),
            std::to_chars(text.data(), text.data() + text.size(), std::fabs(value), std::chars_format::fixed, decimals)
                .ptr};
}

/// Values of all kinds: any bits, numbers as they are in parts, and numbers that end in a 5 or close by one.
class RandomValues
{
public:
    double Next()
    {
        const std::uint64_t bits = m_random();
        const double fraction = static_cast<double>(bits >> 11) * 0x1p-53;
        switch (m_random() % 4)
        {
        case 0:
            return Finite(std::bit_cast<double>(bits));
        case 1:
            return fraction * std::pow(10.0, static_cast<int>(m_random() % 26) - 5);
        case 2: // ties of one to twenty places
            return std::ldexp(static_cast<double>(bits >> 44 | 1), -1 - static_cast<int>(m_random() % 20));
        default: // decimal fives, each a little more or less
            return static_cast<double>((bits >> 34) * 10 + 5) / std::pow(10.0, static_cast<int>(m_random() % 16));
        }
    }

    int NextDecimals(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit + 1)); }

private:
    static double Finite(double value) { return std::isfinite(value) ? value : 1.0; }

    std::mt19937_64 m_random{19610412};
};

void ExpectThoseOfTheStandardLibrary(int count, int mostDecimals)
{
    RandomValues random;
    for (int i = 0; i < count; ++i)
    {
        const double value = random.Next();
        const int decimals = random.NextDecimals(mostDecimals);
        ASSERT_EQ(Text(value, decimals), Expected(value, decimals))
            << std::hexfloat << value << " with " << decimals << " places";
    }
}

TEST(FixedDigitsTest, MillionsOfValuesAreThoseOfTheStandardLibrary)
{
    ExpectThoseOfTheStandardLibrary(support::Cases(6'000'000), 19);
}

TEST(FixedDigitsTest, ManyPlacesAreThoseOfTheStandardLibrary) { ExpectThoseOfTheStandardLibrary(200'000, 400); }

TEST(FixedDigitsTest, NegativePlacesAreSignificantDigitsOfTheStandardLibrary)
{
    RandomValues random;
    int compared = 0;
    for (int i = 0; i < 400'000; ++i)
    {
        const double value = std::fabs(random.Next());
        const auto wholeDigits = static_cast<int>(Text(std::trunc(value), 0).size());
        const int dropped = 1 + random.NextDecimals(20);
        const int significant = wholeDigits - dropped;
        if (value < 1.0 || significant < 1)
            continue;
        ++compared;
        // d.dddE+xx, without its point and filled with zeros to its exponent.
        std::array<char, 400> buffer;
        char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                        std::chars_format::scientific, significant - 1)
                              .ptr;
        std::string expected(buffer.data(), end);
        const std::size_t marker = expected.find('e');
        const int exponent = std::stoi(expected.substr(marker + 1));
        expected.resize(marker);
        std::erase(expected, '.');
        expected.resize(static_cast<std::size_t>(exponent) + 1, '0');
        ASSERT_EQ(Text(value, -dropped), expected) << std::hexfloat << value << " with " << -dropped << " places";
    }
    EXPECT_GT(compared, 100'000);
}

struct DigitsCase
{
    double value;
    int decimals;
    const char* text;
};

class FixedDigitsOfTest : public ::testing::TestWithParam<DigitsCase>
{
};

TEST_P(FixedDigitsOfTest, AreTheExactValueRoundedTiesToEven)
{
    EXPECT_EQ(Text(GetParam().value, GetParam().decimals), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Ties, FixedDigitsOfTest,
                         ::testing::Values(DigitsCase{0.5, 0, "0"}, DigitsCase{1.5, 0, "2"}, DigitsCase{2.5, 0, "2"},
                                           DigitsCase{0.125, 2, "0.12"}, DigitsCase{0.375, 2, "0.38"},
                                           DigitsCase{0.03125, 4, "0.0312"},
                                           DigitsCase{4503599627370497.5, 0, "4503599627370498"},
                                           DigitsCase{4503599627370496.5, 0, "4503599627370496"}));

INSTANTIATE_TEST_SUITE_P(NoTies, FixedDigitsOfTest,
                         ::testing::Values(DigitsCase{0.15, 1, "0.1"}, DigitsCase{0.25000000000000006, 1, "0.3"},
                                           DigitsCase{1.005, 2, "1.00"}, DigitsCase{2.675, 2, "2.67"}));

INSTANTIATE_TEST_SUITE_P(Carries, FixedDigitsOfTest,
                         ::testing::Values(DigitsCase{9.9996, 3, "10.000"}, DigitsCase{0.9999999, 3, "1.000"},
                                           DigitsCase{99999.5, 0, "100000"},
                                           DigitsCase{1.0 - DBL_EPSILON / 2.0, 15, "1.000000000000000"}));

INSTANTIATE_TEST_SUITE_P(Borders, FixedDigitsOfTest,
                         ::testing::Values(DigitsCase{0.0, 3, "0.000"}, DigitsCase{-0.0, 3, "0.000"},
                                           DigitsCase{-1.5, 1, "1.5"}, DigitsCase{0.00048828125, 11, "0.00048828125"},
                                           DigitsCase{0.000244140625, 12, "0.000244140625"},
                                           DigitsCase{4294967296.0, 0, "4294967296"},
                                           DigitsCase{18446744073709549568.0, 0, "18446744073709549568"},
                                           DigitsCase{18446744073709551616.0, 0, "18446744073709551616"},
                                           DigitsCase{1e-300, 19, "0.0000000000000000000"},
                                           DigitsCase{DBL_TRUE_MIN, 19, "0.0000000000000000000"},
                                           DigitsCase{1e23, 1, "99999999999999991611392.0"}));

INSTANTIATE_TEST_SUITE_P(NegativePlaces, FixedDigitsOfTest,
                         ::testing::Values(DigitsCase{1250.0, -2, "1200"}, DigitsCase{1350.0, -2, "1400"},
                                           DigitsCase{1250.0000001, -2, "1300"}, DigitsCase{6.0, -1, "10"},
                                           DigitsCase{5.0, -1, "0"}, DigitsCase{5.5, -1, "10"},
                                           DigitsCase{4.0, -1, "0"}, DigitsCase{96.0, -1, "100"},
                                           DigitsCase{9.0, -2, "0"}, DigitsCase{1e22, -21, "10000000000000000000000"},
                                           DigitsCase{123.0, -400, "0"}, DigitsCase{123.0, INT_MIN, "0"},
                                           DigitsCase{0.75, -1, "0"}));

TEST(FixedDigitsTest, LongestTextsAreWhole)
{
    EXPECT_EQ(Text(DBL_MAX, 0), Expected(DBL_MAX, 0));
    EXPECT_EQ(Text(DBL_TRUE_MIN, 1074), Expected(DBL_TRUE_MIN, 1074));
    EXPECT_EQ(Text(std::nextafter(1.0, 0.0), 1100), Expected(std::nextafter(1.0, 0.0), 1100));
    EXPECT_EQ(Text(DBL_MIN - DBL_TRUE_MIN, 1074), Expected(DBL_MIN - DBL_TRUE_MIN, 1074));
}

TEST(FixedDigitsTest, FractionNeverHasMoreDigitsThanADoubleHas)
{
    EXPECT_EQ(FixedDigits(DBL_TRUE_MIN, INT_MAX).FractionLength(), 1074U);
    EXPECT_LE(FixedDigits(0.1, INT_MAX).FractionLength(), 60U);
    EXPECT_EQ(FixedDigits(DBL_MAX, INT_MAX).FractionLength(), 0U);
}

TEST(FixedDigitsTest, TrimmedFractionEndsWithItsLastDigit)
{
    const auto trimmed = [](double value, int decimals)
    {
        FixedDigits digits(value, decimals);
        digits.TrimFraction();
        FixedNumber number;
        if (number.Holds(value, decimals))
        {
            number.TrimFraction();
            EXPECT_EQ(Text(number), Text(digits));
        }
        return Text(digits);
    };
    EXPECT_EQ(trimmed(1.5, 3), "1.5");
    EXPECT_EQ(trimmed(2.0, 3), "2");
    EXPECT_EQ(trimmed(0.05, 3), "0.05");
    EXPECT_EQ(trimmed(100.0, 0), "100");
    EXPECT_EQ(trimmed(1.5, 30), "1.5");
    EXPECT_EQ(trimmed(1e30, 5), "1000000000000000019884624838656");
    EXPECT_EQ(trimmed(0.1, 100), "0.1000000000000000055511151231257827021181583404541015625");
}

TEST(FixedNumberTest, HoldsAnyNumberOfPlacesBehindAnyWholePart)
{
    for (double whole = 1.0; whole < 1e19; whole *= 10.0)
    {
        for (const double fraction : {0.0, 0.5, 0.999999999, 0.9999, 0.0625, 1.0 - 0x1p-20, 0x1p-30, 1.0 / 3})
        {
            for (const double value : {whole - 1.0 + fraction, whole + fraction, 9.0 * whole + fraction})
            {
                for (int decimals = 0; decimals <= 19; ++decimals)
                {
                    FixedNumber number;
                    if (!number.Holds(value, decimals))
                    {
                        EXPECT_GE(value, 0x1p64);
                        continue;
                    }
                    ASSERT_EQ(Text(number), Expected(value, decimals)) << value << ' ' << decimals;
                }
            }
        }
    }
}

TEST(FixedNumberTest, TieWithoutPlacesGoesToTheEvenNumber)
{
    for (double whole = 0.0; whole < 2000.0; ++whole)
    {
        FixedNumber number;
        ASSERT_TRUE(number.Holds(whole + 0.5, 0));
        ASSERT_EQ(Text(number), Expected(whole + 0.5, 0));
    }
}

class DigitCountTest : public ::testing::TestWithParam<int>
{
};

TEST_P(DigitCountTest, ChangesAtThePowerOfTen)
{
    const std::uint64_t power = utility::detail::integerPowers[static_cast<std::size_t>(GetParam())];
    EXPECT_EQ(utility::detail::CountDigits(power), static_cast<std::size_t>(GetParam()) + 1);
    EXPECT_EQ(utility::detail::CountDigits(power - 1), static_cast<std::size_t>(GetParam() == 0 ? 1 : GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Powers, DigitCountTest, ::testing::Range(0, 20));

TEST(DigitCountOfTest, LargestNumberHasTwenty)
{
    EXPECT_EQ(utility::detail::CountDigits(std::numeric_limits<std::uint64_t>::max()), 20U);
}

TEST(SixteenDigitsTest, AreThoseOfTheStandardLibrary)
{
    const auto expectRight = [](std::uint64_t number)
    {
        char text[16];
        const utility::detail::Uint128 bytes = utility::detail::SixteenDigits(number) ^ utility::detail::zeroCharacters;
        std::memcpy(text, &bytes, sizeof text);
        std::string expected = std::to_string(number);
        expected.insert(0, sizeof text - expected.size(), '0');
        ASSERT_EQ(std::string(text, sizeof text), expected);
    };
    // Every group of four digits, in each place.
    for (std::uint64_t group = 0; group < 10000; ++group)
        for (const std::uint64_t place : {1ULL, 10000ULL, 100'000'000ULL, 1'000'000'000'000ULL})
            expectRight(group * place);
    std::mt19937_64 random(16);
    for (int i = 0; i < support::Cases(2'000'000); ++i)
        expectRight(random() % utility::detail::integerPowers[16]);
}

TEST(WriteDigitsTest, AsManyAsAskedForAreWrittenAndNothingElse)
{
    for (std::size_t count = 0; count <= 20; ++count)
    {
        const std::uint64_t number =
            12345678901234567890U / utility::detail::integerPowers[count == 0 ? 19 : 20 - count];
        wchar_t text[24];
        std::fill(std::begin(text), std::end(text), L'#');
        utility::detail::WriteDigits(text + 2, count == 0 ? 0 : number, count);
        EXPECT_EQ(std::wstring(text, std::size(text)),
                  L"##" + std::wstring(L"12345678901234567890").substr(0, count) + std::wstring(22 - count, L'#'));
    }
}

}
