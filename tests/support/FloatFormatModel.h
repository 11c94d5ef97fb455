#pragma once

// The formatters of numbers, slow and step by step: digits and the position of the point among them, then the text. The
// digits are those of the standard library. For finite values and, as that library has it, no negative number of
// places.

#include "utility/numbers/PowersOfTen.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

namespace support
{

/// Without leading zeros; `point` is where the point stands, counted from the first digit, and may be negative.
struct DigitString
{
    std::string digits;
    int point = 0;
    bool isNegative = false;
};

inline DigitString DigitsOf(double value, int decimals)
{
    std::vector<char> text(400 + static_cast<std::size_t>(decimals));
    char* const end =
        std::to_chars(text.data(), text.data() + text.size(), std::fabs(value), std::chars_format::fixed, decimals).ptr;
    DigitString result;
    result.digits.assign(text.data(), end);
    result.isNegative = value < 0.0;
    result.point = static_cast<int>(result.digits.find('.'));
    if (result.point == -1)
        result.point = static_cast<int>(result.digits.size());
    else
        result.digits.erase(static_cast<std::size_t>(result.point), 1);
    while (!result.digits.empty() && result.digits.front() == '0')
    {
        result.digits.erase(0, 1);
        --result.point;
    }
    return result;
}

inline std::wstring ModelFixed(double value, int decimals, bool showPlus, const std::wstring& symbol, bool trimZeros,
                               bool keepSymbol)
{
    const DigitString number = DigitsOf(value, decimals);
    std::wstring text;
    if (number.isNegative)
        text += L'-';
    else if (showPlus)
        text += L'+';
    const auto whole = static_cast<std::size_t>(std::max(number.point, 0));
    if (whole == 0)
        text += L'0';
    text.append(number.digits.begin(), number.digits.begin() + static_cast<std::ptrdiff_t>(whole));
    std::string fraction = number.digits.substr(whole);
    if (trimZeros)
        while (!fraction.empty() && fraction.back() == '0')
            fraction.pop_back();
    const bool hasSymbol = keepSymbol || (decimals != 0 && (!trimZeros || !fraction.empty()));
    if (!hasSymbol)
        return text;
    text += symbol;
    if (fraction.empty() && trimZeros)
        return text;
    text.append(static_cast<std::size_t>(std::max(std::min(-number.point, decimals), 0)), L'0');
    return text.append(fraction.begin(), fraction.end());
}

inline std::wstring ModelScientific(double value, int decimals, bool showPlus, const std::wstring& symbol,
                                    bool trimZeros, bool keepSymbol)
{
    double mantissa = 0.0;
    int exponent = 0;
    if (value != 0.0 && !std::isnan(value))
    {
        const auto power = static_cast<double>(std::log10(static_cast<long double>(std::fabs(value))));
        const bool isWhole = std::fabs(value) >= 1.0;
        exponent = static_cast<int>(isWhole ? std::trunc(power) : std::floor(power));
        mantissa = isWhole ? value / pow10(exponent) : pow10(-exponent) * value;
    }
    wchar_t text[16];
    std::swprintf(text, 16, L"E%+04d", exponent);
    if (std::isinf(mantissa))
        return std::wstring(mantissa < 0.0 ? L"-" : showPlus ? L"+" : L"") + L"inf" + text;
    return ModelFixed(mantissa, decimals, showPlus, symbol, trimZeros, keepSymbol) + text;
}

inline std::wstring ModelPrecise(double value, int decimals)
{
    if (!(value >= 0.0))
    {
        const double tenthsOfLastPlace = (-1.0 / pow10(-decimals - 1)) * value;
        if (!(tenthsOfLastPlace >= 5.0))
            value = 0.0;
    }
    return ModelFixed(value, decimals, false, L".", false, false);
}

}
