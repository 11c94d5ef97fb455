#pragma once

#include <cstdarg>
#include <string>

namespace utility::framework
{

/// Wide printf with the Windows meaning of every directive, on every system: `%s` and `%c` are wide and `%S`, `%hs`,
/// `%C`, `%hc` narrow (in the system's narrow encoding), `%ld` has 32 bits, `%I64d` and `%lld` have 64, `%p` is 16
/// upper-case hexadecimal digits. `%c` takes the number of a character, also of one beyond 16 bits, and of any other
/// number the low 16 bits; of 0 it is a null character in the result. `%Lf` takes a long double, and prints it as a
/// double. The decimal symbol is the point in every locale. Widths and precisions of texts count units of UTF-16, and a
/// character that a precision would cut in half is left out. `%n` stores nothing. What is no directive stands as it is.
std::wstring FormatWide(const wchar_t* format, std::va_list arguments);

}
