#include "utility/platform/FloatingPoint.h"

#include "utility/platform/Types.h"

namespace utility::platform
{

unsigned int FloatingControl(unsigned int value, unsigned int mask) noexcept { return ::_controlfp(value, mask); }

void ClearFloatingStatus() noexcept { ::_clearfp(); }

}
