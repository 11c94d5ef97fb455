#include "utility/numbers/PowersOfTen.h"

#include "utility/platform/FloatingPoint.h"

#include <cerrno>

double utility::detail::PowerBeyondTable(int exponent)
{
    // The system's pow reports a result out of range there.
    const int error = errno;
    const double power = platform::PowerOfTen(exponent);
    errno = error;
    return power;
}
