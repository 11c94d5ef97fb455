#pragma once

#include <boost/algorithm/string/replace.hpp>

#include <string>

namespace support
{

/// What XMLEncode gives, a pass for each character that is replaced.
inline std::wstring InSixPasses(std::wstring text, bool namedDegree)
{
    boost::replace_all(text, L"&", L"&amp;");
    boost::replace_all(text, L"<", L"&lt;");
    boost::replace_all(text, L">", L"&gt;");
    boost::replace_all(text, L"'", L"&apos;");
    boost::replace_all(text, L"\"", L"&quot;");
    boost::replace_all(text, L"\u00B0", namedDegree ? L"&deg;" : L"&#176;");
    return text;
}

}
