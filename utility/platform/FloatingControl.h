#pragma once

// The bits of the floating-point control word, as the Windows runtime has them: what is masked, and the rounding.

#ifdef _WIN32

#include <float.h>

#else

inline constexpr unsigned int _MCW_EM = 0x8001F;      ///< all bits of masks
inline constexpr unsigned int _EM_INEXACT = 0x1;      ///< masks a result that is rounded
inline constexpr unsigned int _EM_UNDERFLOW = 0x2;    ///< masks a result that is too small
inline constexpr unsigned int _EM_OVERFLOW = 0x4;     ///< masks a result that is too large
inline constexpr unsigned int _EM_ZERODIVIDE = 0x8;   ///< masks a division by zero
inline constexpr unsigned int _EM_INVALID = 0x10;     ///< masks an operation without a result
inline constexpr unsigned int _EM_DENORMAL = 0x80000; ///< masks an operand that is denormal
inline constexpr unsigned int _MCW_RC = 0x300;        ///< both bits of the rounding
inline constexpr unsigned int _RC_NEAR = 0x0;         ///< to the nearest, ties to even
inline constexpr unsigned int _RC_DOWN = 0x100;       ///< down
inline constexpr unsigned int _RC_UP = 0x200;         ///< up
inline constexpr unsigned int _RC_CHOP = 0x300;       ///< towards zero

#endif
