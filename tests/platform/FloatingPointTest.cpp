#include "utility/platform/FloatingPoint.h"

#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <thread>
#include <xmmintrin.h>

using utility::platform::ClearFloatingStatus;
using utility::platform::FloatingControl;

namespace
{

constexpr unsigned int initial = _MCW_EM | _RC_NEAR;
constexpr unsigned int statusFlags = 0x3F;

class FloatingControlTest : public ::testing::Test
{
protected:
    ~FloatingControlTest() override
    {
        ClearFloatingStatus();
        FloatingControl(initial, _MCW_EM | _MCW_RC);
    }

    static void RaiseInexact()
    {
        volatile double three = 3.0;
        volatile double third = 1.0 / three;
        volatile long double longThree = 3.0L;
        volatile long double longThird = 1.0L / longThree;
        static_cast<void>(third);
        static_cast<void>(longThird);
    }
};

struct MaskCase
{
    unsigned int bit;
    unsigned int sse;
};

class FloatingMaskTest : public FloatingControlTest, public ::testing::WithParamInterface<MaskCase>
{
};

struct RoundingCase
{
    unsigned int bits;
    unsigned int sse;
    double third;
    double minusThird;
};

class FloatingRoundingTest : public FloatingControlTest, public ::testing::WithParamInterface<RoundingCase>
{
};

/// A third as the current direction rounds it.
double Third(double sign)
{
    volatile double numerator = sign;
    volatile double denominator = 3.0;
    volatile double quotient = numerator / denominator;
    return quotient;
}

constexpr double thirdBelow = 0x1.5555555555555p-2;
constexpr double thirdAbove = 0x1.5555555555556p-2;

}

TEST_F(FloatingControlTest, ThreadStartsWithAllMaskedAndNearest) { EXPECT_EQ(FloatingControl(0, 0), initial); }

TEST_P(FloatingMaskTest, IsClearedAndSet)
{
    const auto [bit, sse] = GetParam();
    ClearFloatingStatus();
    // Nothing that calculates may stand between the two changes.
    const unsigned int cleared = FloatingControl(0, bit);
    const unsigned int readCleared = FloatingControl(0, 0);
    const unsigned int sseCleared = _mm_getcsr();
    const unsigned int set = FloatingControl(bit, bit);
    const unsigned int sseSet = _mm_getcsr();
    EXPECT_EQ(cleared, initial & ~bit);
    EXPECT_EQ(readCleared, cleared);
    EXPECT_EQ(sseCleared & sse, 0u);
    EXPECT_EQ(set, initial);
    EXPECT_EQ(sseSet & sse, sse);
    EXPECT_EQ(sseCleared & ~sse & ~statusFlags, sseSet & ~sse & ~statusFlags);
}

INSTANTIATE_TEST_SUITE_P(Bits, FloatingMaskTest,
                         ::testing::Values(MaskCase{_EM_INEXACT, 0x1000}, MaskCase{_EM_UNDERFLOW, 0x800},
                                           MaskCase{_EM_OVERFLOW, 0x400}, MaskCase{_EM_ZERODIVIDE, 0x200},
                                           MaskCase{_EM_INVALID, 0x80}));

TEST_F(FloatingControlTest, DenormalMaskDeliberatelyStaysSet)
{
    EXPECT_EQ(FloatingControl(0, _EM_DENORMAL), initial);
    EXPECT_EQ(FloatingControl(0, _MCW_EM), _EM_DENORMAL | _RC_NEAR);
    EXPECT_EQ(FloatingControl(_MCW_EM, _MCW_EM), initial);
}

TEST_P(FloatingRoundingTest, RoundsTheirWay)
{
    const unsigned int control = FloatingControl(GetParam().bits, _MCW_RC);
    const double third = Third(1.0);
    const double minusThird = Third(-1.0);
    const unsigned int sse = _mm_getcsr();
    const unsigned int read = FloatingControl(0, 0);
    FloatingControl(_RC_NEAR, _MCW_RC);
    EXPECT_EQ(control, _MCW_EM | GetParam().bits);
    EXPECT_EQ(read, control);
    EXPECT_EQ(sse & 0x6000u, GetParam().sse);
    EXPECT_EQ(third, GetParam().third);
    EXPECT_EQ(minusThird, GetParam().minusThird);
}

INSTANTIATE_TEST_SUITE_P(Directions, FloatingRoundingTest,
                         ::testing::Values(RoundingCase{_RC_NEAR, 0x0000, thirdBelow, -thirdBelow},
                                           RoundingCase{_RC_DOWN, 0x2000, thirdBelow, -thirdAbove},
                                           RoundingCase{_RC_UP, 0x4000, thirdAbove, -thirdBelow},
                                           RoundingCase{_RC_CHOP, 0x6000, thirdBelow, -thirdBelow}));

TEST_F(FloatingControlTest, OnlyTheBitsOfTheMaskChange)
{
    FloatingControl(_RC_UP, _MCW_RC);
    const unsigned int control = FloatingControl(0, _EM_OVERFLOW | _EM_ZERODIVIDE);
    FloatingControl(_RC_NEAR, _MCW_RC);
    EXPECT_EQ(control, (_MCW_EM & ~(_EM_OVERFLOW | _EM_ZERODIVIDE)) | _RC_UP);
    EXPECT_EQ(FloatingControl(_MCW_EM, 0), _MCW_EM & ~(_EM_OVERFLOW | _EM_ZERODIVIDE));
}

TEST_F(FloatingControlTest, FlagThatIsPendingDoesNotTrapWhenUnmasked)
{
    RaiseInexact();
    FloatingControl(0, _EM_INEXACT);
    asm volatile("fwait");
    const unsigned int control = FloatingControl(_EM_INEXACT, _EM_INEXACT);
    EXPECT_EQ(control, initial);
}

TEST_F(FloatingControlTest, ClearedStatusHasNoFlags)
{
    RaiseInexact();
    EXPECT_NE(_mm_getcsr() & statusFlags, 0u);
    ClearFloatingStatus();
    EXPECT_EQ(_mm_getcsr() & statusFlags, 0u);
    EXPECT_EQ(FloatingControl(0, 0), initial);
}

TEST_F(FloatingControlTest, ClearingTheStatusLeavesTheControlAsItIs)
{
    FloatingControl(_RC_UP, _EM_OVERFLOW | _MCW_RC);
    ClearFloatingStatus();
    const unsigned int control = FloatingControl(0, 0);
    FloatingControl(initial, _MCW_EM | _MCW_RC);
    EXPECT_EQ(control, (initial & ~_EM_OVERFLOW) | _RC_UP);
}

TEST(FloatingControlThreadTest, ThreadsHaveEachTheirOwn)
{
    std::thread([] { FloatingControl(_RC_UP, _MCW_RC); }).join();
    EXPECT_EQ(FloatingControl(0, 0), initial);
}
