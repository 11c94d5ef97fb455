#include "utility/numbers/PowersOfTen.h"

#include <iterator>

namespace
{

constexpr int lowestPower = -323;

/// What the C library of Linux gives by pow on processors that fuse a multiplication with a sum, so that every system
/// gives that: the nearest doubles, but deliberately not for 23 and 210.
constexpr double powers[] = {
#include "utility/numbers/internal/PowersOfTen.inc"
};

}

double utility::detail::PowerBeyondTable(int exponent)
{
    const auto index = static_cast<unsigned int>(exponent) - static_cast<unsigned int>(lowestPower);
    if (index < std::size(powers))
        return powers[index];
    // Beyond those the processor decides: it may trap, or round to the last number instead.
    volatile double factor = exponent < 0 ? powers[0] : powers[std::size(powers) - 1];
    return factor * factor;
}
