#pragma once

// The reader of lengths, slow and step by step, with the functions of the standard library, for units in English.

#include "tests/support/FloatParseModel.h"

#include <array>
#include <cstddef>
#include <cwctype>
#include <locale>
#include <string>

namespace support
{

struct ParsedDistance
{
    double value;
    bool isWhole;
};

inline bool IsSameWord(const std::wstring& one, const std::wstring& other)
{
    const std::locale locale;
    bool isSame = one.size() == other.size();
    for (std::size_t at = 0; isSame && at < one.size(); ++at)
        isSame = std::toupper(one[at], locale) == std::toupper(other[at], locale);
    return isSame;
}

inline ParsedDistance ModelParseDistance(const std::wstring& text, double scale)
{
    static const std::array<std::wstring, 6> descriptions = {L"mm", L"mm", L"inch", L"inches", L"metre", L"metres"};
    const auto isBlank = [](wchar_t c) { return std::iswspace(static_cast<std::wint_t>(c)) != 0; };
    const ParsedNumber number = ModelParse(text.c_str(), L".");
    auto at = static_cast<std::size_t>(number.end - text.c_str());
    while (at < text.size() && isBlank(text[at]))
        ++at;
    if (at < text.size() && std::iswalpha(static_cast<std::wint_t>(text[at])) != 0)
    {
        const std::wstring rest = text.substr(at);
        for (const std::wstring& description : descriptions)
        {
            if (!IsSameWord(rest, description))
            {
                at += description.size();
                break;
            }
        }
        while (at < text.size() && isBlank(text[at]))
            ++at;
    }
    return {number.value * scale, at == text.size()};
}

}
