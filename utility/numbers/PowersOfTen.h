#pragma once

// Powers of ten.
//
//     assert(pow10(-3) == 0.001);
//
// Any thread may call, and errno stays. What is out of range is an infinity or 0, or the processor's trap if overflow
// is unmasked.

#include "utility/platform/Export.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace utility::detail
{

/// As far as 64 bits go.
inline constexpr std::array<std::uint64_t, 20> integerPowers = []
{
    std::array<std::uint64_t, 20> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}();

inline constexpr int lowestTabledPower = -10;
inline constexpr double tabledPowers[] = {
    1e-10, 1e-9, 1e-8, 1e-7, 1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1e0,  1e1,  1e2,  1e3,  1e4,  1e5,
    1e6,   1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20,
};

/// The same on every system, to the bit.
UTILITY_API double PowerBeyondTable(int exponent);

}

/// 10 to the power `exponent`: the nearest double, but for 23 and 210, where it is the one that the C library of Linux
/// has for pow.
[[nodiscard]] inline double pow10(int exponent)
{
    const auto index =
        static_cast<unsigned int>(exponent) - static_cast<unsigned int>(utility::detail::lowestTabledPower);
    constexpr unsigned int count = sizeof(utility::detail::tabledPowers) / sizeof(double);
    return index < count ? utility::detail::tabledPowers[index] : utility::detail::PowerBeyondTable(exponent);
}
