#include "utility/numbers/FloatHygiene.h"

#include "utility/numbers/PowersOfTen.h"
#include "utility/platform/FloatingPoint.h"

#include <bit>
#include <cmath>
#include <cstdint>

using utility::platform::FloatingControl;

namespace
{

/// The conversion of the processor: beyond 32 bits, and for a NaN, it gives the lowest integer.
std::int32_t Truncate(double value)
{
    return std::fabs(value) < 2147483648.0 ? static_cast<std::int32_t>(value) : INT32_MIN;
}

}

double MakeFloatDoubleConsistent(double value) { return static_cast<float>(value); }

bool IsFloatDoubleConsistent(double value) { return MakeFloatDoubleConsistent(value) == value; }

bool EqualAsFloats(double a, double b) { return static_cast<float>(a) == static_cast<float>(b); }

double Round(double value, int places)
{
    const double scale = pow10(places);
    double scaled = scale * value;
    const std::int32_t whole = Truncate(scaled);
    // Deliberately ahead of any rounding: a value below one unit of the last place never rounds up.
    if (whole == 0)
        return 0.0;
    const double fraction = std::fmod(scaled, whole);
    // A tie deliberately stays.
    if (std::fabs(fraction) > 0.5)
        scaled += std::copysign(1.0, fraction);
    // An overflow deliberately loses the sign of the input.
    return Truncate(scaled) / scale;
}

float Round(float value, int places) { return static_cast<float>(Round(static_cast<double>(value), places)); }

float RoundToFloat(double value, unsigned int roundingControl)
{
    const unsigned int saved = FloatingControl(0, 0);
    FloatingControl(roundingControl, _MCW_RC);
    // A compiler may move a plain conversion across the changes of direction.
    const volatile double wide = value;
    const volatile float narrow = static_cast<float>(wide);
    FloatingControl(saved, _MCW_RC);
    return narrow;
}

bool IsValidFloat(float value) { return IsValidReal(value); }

bool IsValidReal(double value)
{
    const int kind = std::fpclassify(value);
    return kind == FP_NORMAL || kind == FP_ZERO;
}

unsigned short ExponentOf(double& value)
{
    const auto exponent = std::bit_cast<std::uint64_t>(value) >> 52 & 0x7FF;
    return static_cast<unsigned short>(exponent - 1022);
}

unsigned short ExponentOf(float value)
{
    const auto exponent = std::bit_cast<std::uint32_t>(value) >> 23 & 0xFF;
    return static_cast<unsigned short>(exponent - 126);
}

float ConvertVMSFloat(float value)
{
    const auto swapped = std::rotl(std::bit_cast<std::uint32_t>(value), 16);
    // Deliberately in the top byte alone, which wraps: a VAX zero is not treated.
    const std::uint32_t top = ((swapped >> 24) - 1) << 24;
    return std::bit_cast<float>(top | (swapped & 0xFFFFFF));
}

void UnmaskFloatingPointExceptions()
{
    FloatingControl(FloatingControl(0, 0) & ~static_cast<unsigned int>(_EM_OVERFLOW | _EM_ZERODIVIDE), _MCW_EM);
}

void MaskFloatingPointExceptions() { FloatingControl(_MCW_EM, _MCW_EM); }

CMaskFloatingPointExceptions::CMaskFloatingPointExceptions() { MaskFloatingPointExceptions(); }

CMaskFloatingPointExceptions::~CMaskFloatingPointExceptions()
{
    utility::platform::ClearFloatingStatus();
    UnmaskFloatingPointExceptions();
}
