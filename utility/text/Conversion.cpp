#include "utility/text/Conversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <typeinfo>

namespace tstd::convert_impl
{

namespace
{

using Facet = std::codecvt<wchar_t, char, std::mbstate_t>;

const Facet& FacetOf(const std::locale& locale) { return std::use_facet<Facet>(locale); }

/// The result of an operation of the facet, which gets room for so many characters.
template <class Result, class Text, class Operation>
Result Converted(const Text& text, std::size_t room, Operation operation)
{
    Result result(room, static_cast<typename Result::value_type>(' '));
    std::mbstate_t state{};
    typename Text::const_pointer next = nullptr;
    typename Result::pointer end = nullptr;
    const auto outcome =
        operation(state, text.data(), text.data() + text.size(), next, result.data(), result.data() + room, end);
    // A facet may say ok of a text that ends within a character, and keep the begin of that in the state.
    if (outcome != Facet::ok || std::mbsinit(&state) == 0)
        throw std::bad_cast();
    result.resize(static_cast<std::size_t>(end - result.data()));
    return result;
}

}

std::wstring converter<wchar_t>::convert(const std::string& text, const std::locale& locale)
{
    if (text.empty())
        return {};
    const Facet& facet = FacetOf(locale);
    return Converted<std::wstring>(text, static_cast<std::size_t>(facet.max_length()) + text.size(),
                                   [&facet](auto&&... arguments) { return facet.in(arguments...); });
}

namespace
{

std::string Narrow(const std::wstring& text, const Facet& facet)
{
    return Converted<std::string>(text, static_cast<std::size_t>(facet.max_length()) * text.size(),
                                  [&facet](auto&&... arguments) { return facet.out(arguments...); });
}

bool IsTag(wchar_t c) { return static_cast<std::uint32_t>(c) >> 7 == 0xE0000 >> 7; }

}

std::string converter<char>::convert(const std::wstring& text, const std::locale& locale)
{
    if (text.empty())
        return {};
    const Facet& facet = FacetOf(locale);
    // Where a locale has no tags, the GNU C library leaves them out, and ends the process where there is nothing else.
    const auto tag = std::ranges::find_if(text, IsTag);
    if (tag != text.end() && Narrow({L'a', *tag}, facet) == "a")
        throw std::bad_cast();
    return Narrow(text, facet);
}

}
