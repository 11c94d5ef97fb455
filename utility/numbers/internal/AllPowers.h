#pragma once

// All powers of ten that a double holds, for those who look up many.

namespace utility::detail
{

inline constexpr int lowestPower = -323;

/// What the C library of Linux gives by pow on processors that fuse a multiplication with a sum, so that every system
/// gives that: the nearest doubles, but deliberately not for 23 and 210.
extern const double allPowers[632];

/// pow10 of what is in the table: `exponent` is -323 to 308.
inline double PowerOfTen(int exponent) { return allPowers[exponent - lowestPower]; }

}
