#pragma once

#include <cstdarg>
#include <string>

namespace utility::framework
{

/// Wide printf with the Windows meaning of every directive, on every system: `%s` and `%c` are wide and `%S`, `%hs`,
/// `%C`, `%hc` narrow (in the system's narrow encoding), `%ld` has 32 bits, `%I64d` and `%lld` have 64, `%p` is 16
/// upper-case hexadecimal digits. `%c` of 0 is a null character in the result. `%n` stores nothing. What is no
/// directive stands as it is.
std::wstring FormatWide(const wchar_t* format, std::va_list arguments);

}
