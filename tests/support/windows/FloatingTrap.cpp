#include "tests/support/FloatingTrap.h"

#include <windows.h>

bool support::EndedByFloatingTrap(int status)
{
    // The status is the exception's code. Several conditions at once have codes of their own.
    constexpr DWORD multipleFaults = 0xC00002B4;
    constexpr DWORD multipleTraps = 0xC00002B5;
    const auto code = static_cast<DWORD>(status);
    return (code >= EXCEPTION_FLT_DENORMAL_OPERAND && code <= EXCEPTION_FLT_UNDERFLOW) || code == multipleFaults ||
           code == multipleTraps;
}
