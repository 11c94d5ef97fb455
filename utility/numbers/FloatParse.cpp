#include "utility/numbers/FloatParse.h"

#include "utility/numbers/FloatFormat.h"
#include "utility/numbers/PowersOfTen.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cwctype>
#include <limits>

namespace
{

// The usual text is ASCII. What is beyond is for the system to judge, and out of line: the usual path calls nothing.

bool IsAscii(wchar_t c) { return static_cast<std::uint32_t>(c) < 128; }

bool IsAsciiDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

bool IsAsciiBlank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

bool IsDigit(wchar_t c) { return IsAscii(c) ? IsAsciiDigit(c) : std::iswdigit(static_cast<std::wint_t>(c)) != 0; }

[[gnu::noinline]] const wchar_t* SkipAllBlanks(const wchar_t* at)
{
    while (std::iswspace(static_cast<std::wint_t>(*at)) != 0)
        ++at;
    return at;
}

const wchar_t* SkipBlanks(const wchar_t* at)
{
    while (IsAsciiBlank(*at))
        ++at;
    return IsAscii(*at) ? at : SkipAllBlanks(at);
}

bool IsSign(wchar_t c) { return (c == L'-') | (c == L'+'); }

bool IsExponentMarker(wchar_t c) { return c == L'E' || c == L'e' || c == L'D' || c == L'd'; }

struct Digits
{
    double value;
    const wchar_t* end;
};

/// The digits as a whole number, each taken by its code: deliberately also those beyond ASCII.
[[gnu::noinline]] Digits AddUpDigits(const wchar_t* at)
{
    double number = 0.0;
    for (; IsDigit(*at); ++at)
        number = number * 10.0 + (*at - L'0');
    return {number, at};
}

/// The same, sooner: as long as a double is exact an integer gives what it gives.
[[gnu::always_inline]] inline Digits ReadDigits(const wchar_t* start)
{
    constexpr std::ptrdiff_t exactDigits = 15;
    const wchar_t* at = start;
    std::uint64_t number = 0;
    for (; IsAsciiDigit(*at); ++at)
        number = number * 10 + static_cast<std::uint64_t>(*at - L'0');
    if (at - start > exactDigits || !IsAscii(*at))
        return AddUpDigits(start);
    return {static_cast<double>(static_cast<std::int64_t>(number)), at};
}

/// Behind `symbol` if the text starts with it, null if not.
const wchar_t* Behind(const wchar_t* at, const wchar_t* symbol)
{
    for (; *symbol != L'\0'; ++symbol, ++at)
        if (*at != *symbol)
            return nullptr;
    return at;
}

struct Exponent
{
    int value;
    const wchar_t* end;
};

/// A decimal integer, cut to 32 bits; 0 and no step ahead if there is none.
[[gnu::noinline]] Exponent ReadExponent(const wchar_t* start)
{
    using Limits = std::numeric_limits<std::int32_t>;
    const wchar_t* end = start;
    const wchar_t* digit = SkipBlanks(start);
    const bool isNegative = *digit == L'-';
    digit += IsSign(*digit) ? 1 : 0;
    std::int64_t magnitude = 0;
    for (; IsAsciiDigit(*digit); end = ++digit)
        magnitude = std::min<std::int64_t>(magnitude * 10 + (*digit - L'0'), -std::int64_t{Limits::min()});
    return {static_cast<int>(isNegative ? -magnitude : std::min<std::int64_t>(magnitude, Limits::max())), end};
}

}

const wchar_t* QLMParseFloat1(const wchar_t* text, const wchar_t* decimalSymbol, double& value) noexcept
{
    if (text == nullptr || decimalSymbol == nullptr)
        return text;

    // Signs come as they like: what depends on them is computed, without a branch.
    const wchar_t* const start = SkipBlanks(text);
    const bool hasSign = IsSign(*start);
    bool isNegative = *start == L'-';
    Digits whole = ReadDigits(start + (hasSign ? 1 : 0));
    // Deliberately also behind leading zeros.
    if (IsSign(*whole.end) && !hasSign && whole.value == 0.0)
    {
        isNegative = *whole.end == L'-';
        whole = ReadDigits(whole.end + 1);
    }
    static constexpr double factors[] = {1.0, -1.0};
    const double sign = factors[isNegative ? 1 : 0];
    double number = whole.value * sign;
    const wchar_t* at = whole.end;

    if (*at != L'\0')
        if (const wchar_t* const fractionStart = Behind(at, decimalSymbol))
        {
            const Digits fraction = ReadDigits(fractionStart);
            at = fraction.end;
            number += fraction.value / pow10(static_cast<int>(at - fractionStart)) * sign;
        }
    if (IsExponentMarker(*at))
    {
        const Exponent exponent = ReadExponent(at + 1);
        number *= pow10(exponent.value);
        at = exponent.end;
    }
    value = number;
    return at;
}

bool QLMParseFloat(const wchar_t* text, const wchar_t* decimalSymbol, double& value) noexcept
{
    return *QLMParseFloat1(text, decimalSymbol, value) == L'\0';
}

bool QLMParseFloat(const wchar_t* text, double& value) noexcept { return *QLMParseFloat(text, L'\0', value) == L'\0'; }

const wchar_t* QLMParseFloat(const wchar_t* text, wchar_t, double& value) noexcept
{
    return SkipBlanks(QLMParseFloat1(text, GetDecimalSymbol().c_str(), value));
}
