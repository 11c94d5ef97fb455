#include "utility/numbers/PowersOfTen.h"

#include "utility/numbers/internal/AllPowers.h"

#include <iterator>

namespace utility::detail
{

constexpr double allPowers[] = {
#include "utility/numbers/internal/PowersOfTen.inc"
};

double PowerBeyondTable(int exponent)
{
    const auto index = static_cast<unsigned int>(exponent) - static_cast<unsigned int>(lowestPower);
    if (index < std::size(allPowers))
        return allPowers[index];
    // Beyond those the processor decides: it may trap, or round to the last number instead.
    volatile double factor = exponent < 0 ? allPowers[0] : allPowers[std::size(allPowers) - 1];
    return factor * factor;
}

}
