#pragma once

// Looking into narrow text.
//
//     const char text[] = "..abc";
//     assert(strnistr(text, "ABC", 5) == text + 2);
//     assert(strnistr(text, "ABC", 4) == nullptr);
//
// Any thread may call. Nothing throws.

#include "utility/platform/Export.h"

#include <cstdint>

/// Where a pattern first stands whole in the first `length` characters of a text, null characters among them; null if
/// it does not. The case of letters is ignored, as the calling thread's C library has it. An empty pattern is at the
/// start, whatever the length. The caller may write through the result where the text may be written.
[[nodiscard]] UTILITY_API char* strnistr(const char* text, const char* pattern, std::uint64_t length);

/// The number of bytes, and not of characters, ahead of the null.
[[nodiscard]] UTILITY_API std::uint64_t MBCSByteCount(const char* text);
