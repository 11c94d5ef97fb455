#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace support
{

inline constexpr double infinity = std::numeric_limits<double>::infinity();
inline constexpr double quietNan = std::numeric_limits<double>::quiet_NaN();

/// Equal in every bit, so that a zero has its sign; one NaN is as good as another.
inline ::testing::AssertionResult Same(double got, double expected)
{
    if (std::bit_cast<std::uint64_t>(got) == std::bit_cast<std::uint64_t>(expected) ||
        (std::isnan(got) && std::isnan(expected)))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << std::hexfloat << got << " is not " << expected << std::defaultfloat << " ("
                                         << got << ", " << expected << ")";
}

}
