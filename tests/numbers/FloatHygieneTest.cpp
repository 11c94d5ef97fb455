#include "utility/numbers/FloatHygiene.h"

#include "tests/support/Doubles.h"
#include "tests/support/FloatingTrap.h"
#include "tests/support/KeepFloatingControl.h"
#include "utility/platform/FloatingPoint.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cfenv>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <emmintrin.h>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <type_traits>

using support::KeepFloatingControl;
using utility::platform::FloatingControl;

namespace
{

using support::infinity;
using support::quietNan;
using support::Same;
constexpr float floatInfinity = std::numeric_limits<float>::infinity();
constexpr float floatNan = std::numeric_limits<float>::quiet_NaN();
constexpr double smallestDouble = std::numeric_limits<double>::denorm_min();
constexpr float smallestFloat = std::numeric_limits<float>::denorm_min();

/// Numbers of all magnitudes, those of a float and those that a 32-bit integer holds more often than others.
class RandomNumbers
{
public:
    double Next()
    {
        const std::uint64_t bits = m_random();
        switch (m_random() % 4)
        {
        case 0:
            return std::bit_cast<double>(bits);
        case 1:
            return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
        case 2:
            return static_cast<double>(static_cast<std::int64_t>(bits)) * 0x1p-36;
        default:
            return static_cast<double>(static_cast<std::int64_t>(bits)) * 0x1p-31;
        }
    }

private:
    std::mt19937_64 m_random{20240229};
};

// --- Narrowing

struct NarrowingCase
{
    double value;
    double narrowed;
};

class MakeFloatDoubleConsistentTest : public ::testing::TestWithParam<NarrowingCase>
{
};

INSTANTIATE_TEST_SUITE_P(
    Values, MakeFloatDoubleConsistentTest,
    ::testing::Values(NarrowingCase{0.1, 0.10000000149011612}, NarrowingCase{-0.1, -0.10000000149011612},
                      NarrowingCase{0.0, 0.0}, NarrowingCase{-0.0, -0.0}, NarrowingCase{1.5, 1.5},
                      NarrowingCase{16777216.0, 16777216.0}, NarrowingCase{16777217.0, 16777216.0},
                      NarrowingCase{16777219.0, 16777220.0}, NarrowingCase{FLT_MAX, FLT_MAX},
                      NarrowingCase{1e39, infinity}, NarrowingCase{-1e39, -infinity}, NarrowingCase{infinity, infinity},
                      NarrowingCase{quietNan, quietNan}, NarrowingCase{1e-46, 0.0}, NarrowingCase{-1e-46, -0.0},
                      NarrowingCase{smallestFloat, smallestFloat}, NarrowingCase{smallestDouble, 0.0}));

TEST_P(MakeFloatDoubleConsistentTest, IsTheNearestFloat)
{
    EXPECT_TRUE(Same(MakeFloatDoubleConsistent(GetParam().value), GetParam().narrowed));
}

TEST_P(MakeFloatDoubleConsistentTest, ResultIsConsistentUnlessItIsANan)
{
    EXPECT_EQ(IsFloatDoubleConsistent(MakeFloatDoubleConsistent(GetParam().value)), !std::isnan(GetParam().value));
}

TEST(MakeFloatDoubleConsistentDirectionTest, FollowsTheDirectionOfTheThread)
{
    const KeepFloatingControl keep;
    FloatingControl(_RC_UP, _MCW_RC);
    const double up = MakeFloatDoubleConsistent(16777217.0);
    FloatingControl(_RC_DOWN, _MCW_RC);
    const double down = MakeFloatDoubleConsistent(16777217.0);
    FloatingControl(_RC_NEAR, _MCW_RC);
    EXPECT_EQ(up, 16777218.0);
    EXPECT_EQ(down, 16777216.0);
}

struct ConsistencyCase
{
    double value;
    bool consistent;
};

class IsFloatDoubleConsistentTest : public ::testing::TestWithParam<ConsistencyCase>
{
};

INSTANTIATE_TEST_SUITE_P(Values, IsFloatDoubleConsistentTest,
                         ::testing::Values(ConsistencyCase{0.1, false}, ConsistencyCase{0.10000000149011612, true},
                                           ConsistencyCase{16777216.0, true}, ConsistencyCase{16777217.0, false},
                                           ConsistencyCase{1e39, false}, ConsistencyCase{-1e39, false},
                                           ConsistencyCase{infinity, true}, ConsistencyCase{-infinity, true},
                                           ConsistencyCase{quietNan, false}, ConsistencyCase{0.0, true},
                                           ConsistencyCase{-0.0, true}, ConsistencyCase{smallestFloat, true},
                                           ConsistencyCase{smallestDouble, false}));

TEST_P(IsFloatDoubleConsistentTest, TellsWhetherAFloatHoldsTheValue)
{
    EXPECT_EQ(IsFloatDoubleConsistent(GetParam().value), GetParam().consistent);
}

struct EqualityCase
{
    double a;
    double b;
    bool equal;
};

class EqualAsFloatsTest : public ::testing::TestWithParam<EqualityCase>
{
};

INSTANTIATE_TEST_SUITE_P(Pairs, EqualAsFloatsTest,
                         ::testing::Values(EqualityCase{1.0, 1.00000001, true}, EqualityCase{1.0, 1.0000001, false},
                                           EqualityCase{0.1, 0.10000000149011612, true}, EqualityCase{0.0, -0.0, true},
                                           EqualityCase{1e39, 1e40, true}, EqualityCase{1e39, -1e39, false},
                                           EqualityCase{1e39, infinity, true}, EqualityCase{1e-46, 0.0, true},
                                           EqualityCase{quietNan, 1.0, false}, EqualityCase{1.0, quietNan, false},
                                           EqualityCase{quietNan, quietNan, false}, EqualityCase{1.0, 2.0, false}));

TEST_P(EqualAsFloatsTest, ComparesAtSinglePrecision)
{
    EXPECT_EQ(EqualAsFloats(GetParam().a, GetParam().b), GetParam().equal);
    EXPECT_EQ(EqualAsFloats(GetParam().b, GetParam().a), GetParam().equal);
}

// --- Round

struct RoundCase
{
    double value;
    int places;
    double rounded;
};

class RoundTest : public ::testing::TestWithParam<RoundCase>
{
};

INSTANTIATE_TEST_SUITE_P(WorkedValues, RoundTest,
                         ::testing::Values(RoundCase{1.7, 0, 2.0}, RoundCase{1.5, 0, 1.0}, RoundCase{2.5, 0, 2.0},
                                           RoundCase{-1.7, 0, -2.0}, RoundCase{-2.5, 0, -2.0}, RoundCase{0.7, 0, 0.0},
                                           RoundCase{-0.004, 2, 0.0}, RoundCase{0.0199, 2, 0.02},
                                           RoundCase{3.14159, 2, 3.14}, RoundCase{1250.0, -2, 1200.0},
                                           RoundCase{1260.0, -2, 1300.0}, RoundCase{3000000.0, 3, -2147483.648},
                                           RoundCase{-3000000.0, 3, -2147483.648}));
INSTANTIATE_TEST_SUITE_P(BelowOneUnitOfTheLastPlaceGivesPlusZero, RoundTest,
                         ::testing::Values(RoundCase{0.0099, 2, 0.0}, RoundCase{0.99, 0, 0.0}, RoundCase{-0.99, 0, 0.0},
                                           RoundCase{-0.0, 0, 0.0}, RoundCase{0.0, 5, 0.0}, RoundCase{99.0, -2, 0.0},
                                           RoundCase{-99.0, -2, 0.0}, RoundCase{smallestDouble, 10, 0.0}));
INSTANTIATE_TEST_SUITE_P(NanAndInfinityGoTheWayOfAnOverflow, RoundTest,
                         ::testing::Values(RoundCase{quietNan, 0, -2147483648.0}, RoundCase{infinity, 0, -2147483648.0},
                                           RoundCase{-infinity, 0, -2147483648.0}, RoundCase{quietNan, 2, -21474836.48},
                                           RoundCase{infinity, 3, -2147483.648},
                                           RoundCase{-infinity, -2, -214748364800.0}));
INSTANTIATE_TEST_SUITE_P(
    BordersOfTheInteger, RoundTest,
    ::testing::Values(RoundCase{2147483647.0, 0, 2147483647.0}, RoundCase{2147483647.25, 0, 2147483647.0},
                      RoundCase{2147483646.75, 0, 2147483647.0}, RoundCase{-2147483647.25, 0, -2147483647.0},
                      // One more is out of range: rounding overflows where truncation did not.
                      RoundCase{2147483647.75, 0, -2147483648.0}, RoundCase{2147483648.0, 0, -2147483648.0},
                      RoundCase{-2147483648.0, 0, -2147483648.0}, RoundCase{-2147483647.75, 0, -2147483648.0},
                      RoundCase{-2147483648.5, 0, -2147483648.0}, RoundCase{1e300, 0, -2147483648.0}));
INSTANTIATE_TEST_SUITE_P(PlacesBeyondTheTable, RoundTest,
                         ::testing::Values(RoundCase{1.0, 400, -0.0}, RoundCase{1.0, -400, 0.0},
                                           RoundCase{3e-22, 22, 3e-22}, RoundCase{3e12, -12, 3e12}));

TEST_P(RoundTest, CutsToDecimalPlaces)
{
    EXPECT_TRUE(Same(Round(GetParam().value, GetParam().places), GetParam().rounded));
}

TEST(RoundOfAFloatTest, WidensAndNarrows)
{
    EXPECT_TRUE((std::is_same_v<decltype(Round(1.0F, 0)), float>));
    EXPECT_EQ(Round(3.14159F, 2), 3.14F);
    EXPECT_EQ(Round(1.5F, 0), 1.0F);
    EXPECT_EQ(Round(-1.7F, 0), -2.0F);
    EXPECT_EQ(Round(1260.0F, -2), 1300.0F);
    EXPECT_EQ(Round(3000000.0F, 3), -2147483.648F);
    EXPECT_EQ(Round(floatNan, 0), -2147483648.0F);
    // A float just above the tie, of which single precision would make a tie.
    EXPECT_EQ(Round(1.25F, 1), 1.2F);
    EXPECT_EQ(Round(1.35F, 1), 1.4F);
}

/// The same steps with the conversion of the processor itself.
double RoundByTheProcessor(double value, double scale)
{
    double scaled = scale * value;
    const int whole = _mm_cvttsd_si32(_mm_set_sd(scaled));
    if (whole == 0)
        return 0.0;
    const double fraction = std::fmod(scaled, whole);
    if (std::fabs(fraction) > 0.5)
        scaled += fraction < 0 ? -1.0 : 1.0;
    return _mm_cvttsd_si32(_mm_set_sd(scaled)) / scale;
}

TEST(RoundOfAnyNumberTest, TruncatesAsTheProcessorDoes)
{
    constexpr double scales[] = {1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4};
    RandomNumbers numbers;
    int inRange = 0;
    for (int i = 0; i < 200000; ++i)
    {
        const int places = i % 9 - 4;
        const double value = numbers.Next();
        const double expected = RoundByTheProcessor(value, scales[places + 4]);
        ASSERT_TRUE(Same(Round(value, places), expected)) << value << " to " << places;
        inRange += expected != 0 && std::fabs(expected * scales[places + 4]) < 2147483647.0 ? 1 : 0;
    }
    EXPECT_GT(inRange, 20000);
}

// --- RoundToFloat

struct DirectionCase
{
    double value;
    unsigned int control;
    float narrowed;
};

class RoundToFloatTest : public ::testing::TestWithParam<DirectionCase>
{
};

INSTANTIATE_TEST_SUITE_P(ATenth, RoundToFloatTest,
                         ::testing::Values(DirectionCase{0.1, _RC_NEAR, 0.100000001490116F},
                                           DirectionCase{0.1, _RC_DOWN, 0.0999999940395355F},
                                           DirectionCase{0.1, _RC_UP, 0.100000001490116F},
                                           DirectionCase{0.1, _RC_CHOP, 0.0999999940395355F},
                                           DirectionCase{-0.1, _RC_NEAR, -0.100000001490116F},
                                           DirectionCase{-0.1, _RC_DOWN, -0.100000001490116F},
                                           DirectionCase{-0.1, _RC_UP, -0.0999999940395355F},
                                           DirectionCase{-0.1, _RC_CHOP, -0.0999999940395355F}));
INSTANTIATE_TEST_SUITE_P(
    BeyondTheRange, RoundToFloatTest,
    ::testing::Values(DirectionCase{1e39, _RC_NEAR, floatInfinity}, DirectionCase{1e39, _RC_DOWN, FLT_MAX},
                      DirectionCase{1e39, _RC_UP, floatInfinity}, DirectionCase{1e39, _RC_CHOP, FLT_MAX},
                      DirectionCase{-1e39, _RC_DOWN, -floatInfinity}, DirectionCase{-1e39, _RC_UP, -FLT_MAX},
                      DirectionCase{infinity, _RC_DOWN, floatInfinity}, DirectionCase{1e-50, _RC_NEAR, 0.0F},
                      DirectionCase{1e-50, _RC_UP, smallestFloat}, DirectionCase{1e-50, _RC_DOWN, 0.0F},
                      DirectionCase{-1e-50, _RC_DOWN, -smallestFloat}, DirectionCase{quietNan, _RC_UP, floatNan}));
INSTANTIATE_TEST_SUITE_P(OnlyTheDirectionOfTheArgumentCounts, RoundToFloatTest,
                         ::testing::Values(DirectionCase{0.1, _RC_DOWN | _MCW_EM, 0.0999999940395355F},
                                           DirectionCase{0.1, ~0x300U, 0.100000001490116F},
                                           DirectionCase{0.1, ~0U, 0.0999999940395355F}));

TEST_P(RoundToFloatTest, NarrowsUnderTheDirection)
{
    EXPECT_TRUE(Same(RoundToFloat(GetParam().value, GetParam().control), GetParam().narrowed));
}

TEST_P(RoundToFloatTest, LeavesTheControlWordOfTheThread)
{
    const KeepFloatingControl keep;
    for (const unsigned int direction : {_RC_NEAR, _RC_DOWN, _RC_UP, _RC_CHOP})
    {
        FloatingControl(direction, _MCW_RC);
        const unsigned int before = FloatingControl(0, 0);
        const float narrowed = RoundToFloat(GetParam().value, GetParam().control);
        const unsigned int after = FloatingControl(0, 0);
        EXPECT_EQ(after, before);
        EXPECT_TRUE(Same(narrowed, GetParam().narrowed));
    }
}

TEST(RoundToFloatOfAnyNumberTest, IsTheNeighbourOnTheSideOfTheDirection)
{
    RandomNumbers numbers;
    for (int i = 0; i < 100000; ++i)
    {
        const double value = numbers.Next();
        if (std::isnan(value))
            continue;
        const float down = RoundToFloat(value, _RC_DOWN);
        const float up = RoundToFloat(value, _RC_UP);
        ASSERT_LE(static_cast<double>(down), value);
        ASSERT_GE(static_cast<double>(up), value);
        // No float lies between the two.
        ASSERT_TRUE(down == up || std::nextafter(down, floatInfinity) == up) << value;
        ASSERT_EQ(RoundToFloat(value, _RC_CHOP), value < 0 ? up : down) << value;
        ASSERT_EQ(RoundToFloat(value, _RC_NEAR), static_cast<float>(value)) << value;
    }
}

// --- Validity

struct ValidityCase
{
    const char* name;
    double value;
    bool valid;
};

class IsValidRealTest : public ::testing::TestWithParam<ValidityCase>
{
};

INSTANTIATE_TEST_SUITE_P(
    Classes, IsValidRealTest,
    ::testing::Values(ValidityCase{"SignallingNan", std::numeric_limits<double>::signaling_NaN(), false},
                      ValidityCase{"QuietNan", quietNan, false}, ValidityCase{"NegativeNan", -quietNan, false},
                      ValidityCase{"NegativeInfinity", -infinity, false}, ValidityCase{"NegativeNormal", -1.5, true},
                      ValidityCase{"LowestNormal", -DBL_MAX, true},
                      ValidityCase{"NegativeSubnormal", -smallestDouble, false},
                      ValidityCase{"NegativeZero", -0.0, true}, ValidityCase{"Zero", 0.0, true},
                      ValidityCase{"SmallestSubnormal", smallestDouble, false},
                      ValidityCase{"LargestSubnormal", DBL_MIN - smallestDouble, false},
                      ValidityCase{"SmallestNormal", DBL_MIN, true}, ValidityCase{"LargestNormal", DBL_MAX, true},
                      ValidityCase{"Infinity", infinity, false}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(IsValidRealTest, TakesNormalNumbersAndZeros) { EXPECT_EQ(IsValidReal(GetParam().value), GetParam().valid); }

TEST(IsValidFloatTest, TakesNormalNumbersAndZeros)
{
    EXPECT_TRUE(IsValidFloat(1.0F));
    EXPECT_TRUE(IsValidFloat(-FLT_MAX));
    EXPECT_TRUE(IsValidFloat(0.0F));
    EXPECT_TRUE(IsValidFloat(-0.0F));
    EXPECT_FALSE(IsValidFloat(floatNan));
    EXPECT_FALSE(IsValidFloat(floatInfinity));
    EXPECT_FALSE(IsValidFloat(-floatInfinity));
}

TEST(IsValidFloatTest, SubnormalFloatIsDeliberatelyValid)
{
    EXPECT_TRUE(IsValidFloat(smallestFloat));
    EXPECT_TRUE(IsValidFloat(-smallestFloat));
    EXPECT_TRUE(IsValidFloat(FLT_MIN - smallestFloat));
}

// --- ExponentOf

struct ExponentCase
{
    double value;
    unsigned short ofDouble;
    unsigned short ofFloat;
};

class ExponentOfTest : public ::testing::TestWithParam<ExponentCase>
{
};

INSTANTIATE_TEST_SUITE_P(Values, ExponentOfTest,
                         ::testing::Values(ExponentCase{1.0, 1, 1}, ExponentCase{0.5, 0, 0},
                                           ExponentCase{0.25, 65535, 65535}, ExponentCase{0.0, 64514, 65410},
                                           ExponentCase{-0.0, 64514, 65410}, ExponentCase{infinity, 1025, 129},
                                           ExponentCase{-infinity, 1025, 129}, ExponentCase{quietNan, 1025, 129},
                                           ExponentCase{-1.0, 1, 1}, ExponentCase{3.9, 2, 2},
                                           ExponentCase{0x1p127, 128, 128}, ExponentCase{0x1p-126, 65411, 65411},
                                           // A subnormal float; as a double it is a normal number.
                                           ExponentCase{0x1p-127, 65410, 65410}, ExponentCase{0x1p-140, 65397, 65410}));

TEST_P(ExponentOfTest, IsThatOfAMantissaFromAHalfToOne)
{
    double value = GetParam().value;
    EXPECT_EQ(ExponentOf(value), GetParam().ofDouble);
    EXPECT_EQ(ExponentOf(static_cast<float>(value)), GetParam().ofFloat);
}

TEST(ExponentOfEveryNormalNumberTest, AgreesWithFrexpIn16Bits)
{
    for (int exponent = -1021; exponent <= 1024; ++exponent)
    {
        double least = std::ldexp(0.5, exponent);
        double greatest = -std::ldexp(1.0 - 0x1p-53, exponent);
        EXPECT_EQ(ExponentOf(least), static_cast<unsigned short>(exponent));
        EXPECT_EQ(ExponentOf(greatest), static_cast<unsigned short>(exponent));
    }
    for (int exponent = -125; exponent <= 128; ++exponent)
    {
        EXPECT_EQ(ExponentOf(std::ldexp(0.5F, exponent)), static_cast<unsigned short>(exponent));
        EXPECT_EQ(ExponentOf(-std::ldexp(1.0F - 0x1p-24F, exponent)), static_cast<unsigned short>(exponent));
    }
}

TEST(ExponentOfSubnormalTest, IsThatOfZero)
{
    double value = smallestDouble;
    EXPECT_EQ(ExponentOf(value), 64514);
    EXPECT_EQ(ExponentOf(smallestFloat), 65410);
}

TEST(ExponentOfLiteralTest, LiteralIsTakenAsAFloat) { EXPECT_EQ(ExponentOf(0.0), 65410); }

// --- ConvertVMSFloat

using Bytes = std::array<unsigned char, 4>;

Bytes Converted(const Bytes& bytes) { return std::bit_cast<Bytes>(ConvertVMSFloat(std::bit_cast<float>(bytes))); }

struct VaxCase
{
    const char* name;
    Bytes vax;
    Bytes ieee;
};

class ConvertVMSFloatTest : public ::testing::TestWithParam<VaxCase>
{
};

INSTANTIATE_TEST_SUITE_P(
    Bytes, ConvertVMSFloatTest,
    ::testing::Values(VaxCase{"One", {0x80, 0x40, 0x00, 0x00}, {0x00, 0x00, 0x80, 0x3F}},
                      VaxCase{"MinusOne", {0x80, 0xC0, 0x00, 0x00}, {0x00, 0x00, 0x80, 0xBF}},
                      VaxCase{"Pi", {0x49, 0x41, 0xDB, 0x0F}, {0xDB, 0x0F, 0x49, 0x40}},
                      VaxCase{"EveryByteHasItsPlace", {0x12, 0x34, 0x56, 0x78}, {0x56, 0x78, 0x12, 0x33}},
                      VaxCase{"ZeroWrapsDeliberately", {0x00, 0x00, 0x00, 0x00}, {0x00, 0x00, 0x00, 0xFF}},
                      VaxCase{"ExponentOneWraps", {0x80, 0x00, 0x34, 0x12}, {0x34, 0x12, 0x80, 0xFF}},
                      VaxCase{"ReservedOperandLosesItsSign", {0x00, 0x80, 0x00, 0x00}, {0x00, 0x00, 0x00, 0x7F}},
                      VaxCase{"ExponentTwoLandsAmongTheSubnormals", {0x01, 0x01, 0x00, 0x00}, {0x00, 0x00, 0x01, 0x00}},
                      VaxCase{"OnlyTheTopByteIsDecremented", {0x00, 0x01, 0x00, 0x00}, {0x00, 0x00, 0x00, 0x00}}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(ConvertVMSFloatTest, SwapsTheWordsAndTakesOneFromTheTopByte)
{
    EXPECT_EQ(Converted(GetParam().vax), GetParam().ieee);
}

TEST(ConvertVMSFloatOfZeroTest, IsALargeNegativeNumber) { EXPECT_EQ(ConvertVMSFloat(0.0F), -1.7014118e+38F); }

TEST(ConvertVMSFloatOfAnyBitsTest, IsFourBytesRearranged)
{
    std::mt19937 random(20240229);
    for (int i = 0; i < 500000; ++i)
    {
        const auto vax = std::bit_cast<Bytes>(static_cast<std::uint32_t>(random()));
        const Bytes expected{vax[2], vax[3], vax[0], static_cast<unsigned char>(vax[1] - 1)};
        ASSERT_EQ(Converted(vax), expected);
    }
}

TEST(ConvertVMSFloatOfEveryExponentTest, IsTheSameNumberWhereIeeeHasItAsANormalOne)
{
    std::mt19937 random(20240229);
    for (unsigned int exponent = 3; exponent < 256; ++exponent)
    {
        for (int i = 0; i < 100; ++i)
        {
            const unsigned int fraction = random() & 0x7FFFFF;
            const unsigned int sign = random() & 1;
            const unsigned int first = sign << 15 | exponent << 7 | fraction >> 16;
            const unsigned int second = fraction & 0xFFFF;
            const Bytes vax{static_cast<unsigned char>(first), static_cast<unsigned char>(first >> 8),
                            static_cast<unsigned char>(second), static_cast<unsigned char>(second >> 8)};
            const double magnitude = std::ldexp(0x800000 | fraction, static_cast<int>(exponent) - 128 - 24);
            ASSERT_EQ(ConvertVMSFloat(std::bit_cast<float>(vax)), sign != 0 ? -magnitude : magnitude);
        }
    }
}

// --- What traps

constexpr unsigned int trapping = _EM_OVERFLOW | _EM_ZERODIVIDE;

unsigned int Masks() { return FloatingControl(0, 0) & _MCW_EM; }

TEST(MaskFloatingPointExceptionsTest, MasksAllSix)
{
    const KeepFloatingControl keep;
    FloatingControl(0, _MCW_EM);
    MaskFloatingPointExceptions();
    EXPECT_EQ(Masks(), static_cast<unsigned int>(_MCW_EM));
}

class UnmaskFloatingPointExceptionsTest : public ::testing::TestWithParam<unsigned int>
{
};

INSTANTIATE_TEST_SUITE_P(OtherConditions, UnmaskFloatingPointExceptionsTest,
                         ::testing::Values(0U, _EM_INEXACT, _EM_UNDERFLOW, _EM_INVALID, _EM_INEXACT | _EM_UNDERFLOW,
                                           _EM_INEXACT | _EM_INVALID, _EM_UNDERFLOW | _EM_INVALID,
                                           _EM_INEXACT | _EM_UNDERFLOW | _EM_INVALID));

TEST_P(UnmaskFloatingPointExceptionsTest, OverflowAndDivisionTrapAndTheOthersKeepWhatTheyHad)
{
    const KeepFloatingControl keep;
    for (const unsigned int earlier : {0U, unsigned{_EM_OVERFLOW}, unsigned{_EM_ZERODIVIDE}, trapping})
    {
        FloatingControl(GetParam() | earlier | _EM_DENORMAL, _MCW_EM);
        UnmaskFloatingPointExceptions();
        EXPECT_EQ(Masks(), GetParam() | _EM_DENORMAL);
    }
}

TEST_P(UnmaskFloatingPointExceptionsTest, LeavesTheDirection)
{
    const KeepFloatingControl keep;
    FloatingControl(_RC_UP, _MCW_RC);
    UnmaskFloatingPointExceptions();
    const unsigned int unmasked = FloatingControl(0, 0) & _MCW_RC;
    MaskFloatingPointExceptions();
    const unsigned int masked = FloatingControl(0, 0) & _MCW_RC;
    FloatingControl(_RC_NEAR, _MCW_RC);
    EXPECT_EQ(unmasked, static_cast<unsigned int>(_RC_UP));
    EXPECT_EQ(masked, static_cast<unsigned int>(_RC_UP));
}

TEST(UnmaskFloatingPointExceptionsDeathTest, NarrowingBeyondAFloatTraps)
{
    EXPECT_EXIT(
        {
            UnmaskFloatingPointExceptions();
            static_cast<void>(MakeFloatDoubleConsistent(1e39));
        },
        support::EndedByFloatingTrap, "");
}

TEST(UnmaskFloatingPointExceptionsDeathTest, DivisionByZeroTraps)
{
    EXPECT_EXIT(
        {
            UnmaskFloatingPointExceptions();
            volatile double zero = 0.0;
            zero = 1.0 / zero;
        },
        support::EndedByFloatingTrap, "");
}

TEST(UnmaskFloatingPointExceptionsDeathTest, EndOfAScopeMakesOverflowTrap)
{
    EXPECT_EXIT(
        {
            {
                const CMaskFloatingPointExceptions masked;
                static_cast<void>(MakeFloatDoubleConsistent(1e39));
            }
            static_cast<void>(MakeFloatDoubleConsistent(1e39));
        },
        support::EndedByFloatingTrap, "");
}

TEST(CMaskFloatingPointExceptionsTest, MasksEverythingForAScope)
{
    const KeepFloatingControl keep;
    FloatingControl(0, _MCW_EM);
    {
        const CMaskFloatingPointExceptions masked;
        EXPECT_EQ(Masks(), static_cast<unsigned int>(_MCW_EM));
        EXPECT_FALSE(IsFloatDoubleConsistent(1e39));
        EXPECT_TRUE(EqualAsFloats(1e39, 1e40));
    }
    MaskFloatingPointExceptions();
}

TEST(CMaskFloatingPointExceptionsTest, EndDeliberatelyUnmasksWhatWasMaskedBefore)
{
    const KeepFloatingControl keep;
    MaskFloatingPointExceptions();
    {
        const CMaskFloatingPointExceptions masked;
    }
    EXPECT_EQ(Masks(), _MCW_EM & ~trapping);
}

TEST(CMaskFloatingPointExceptionsTest, EndOfAnInnerScopeDeliberatelyUnmasksInTheOuterOne)
{
    const KeepFloatingControl keep;
    const CMaskFloatingPointExceptions outer;
    {
        const CMaskFloatingPointExceptions inner;
    }
    EXPECT_EQ(Masks(), _MCW_EM & ~trapping);
}

TEST(CMaskFloatingPointExceptionsTest, EndDiscardsThePendingStatusFlags)
{
    const KeepFloatingControl keep;
    std::feclearexcept(FE_ALL_EXCEPT);
    {
        const CMaskFloatingPointExceptions masked;
        volatile double huge = 1e300;
        volatile double zero = 0.0;
        huge = huge * huge;
        huge = 1.0 / zero;
        ASSERT_NE(std::fetestexcept(FE_OVERFLOW), 0);
        ASSERT_NE(std::fetestexcept(FE_DIVBYZERO), 0);
    }
    const int pending = std::fetestexcept(FE_ALL_EXCEPT);
    MaskFloatingPointExceptions();
    EXPECT_EQ(pending, 0);
}

TEST(CMaskFloatingPointExceptionsTest, StoresNothingAndAssigningDoesNothing)
{
    EXPECT_TRUE(std::is_empty_v<CMaskFloatingPointExceptions>);
    const KeepFloatingControl keep;
    CMaskFloatingPointExceptions one;
    const CMaskFloatingPointExceptions other;
    FloatingControl(_EM_DENORMAL | _EM_INVALID, _MCW_EM);
    const unsigned int before = Masks();
    one = other;
    EXPECT_EQ(Masks(), before);
}

TEST(FloatingControlThreadTest, MasksAndDirectionsAreThoseOfTheThread)
{
    const KeepFloatingControl keep;
    MaskFloatingPointExceptions();
    const unsigned int before = FloatingControl(0, 0);
    unsigned int there = 0;
    std::thread(
        [&there]
        {
            FloatingControl(_RC_DOWN, _MCW_RC);
            UnmaskFloatingPointExceptions();
            there = FloatingControl(0, 0);
            static_cast<void>(RoundToFloat(0.1, _RC_UP));
        })
        .join();
    EXPECT_EQ(there & (_MCW_RC | trapping), static_cast<unsigned int>(_RC_DOWN));
    EXPECT_EQ(FloatingControl(0, 0), before);
}

}
