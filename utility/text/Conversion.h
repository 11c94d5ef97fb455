#pragma once

// Text between narrow and wide, as a std::locale has it. Code pages are text/ResourceString.h's.
//
//     const std::locale locale = std::locale::classic();
//     assert(tstd::convert_impl::converter<wchar_t>::convert("abc", locale) == L"abc");
//     assert(tstd::convert_impl::converter<char>::convert(L"abc", locale) == "abc");
//
// Any thread may call. A text that the locale's facet std::codecvt<wchar_t, char, std::mbstate_t> does not convert as a
// whole, and in one piece, throws std::bad_cast; so does, deliberately, one of which the facet says that there is
// nothing to convert. Only the facet judges the text: that of GCC's library takes a character that is cut short by a
// null for one that goes on behind it, and does not tell.

#include "utility/platform/Export.h"

#include <locale>
#include <string>

namespace tstd::convert_impl
{

/// To texts of this character.
template <class Character>
struct converter;

/// From narrow to wide.
template <>
struct UTILITY_API converter<wchar_t>
{
    /// An empty text is not shown to the facet. The facet gets room for as many characters as there are bytes and, in
    /// all, those of its longest one more: deliberately not the same as the other way.
    [[nodiscard]] static std::wstring convert(const std::string& text, const std::locale& locale);
};

/// From wide to narrow.
template <>
struct UTILITY_API converter<char>
{
    /// An empty text is not shown to the facet. The facet gets room for its longest character for each one.
    [[nodiscard]] static std::string convert(const std::wstring& text, const std::locale& locale);
};

}
