#include "utility/platform/FloatingPoint.h"

#include "utility/platform/Types.h"

#include <cmath>

namespace utility::platform
{

namespace
{

using PowFunction = double(__cdecl*)(double, double);

/// The system runtime's pow: the compiler's own is wrong by many units in the last place for most powers of ten.
PowFunction SystemPow() noexcept
{
    const HMODULE runtime = ::GetModuleHandleW(L"msvcrt.dll");
    const FARPROC found = runtime == nullptr ? nullptr : ::GetProcAddress(runtime, "pow");
    return found == nullptr ? static_cast<PowFunction>(std::pow)
                            : reinterpret_cast<PowFunction>(reinterpret_cast<void*>(found));
}

}

unsigned int FloatingControl(unsigned int value, unsigned int mask) noexcept { return ::_controlfp(value, mask); }

void ClearFloatingStatus() noexcept { ::_clearfp(); }

double PowerOfTen(int exponent) noexcept
{
    static const PowFunction pow = SystemPow();
    return pow(10.0, exponent);
}

}
