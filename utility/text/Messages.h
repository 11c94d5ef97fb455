#pragma once

// Messages: a numbered string with arguments.
//
//     assert(LoadMessage(8302, 'x') == L"Invalid character (x) found whilst reading an integer number.");
//
// Any thread may call.

#include "utility/platform/Export.h"

#include <cstdarg>
#include <string>

/// The string with this number as a printf-style format, filled with the arguments. The directives have the Windows
/// meaning on every system: `%s` and `%c` are wide, `%ld` has 32 bits; the decimal symbol is the point. An empty text,
/// with no look at the arguments, if there is no such string. The text ends at its first null character and after 512
/// characters.
[[nodiscard]] UTILITY_API std::wstring LoadMessage(int messageId, ...);
[[nodiscard]] UTILITY_API std::wstring LoadMessageVA(int messageId, std::va_list arguments);
