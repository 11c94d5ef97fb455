#pragma once

#include "utility/platform/FloatingControl.h"

namespace utility::platform
{

/// Sets the bits of `mask` in the calling thread's floating-point control word to those of `value`, and gives the new
/// control word. The bits are those of the Windows runtime on every system, of which the exception masks and the
/// rounding count; _EM_DENORMAL can be set but not cleared. `FloatingControl(0, 0)` reads.
unsigned int FloatingControl(unsigned int value, unsigned int mask) noexcept;

/// Discards the calling thread's pending floating-point status flags.
void ClearFloatingStatus() noexcept;

/// Gives the calling thread the floating-point state of a new process.
void ResetFloatingPoint() noexcept;

}
