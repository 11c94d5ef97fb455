#include "utility/numbers/PowersOfTen.h"

#include "tests/support/Doubles.h"
#include "tests/support/KeepFloatingControl.h"
#include "utility/platform/FloatingPoint.h"

#include <gtest/gtest.h>

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

TEST(Pow10Test, IsTheNearestDoubleButForTwoOnEverySystem)
{
    for (int exponent = -330; exponent <= 330; ++exponent)
    {
        if (exponent != 23 && exponent != 210)
        {
            EXPECT_EQ(pow10(exponent), NearestPowerOfTen(exponent)) << exponent;
        }
    }
    EXPECT_EQ(pow10(23), 1.0000000000000001e+23);
    EXPECT_NE(pow10(23), 1e23);
    EXPECT_EQ(pow10(210), 1.0000000000000001e+210);
    EXPECT_NE(pow10(210), 1e210);
}

TEST(Pow10Test, IsTheSameInEveryRoundingDirection)
{
    const support::KeepFloatingControl keep;
    for (const unsigned int direction : {_RC_UP, _RC_DOWN, _RC_CHOP})
    {
        utility::platform::FloatingControl(direction, _MCW_RC);
        EXPECT_EQ(pow10(-29), 1e-29);
        EXPECT_EQ(pow10(21), 1e21);
        EXPECT_EQ(pow10(300), 1e300);
    }
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
