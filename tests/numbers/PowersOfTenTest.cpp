#include "utility/numbers/PowersOfTen.h"

#include "tests/support/Doubles.h"
#include "utility/platform/FloatingPoint.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <string>

namespace
{

using support::infinity;

/// The double nearest to a decimal power, by reading it.
double NearestPowerOfTen(int exponent) { return std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr); }

}

TEST(Pow10Test, TableHasTheNearestDoubles)
{
    for (int exponent = -10; exponent <= 20; ++exponent)
        EXPECT_EQ(pow10(exponent), NearestPowerOfTen(exponent)) << exponent;
}

TEST(Pow10Test, TableIsUsedFromMinus10To20)
{
    using utility::detail::lowestTabledPower;
    using utility::detail::tabledPowers;
    EXPECT_EQ(lowestTabledPower, -10);
    EXPECT_EQ(std::size(tabledPowers), 31u);
    for (int i = 0; i < 31; ++i)
        EXPECT_EQ(pow10(i - 10), tabledPowers[i]);
}

TEST(Pow10Test, IsTheSystemsPowBeyondTheTable)
{
    for (int exponent = -330; exponent <= 330; ++exponent)
    {
        if (exponent >= -10 && exponent <= 20)
            continue;
        EXPECT_EQ(pow10(exponent), utility::platform::PowerOfTen(exponent)) << exponent;
    }
}

TEST(Pow10Test, SystemsPowIsAtMostOneUnitInTheLastPlaceOff)
{
    for (int exponent = -330; exponent <= 330; ++exponent)
    {
        const double nearest = NearestPowerOfTen(exponent);
        const auto got = std::bit_cast<std::int64_t>(pow10(exponent));
        EXPECT_LE(std::abs(got - std::bit_cast<std::int64_t>(nearest)), 1) << exponent;
    }
}

TEST(Pow10Test, NotEveryPowerBeyondTheTableIsTheNearest)
{
    EXPECT_EQ(pow10(23), 1.0000000000000001e+23);
    EXPECT_NE(pow10(23), 1e23);
}

TEST(Pow10Test, GoesToInfinityAndToZero)
{
    EXPECT_EQ(pow10(308), 1e308);
    EXPECT_EQ(pow10(309), infinity);
    EXPECT_EQ(pow10(400), infinity);
    EXPECT_EQ(pow10(std::numeric_limits<int>::max()), infinity);
    EXPECT_EQ(pow10(-323), 9.8813129168249309e-324);
    EXPECT_EQ(pow10(-324), 0.0);
    EXPECT_EQ(pow10(std::numeric_limits<int>::min()), 0.0);
}
