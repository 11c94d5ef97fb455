#pragma once

// The scanner of numbers, slow and step by step, with the functions of the standard library.

#include "utility/numbers/PowersOfTen.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cwchar>
#include <cwctype>

namespace support
{

struct ParsedNumber
{
    double value;
    const wchar_t* end;
};

inline bool StartsExponent(wchar_t c) { return c == L'D' || c == L'E' || c == L'd' || c == L'e'; }

inline ParsedNumber ModelParse(const wchar_t* at, const wchar_t* symbol)
{
    const auto isDigit = [](wchar_t c) { return std::iswdigit(static_cast<std::wint_t>(c)) != 0; };
    while (std::iswspace(static_cast<std::wint_t>(*at)) != 0)
        ++at;
    const std::size_t symbolLength = std::wcslen(symbol);
    if (*at == L'\0')
        return {0.0, at};

    double whole = 0.0;
    int sign = 0;
    bool hasSymbol = false;
    bool hasExponent = false;
    bool mustStop = false;
    for (; *at != L'\0'; ++at)
    {
        if (isDigit(*at))
            whole = whole * 10.0 + (*at - 48);
        else if ((*at == L'-' || *at == L'+') && sign == 0 && whole == 0.0)
            sign = *at == L'-' ? -1 : 1;
        else
            break;
    }
    if (*at != L'\0')
    {
        if (std::wcsncmp(at, symbol, symbolLength) == 0)
        {
            at += symbolLength;
            hasSymbol = true;
        }
        else if (StartsExponent(*at))
        {
            ++at;
            hasExponent = true;
        }
        else
            mustStop = true;
    }
    if (sign == -1)
        whole = -whole;
    if (mustStop)
        return {whole, at};

    if (hasSymbol)
    {
        double fraction = 0.0;
        int count = 0;
        for (; *at != L'\0' && isDigit(*at); ++at, ++count)
            fraction = fraction * 10.0 + (*at - 48);
        if (StartsExponent(*at))
        {
            ++at;
            hasExponent = true;
        }
        else if (*at != L'\0')
            mustStop = true;
        double quotient = fraction / pow10(count);
        if (sign == -1)
            quotient = -quotient;
        whole += quotient;
        if (mustStop)
            return {whole, at};
    }
    if (hasExponent)
    {
        wchar_t* end = nullptr;
        const int error = errno;
        const long exponent = std::wcstol(at, &end, 10);
        errno = error;
        whole *= pow10(static_cast<int>(std::clamp<long>(exponent, INT_MIN, INT_MAX)));
        at = end;
    }
    return {whole, at};
}

}
