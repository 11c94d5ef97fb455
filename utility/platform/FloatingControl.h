#pragma once

// The bits of the floating-point control word, as the Windows runtime has them: what is masked, and the rounding.

#ifdef _WIN32

#include <float.h>

#else

inline constexpr unsigned int _MCW_EM = 0x8001F;
inline constexpr unsigned int _EM_INEXACT = 0x1;
inline constexpr unsigned int _EM_UNDERFLOW = 0x2;
inline constexpr unsigned int _EM_OVERFLOW = 0x4;
inline constexpr unsigned int _EM_ZERODIVIDE = 0x8;
inline constexpr unsigned int _EM_INVALID = 0x10;
inline constexpr unsigned int _EM_DENORMAL = 0x80000;
inline constexpr unsigned int _MCW_RC = 0x300;
inline constexpr unsigned int _RC_NEAR = 0x0;
inline constexpr unsigned int _RC_DOWN = 0x100;
inline constexpr unsigned int _RC_UP = 0x200;
inline constexpr unsigned int _RC_CHOP = 0x300;

#endif
