#pragma once

#include <boost/algorithm/string/replace.hpp>

#include <string>

namespace support
{

/// What XMLEncode gives, in the way in which one would write it: a pass for each character that is replaced.
inline std::wstring InSixPasses(const std::wstring& text, bool namedDegree)
{
    std::wstring encoded = boost::replace_all_copy(text, L"&", L"&amp;");
    encoded = boost::replace_all_copy(encoded, L"<", L"&lt;");
    encoded = boost::replace_all_copy(encoded, L">", L"&gt;");
    encoded = boost::replace_all_copy(encoded, L"'", L"&apos;");
    encoded = boost::replace_all_copy(encoded, L"\"", L"&quot;");
    return boost::replace_all_copy(encoded, L"\u00B0", namedDegree ? L"&deg;" : L"&#176;");
}

}
