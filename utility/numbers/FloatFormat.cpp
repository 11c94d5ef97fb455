#include "utility/numbers/FloatFormat.h"

#include "utility/numbers/internal/FixedDigits.h"
#include "utility/numbers/PowersOfTen.h"
#include "utility/platform/LoadOrder.h"
#include "utility/platform/Locale.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

namespace
{

constexpr int placesOfUnits[] = {4, 6, 6};

using namespace utility::platform;

constinit StaticPlace<const std::wstring> processSymbol;

void SetProcessSymbol() { processSymbol.Make(L"."); }

void DestroyProcessSymbol() { processSymbol.Destroy(); }

[[gnu::init_priority(decimalSymbolIsSet)]] LoadStep symbolStep(decimalSymbolIsSet, &SetProcessSymbol,
                                                               &DestroyProcessSymbol);

int dialogDecimalPlaces = placesOfUnits[DISTANCE_UNITS_MM];

struct Layout
{
    bool showPlus;
    std::wstring_view symbol;
    bool trimZeros;
    bool keepSymbol;
};

/// What all the formatters write: a number in a layout, with something behind it.
[[gnu::always_inline]] inline std::wstring Compose(double value, int decimals, const Layout& layout,
                                                   std::wstring_view behind = {})
{
    // Signs come as they like, so a branch would be a toss-up.
    const int isNegative = value < 0.0 ? 1 : 0;
    const auto signLength = static_cast<std::size_t>(isNegative | (layout.showPlus ? 1 : 0));
    const auto sign = static_cast<wchar_t>(L'+' + isNegative * (L'-' - L'+'));
    if (!std::isfinite(value)) [[unlikely]]
        return std::wstring(signLength, sign).append(std::isnan(value) ? L"nan" : L"inf").append(behind);

    utility::detail::FixedDigits digits(value, decimals);
    auto places = static_cast<std::size_t>(std::max(decimals, 0));
    if (layout.trimZeros)
    {
        digits.TrimFraction();
        places = digits.FractionLength();
    }
    const bool hasSymbol = layout.keepSymbol || (decimals != 0 && !(layout.trimZeros && places == 0));
    const std::wstring_view symbol = hasSymbol ? layout.symbol : std::wstring_view();

    const std::size_t length = signLength + digits.WholeLength() + symbol.size() + places + behind.size();
    // Inlined, as a call would put all of these into memory.
    const auto write = [&](wchar_t * at) __attribute__((always_inline))
    {
        *at = sign;
        at += signLength;
        digits.WriteWhole(at);
        at += digits.WholeLength();
        for (const wchar_t c : symbol)
            *at++ = c;
        digits.WriteFraction(at);
        std::fill(at + digits.FractionLength(), at + places, L'0');
        std::copy(behind.begin(), behind.end(), at + places);
    };
    // The usual text fits, with the room that the whole part takes, and the result is made of it at once.
    wchar_t array[128];
    if (length <= std::size(array) - utility::detail::FixedDigits::leastRoomForWhole) [[likely]]
    {
        write(array);
        return {array, length};
    }
    std::wstring text(length, L'0');
    write(text.data());
    return text;
}

/// A number by its mantissa and its power of ten.
struct Scientific
{
    double mantissa = 0.0;
    int exponent = 0;
};

Scientific Split(double value)
{
    if (value == 0.0 || std::isnan(value))
        return {};
    if (std::isinf(value))
        return {value, 0};
    // By way of a long double, as the systems' logarithms of a double differ in the last bit.
    const auto power = static_cast<double>(std::log10(std::fabs(static_cast<long double>(value))));
    if (std::fabs(value) >= 1.0)
    {
        const int exponent = static_cast<int>(power);
        return {value / pow10(exponent), exponent};
    }
    // Deliberately a multiplication here and a division above: the last bits of the mantissa depend on it.
    const int exponent = static_cast<int>(std::floor(power));
    return {pow10(-exponent) * value, exponent};
}

}

const std::wstring& GetDecimalSymbol() noexcept { return *processSymbol; }

void SetDecimalSymbol(DWORD localeId)
{
    // The answer is deliberately dropped: no locale changes the symbol.
    wchar_t symbol[10];
    utility::platform::Locale().DecimalSymbol(localeId, nullptr, 0);
    utility::platform::Locale().DecimalSymbol(localeId, symbol, 10);
}

// Deliberately empty: nobody changes the symbol.
void SetDecimalSymbol(const wchar_t*) {}

int DialogDecimalPlaces() noexcept { return dialogDecimalPlaces; }

int DialogDecimalPlaces(DISTANCE_UNITS units) noexcept { return placesOfUnits[units]; }

void SetDialogDecimalPlaces(int places) noexcept { dialogDecimalPlaces = places; }

std::wstring to_wstring(double value, int decimals, bool showPlus, const std::wstring& decimalSymbol, bool trimZeros,
                        bool keepSymbol)
{
    return Compose(value, decimals, {showPlus, decimalSymbol, trimZeros, keepSymbol});
}

std::wstring to_wstring(float value, int decimals, bool showPlus, const std::wstring& decimalSymbol, bool trimZeros,
                        bool keepSymbol)
{
    return to_wstring(static_cast<double>(value), decimals, showPlus, decimalSymbol, trimZeros, keepSymbol);
}

std::wstring QLMFormatFloatE(double value, int decimals, bool showPlus, const std::wstring& decimalSymbol,
                             bool trimZeros, bool keepSymbol)
{
    // Deliberately not brought back into range: a mantissa that rounds up to 10 is written so.
    const Scientific number = Split(value);
    wchar_t exponent[5] = {L'E', number.exponent < 0 ? L'-' : L'+'};
    utility::detail::WriteDigits(exponent + 2, static_cast<std::uint64_t>(std::abs(number.exponent)), 3);
    return Compose(number.mantissa, decimals, {showPlus, decimalSymbol, trimZeros, keepSymbol}, {exponent, 5});
}

std::wstring QLMFormatFloatPrecise(double value, int decimals)
{
    // What rounds to a negative zero, and a NaN.
    const double tenthsOfLastPlace = -1.0 / pow10(-1 - decimals) * value;
    const bool isZero = !(value >= 0.0) & !(tenthsOfLastPlace >= 5.0); // without a branch
    return to_wstring(isZero ? 0.0 : value, decimals);
}
