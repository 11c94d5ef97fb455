#pragma once

// Numbered strings, and wide text in a code page.
//
//     const std::wstring text = resource_string(8305);
//     assert(text == L"inch" && from_utf(text, 65001) == "inch"); // 65001 is UTF-8
//
// Any thread may call, once the library and the host have set up the chain of resource modules. Nothing is reported:
// what is missing or cannot be converted is an empty text.

#include "utility/framework/String.h"
#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <cstdint>
#include <string>

/// A numbered string as a framework string; empty if there is none.
class UTILITY_API CResourceString : public CStringW
{
public:
    /// Looked up along the chain of resource modules.
    explicit CResourceString(unsigned int id);
    /// Looked up in one module.
    CResourceString(HINSTANCE hModule, unsigned int id);
    /// A move is deliberately a copy: the source keeps its text.
    CResourceString(const CResourceString&) = default;
    CResourceString& operator=(const CResourceString&) = default;
};

/// The string with this number, from the first resource module of the chain that holds it.
[[nodiscard]] UTILITY_API std::wstring resource_string(unsigned int id);

/// The string with this number in one module.
[[nodiscard]] UTILITY_API std::wstring resource_string(HINSTANCE hModule, unsigned int id);

/// Text in a code page with its Windows number: 65001 is UTF-8, 0 the system's narrow encoding (the ANSI code page on
/// Windows, UTF-8 on Linux). Embedded nulls are converted like any character. Only the low 32 bits of `length`, in
/// characters, count.
[[nodiscard]] UTILITY_API std::string from_utf(const std::wstring& text, unsigned int codePage);
[[nodiscard]] UTILITY_API std::string from_utf(const wchar_t* text, std::uint64_t length, unsigned int codePage);
