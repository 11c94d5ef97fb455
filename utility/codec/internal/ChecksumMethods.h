#pragma once

// The ways to fold bytes into the register of a CyclicRedundancyCheck that are faster than its loop over single bytes,
// with the same results.

#include "utility/platform/ProcessorMethods.h"
#include "utility/platform/Types.h"

#include <cstddef>

namespace utility::detail
{

/// The polynomial of the check without its highest term, x to the 32nd. The highest bit stands for x to the 31st.
inline constexpr DWORD checksumPolynomial = 0x04C11DB7;

/// The register after another bit, which is 0.
constexpr DWORD TimesX(DWORD value) noexcept { return value << 1 ^ (value >> 31 != 0 ? checksumPolynomial : 0); }

/// The size of a block. A method folds no fewer bytes.
inline constexpr std::size_t checksumBlock = 16;

/// The register after these bytes. Nothing outside them is read.
using FoldChecksum = DWORD(DWORD value, const unsigned char* data, std::size_t count) noexcept;

struct ChecksumMethod : platform::ProcessorMethod
{
    FoldChecksum* fold;
};

extern platform::ProcessorMethods<ChecksumMethod> checksumMethods;

}
