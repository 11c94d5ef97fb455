#include "utility/platform/FloatingPoint.h"

#include "utility/numbers/PowersOfTen.h"
#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

using utility::platform::ClearFloatingStatus;
using utility::platform::FloatingControl;

namespace
{

unsigned int X87Control()
{
    std::uint16_t control = 0;
    asm volatile("fnstcw %0" : "=m"(control));
    return control;
}

unsigned int X87Status()
{
    std::uint16_t status = 0;
    asm volatile("fnstsw %0" : "=m"(status));
    return status;
}

struct X87Case
{
    unsigned int value;
    unsigned int mask;
    unsigned int x87;
};

class X87Test : public ::testing::TestWithParam<X87Case>
{
};

constexpr unsigned int x87Fields = 0xC3F; // rounding and masks

}

TEST_P(X87Test, FollowsTheControlWord)
{
    const unsigned int others = X87Control() & ~x87Fields;
    ClearFloatingStatus();
    FloatingControl(GetParam().value, GetParam().mask);
    const unsigned int control = X87Control();
    FloatingControl(_MCW_EM | _RC_NEAR, _MCW_EM | _MCW_RC);
    EXPECT_EQ(control & x87Fields, GetParam().x87);
    EXPECT_EQ(control & ~x87Fields, others);
    EXPECT_EQ(X87Control() & x87Fields, 0x3Fu);
}

INSTANTIATE_TEST_SUITE_P(Bits, X87Test,
                         ::testing::Values(X87Case{0, _EM_INVALID, 0x3E}, X87Case{0, _EM_ZERODIVIDE, 0x3B},
                                           X87Case{0, _EM_OVERFLOW, 0x37}, X87Case{0, _EM_UNDERFLOW, 0x2F},
                                           X87Case{0, _EM_INEXACT, 0x1F}, X87Case{0, _EM_DENORMAL, 0x3F},
                                           X87Case{_RC_DOWN, _MCW_RC, 0x43F}, X87Case{_RC_UP, _MCW_RC, 0x83F},
                                           X87Case{_RC_CHOP, _MCW_RC, 0xC3F}));

TEST(X87StatusTest, IsClearedToo)
{
    volatile long double three = 3.0L;
    volatile long double third = 1.0L / three;
    static_cast<void>(third);
    EXPECT_NE(X87Status() & 0x3F, 0u);
    ClearFloatingStatus();
    EXPECT_EQ(X87Status() & 0x3F, 0u);
}

TEST(PosixFloatingPointTest, PowersOfTenAreWhatTheCLibraryGives)
{
    for (int exponent = -330; exponent <= 330; ++exponent)
    {
        volatile double base = 10.0; // so that the library is called
        // Of this one, what it gives depends on the processor.
        if (exponent != 126)
        {
            EXPECT_EQ(pow10(exponent), std::pow(base, exponent)) << exponent;
        }
    }
}
