#include "utility/platform/FloatingPoint.h"

#include <cstdint>
#include <xmmintrin.h>

namespace utility::platform
{

namespace
{

struct MaskBit
{
    unsigned int control;
    unsigned int sse; // in MXCSR; the x87 control word has the same bit seven places lower
};

constexpr MaskBit maskBits[] = {
    {_EM_INEXACT, 0x1000},   {_EM_UNDERFLOW, 0x800}, {_EM_OVERFLOW, 0x400},
    {_EM_ZERODIVIDE, 0x200}, {_EM_INVALID, 0x80},    {_EM_DENORMAL, 0x100},
};

constexpr unsigned int sseMasks = 0x1F80;
constexpr unsigned int sseStatus = 0x3F;
constexpr unsigned int sseRoundingShift = 5; // from _MCW_RC to MXCSR
constexpr unsigned int x87RoundingShift = 2; // from _MCW_RC to the x87 control word
constexpr unsigned int x87MaskShift = 7;     // from the masks in MXCSR to those of the x87 control word

unsigned int ControlOf(unsigned int mxcsr)
{
    unsigned int control = mxcsr >> sseRoundingShift & _MCW_RC;
    for (const MaskBit& bit : maskBits)
    {
        if (mxcsr & bit.sse)
            control |= bit.control;
    }
    return control;
}

void ClearX87Status() { asm volatile("fnclex"); }

}

unsigned int FloatingControl(unsigned int value, unsigned int mask) noexcept
{
    mask &= _MCW_EM | _MCW_RC;
    mask &= value | ~_EM_DENORMAL;
    const unsigned int mxcsr = _mm_getcsr();
    const unsigned int control = (ControlOf(mxcsr) & ~mask) | (value & mask);
    if (mask == 0)
        return control;

    unsigned int masks = 0;
    for (const MaskBit& bit : maskBits)
    {
        if (control & bit.control)
            masks |= bit.sse;
    }
    const unsigned int rounding = control & _MCW_RC;
    // A pending status flag would trap in the moment its condition is unmasked.
    ClearX87Status();
    std::uint16_t x87 = 0;
    asm volatile("fnstcw %0" : "=m"(x87));
    x87 = static_cast<std::uint16_t>((x87 & ~(sseMasks >> x87MaskShift) & ~(_MCW_RC << x87RoundingShift)) |
                                     masks >> x87MaskShift | rounding << x87RoundingShift);
    asm volatile("fldcw %0" : : "m"(x87));
    _mm_setcsr((mxcsr & ~sseMasks & ~sseStatus & ~(_MCW_RC << sseRoundingShift)) | masks |
               rounding << sseRoundingShift);
    return control;
}

void ClearFloatingStatus() noexcept
{
    ClearX87Status();
    _mm_setcsr(_mm_getcsr() & ~sseStatus);
}

void ResetFloatingPoint() noexcept
{
    asm volatile("fninit");
    _mm_setcsr(sseMasks);
}

}
