#include "utility/platform/FloatingPoint.h"

#include "utility/platform/Types.h"

#include <xmmintrin.h>

namespace utility::platform
{

unsigned int FloatingControl(unsigned int value, unsigned int mask) noexcept { return ::_controlfp(value, mask); }

void ClearFloatingStatus() noexcept { ::_clearfp(); }

void ResetFloatingPoint() noexcept
{
    ::_fpreset();
    // This compiler's leaves alone what is not the old unit's.
    constexpr unsigned int allMasked = 0x1F80;
    _mm_setcsr(allMasked);
}

}
