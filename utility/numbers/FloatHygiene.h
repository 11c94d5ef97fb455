#pragma once

// Values that pass between single and double precision, and the thread's floating-point state.
//
//     assert(MakeFloatDoubleConsistent(0.1) == 0.10000000149011612); // which survives a float field unchanged
//     assert(Round(3.14159, 2) == 3.14);
//     CMaskFloatingPointExceptions masked; // nothing traps in this scope
//
// Everything here acts on the calling thread alone and may be called from any thread. Nothing is reported. Where a
// narrowing goes beyond the range of a float the result is an infinity, or the processor's trap if overflow is
// unmasked.

#include "utility/platform/Export.h"
#include "utility/platform/FloatingControl.h"

/// The nearest double that a float holds exactly, under the thread's rounding direction.
[[nodiscard]] UTILITY_API double MakeFloatDoubleConsistent(double value);

/// Whether a trip through a float leaves the value as it is. A NaN is never consistent.
[[nodiscard]] UTILITY_API bool IsFloatDoubleConsistent(double value);

/// Whether two values are equal once narrowed to float. False with a NaN on either side.
[[nodiscard]] UTILITY_API bool EqualAsFloats(double a, double b);

/// The value cut to `places` decimal places, -2 being hundreds. For values of moderate size only: it is scaled into a
/// 32-bit integer, and what does not fit there, NaN and infinity included, gives -2147483648 / 10^places. A value
/// below one unit of the last place gives 0, and a tie goes towards zero.
[[nodiscard]] UTILITY_API double Round(double value, int places);
[[nodiscard]] UTILITY_API float Round(float value, int places);

/// The value narrowed under a rounding direction, one of _RC_NEAR, _RC_DOWN, _RC_UP and _RC_CHOP.
[[nodiscard]] UTILITY_API float RoundToFloat(double value, unsigned int roundingControl);

/// Whether the value is a normal number or a zero of either sign. A subnormal float is valid, a subnormal double is
/// not.
UTILITY_API bool IsValidFloat(float value);
UTILITY_API bool IsValidReal(double value);

/// The binary exponent for a mantissa in [0.5, 1), in 16 bits: negative ones wrap, and 0.5 has 0. The sign is ignored.
UTILITY_API unsigned short ExponentOf(double& value);
UTILITY_API unsigned short ExponentOf(float value);

/// A VAX F_floating number, whose bytes stand in `value` in their order in memory, as an IEEE single. There is no
/// special case: test for a VAX zero beforehand, it gives -1.7014118e+38.
[[nodiscard]] UTILITY_API float ConvertVMSFloat(float value);

/// From now on overflow and division by zero trap. The other conditions keep what they had.
UTILITY_API void UnmaskFloatingPointExceptions();

/// From now on nothing traps.
UTILITY_API void MaskFloatingPointExceptions();

/// Masks everything for a scope. Its end discards the pending status flags and unmasks overflow and division by zero,
/// whatever there was before: it deliberately does not restore, so the end of an inner scope unmasks in an outer one.
class UTILITY_API CMaskFloatingPointExceptions
{
public:
    /// Masks all exceptions of the calling thread.
    CMaskFloatingPointExceptions();
    CMaskFloatingPointExceptions(const CMaskFloatingPointExceptions&) = default;
    CMaskFloatingPointExceptions& operator=(const CMaskFloatingPointExceptions&) = default;
    /// Discards pending flags, and unmasks overflow and division by zero.
    ~CMaskFloatingPointExceptions();
};
