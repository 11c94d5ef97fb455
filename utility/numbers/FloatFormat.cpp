#include "utility/numbers/FloatFormat.h"

#include "utility/numbers/internal/FixedDigits.h"
#include "utility/numbers/PowersOfTen.h"
#include "utility/platform/LoadOrder.h"
#include "utility/platform/Locale.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <type_traits>

namespace
{

constexpr int placesOfUnits[] = {4, 6, 6};

using namespace utility::platform;
using utility::detail::FixedDigits;
using utility::detail::FixedNumber;
using utility::detail::Uint128;

constinit StaticPlace<const std::wstring> processSymbol;

void SetProcessSymbol() { processSymbol.Make(L"."); }

void DestroyProcessSymbol() { processSymbol.Destroy(); }

[[gnu::init_priority(decimalSymbolIsSet)]] LoadStep symbolStep(decimalSymbolIsSet, &SetProcessSymbol,
                                                               &DestroyProcessSymbol);

int dialogDecimalPlaces = placesOfUnits[DISTANCE_UNITS_MM];

template <class Char>
struct Layout
{
    bool showPlus;
    std::basic_string_view<Char> symbol;
    bool trimZeros;
    bool keepSymbol;
};

/// What stands for a number that is not finite.
struct NoNumber
{
    const char* name;

    static std::size_t WholeLength() { return 3; }
    static std::size_t FractionLength() { return 0; }
    static void TrimFraction() {}
    template <class Char>
    void WriteWhole(Char* to) const
    {
        std::copy_n(name, WholeLength(), to);
    }
    template <class Char>
    static void WriteFraction(Char*)
    {
    }
};

/// A number in a layout. Everything is inlined, as a call would put the number into memory.
template <class Char, class Number>
class FixedText
{
public:
    [[gnu::always_inline]] FixedText(double value, Number& number, int decimals, const Layout<Char>& layout)
        : m_number(number)
    {
        // Signs come as they like, so a branch would be a toss-up. The operator would raise an exception of a NaN, which
        // the thread may trap.
        const int isNegative = std::isless(value, 0.0) ? 1 : 0;
        m_signLength = static_cast<std::size_t>(isNegative | (layout.showPlus ? 1 : 0));
        m_sign = static_cast<Char>('+' + isNegative * ('-' - '+'));
        m_places = static_cast<std::size_t>(std::max(decimals, 0));
        if (layout.trimZeros)
        {
            number.TrimFraction();
            m_places = number.FractionLength();
        }
        if (layout.keepSymbol || (decimals != 0 && !(layout.trimZeros && m_places == 0)))
            m_symbol = layout.symbol;
        m_length = number.WholeLength() + m_symbol.size() + m_places;
    }

    std::size_t Length() const { return m_signLength + m_length; }

    /// To a place of this size, which is at least that of the text.
    [[gnu::always_inline]] void Write(Char* to, std::size_t size) const
    {
        if constexpr (std::is_same_v<Number, FixedNumber>)
        {
            if (IsShort()) [[likely]]
                return WriteShort(to, size, true);
        }
        *to = m_sign;
        to += m_signLength;
        m_number.WriteWhole(to);
        to = std::copy(m_symbol.begin(), m_symbol.end(), to + m_number.WholeLength());
        m_number.WriteFraction(to);
        std::fill(to + m_number.FractionLength(), to + m_places, Char{'0'});
    }

    /// Whether the text but for its sign has no more than sixteen characters, as the usual one has.
    [[gnu::always_inline]] bool IsShort() const
    {
        return m_length <= 16 && m_number.WholeLength() <= 7 &&
               (m_symbol.size() == 1 ? static_cast<Char>(static_cast<unsigned char>(m_symbol[0])) == m_symbol[0]
                                     : m_symbol.empty() && m_places == 0);
    }

    /// Writes a short text. Nothing depends on its length but where there is little room: it differs from text to text,
    /// so a branch would be mispredicted.
    /// @param isRestKept whether what is behind the text stays as it is
    static constexpr std::size_t shortLength = 1 + 16;
    [[gnu::always_inline]] void WriteShort(Char* to, std::size_t size, bool isRestKept) const
    {
        *to = m_sign;
        to += m_signLength;
        if (m_places > 8)
            return m_number.WriteManyPlaces(to, m_symbol[0]);
        const Uint128 bytes = m_number.Bytes(static_cast<unsigned char>(m_symbol.empty() ? 0 : m_symbol[0]));
        if (!isRestKept)
            utility::detail::WriteSixteen(to, bytes);
        else if (size >= shortLength) [[likely]]
            utility::detail::WriteFirst(to, bytes, m_length);
        else
            utility::detail::WriteBytes(to, bytes, m_length);
    }

private:
    const Number& m_number;
    Char m_sign;
    std::size_t m_signLength;
    std::basic_string_view<Char> m_symbol;
    std::size_t m_places;
    std::size_t m_length; ///< without the sign
};

/// Of the numbers that two integers do not hold. Not inlined: it takes a kilobyte and a half of the stack.
template <class Char, class Use>
[[gnu::noinline, gnu::cold]] auto ComposeLong(double value, int decimals, Layout<Char> layout, Use use)
{
    if (!std::isfinite(value))
    {
        NoNumber none{std::isnan(value) ? "nan" : "inf"};
        return use(FixedText<Char, NoNumber>(value, none, 0, {layout.showPlus, {}, false, false}));
    }
    FixedDigits digits(value, decimals);
    return use(FixedText<Char, FixedDigits>(value, digits, decimals, layout));
}

/// What all the formatters do: `use` is given a number in a layout.
template <class Char, class Use>
[[gnu::always_inline]] inline auto Compose(double value, int decimals, const Layout<Char>& layout, Use use)
{
    FixedNumber number;
    if (number.Holds(value, decimals)) [[likely]]
        return use(FixedText<Char, FixedNumber>(value, number, decimals, layout));
    return ComposeLong(value, decimals, layout, use);
}

/// A number with something behind it.
[[gnu::always_inline]] inline std::wstring MakeString(double value, int decimals, const Layout<wchar_t>& layout,
                                                      std::wstring_view behind = {})
{
    return Compose(
        value, decimals,
        layout, [behind]<class Number>(const FixedText<wchar_t, Number>& text) __attribute__((always_inline)) {
            const std::size_t length = text.Length() + behind.size();
            if constexpr (std::is_same_v<Number, FixedNumber>)
            {
                if (text.IsShort() && behind.empty()) [[likely]]
                {
                    constexpr std::size_t shortLength = FixedText<wchar_t, Number>::shortLength;
                    // What fits into the string itself allocates nothing.
                    if (length <= std::wstring().capacity())
                    {
                        wchar_t array[shortLength];
                        text.WriteShort(array, shortLength, false);
                        return std::wstring(array, length);
                    }
                    static constexpr wchar_t room[shortLength] = {};
                    std::wstring result(room, shortLength);
                    text.WriteShort(result.data(), shortLength, false);
                    result.resize(length);
                    return result;
                }
            }
            std::wstring result(length, L'0');
            text.Write(result.data(), length);
            behind.copy(result.data() + text.Length(), behind.size());
            return result;
        });
}

/// A text that fits its place.
template <class Char>
[[gnu::always_inline]] inline std::size_t WriteInto(std::span<Char> place, double value, int decimals,
                                                    const Layout<Char>& layout)
{
    return Compose(
        value, decimals, layout, [place](const auto& text) __attribute__((always_inline)) {
            const std::size_t length = text.Length();
            if (length <= place.size())
                text.Write(place.data(), place.size());
            return length;
        });
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
    return MakeString(value, decimals, {showPlus, decimalSymbol, trimZeros, keepSymbol});
}

std::wstring to_wstring(float value, int decimals, bool showPlus, const std::wstring& decimalSymbol, bool trimZeros,
                        bool keepSymbol)
{
    return to_wstring(static_cast<double>(value), decimals, showPlus, decimalSymbol, trimZeros, keepSymbol);
}

std::size_t FormatFixed(std::span<char> text, double value, int decimals, bool showPlus, std::string_view decimalSymbol,
                        bool trimZeros, bool keepSymbol) noexcept
{
    return WriteInto<char>(text, value, decimals, {showPlus, decimalSymbol, trimZeros, keepSymbol});
}

std::size_t FormatFixed(std::span<wchar_t> text, double value, int decimals, bool showPlus,
                        std::wstring_view decimalSymbol, bool trimZeros, bool keepSymbol) noexcept
{
    return WriteInto<wchar_t>(text, value, decimals, {showPlus, decimalSymbol, trimZeros, keepSymbol});
}

std::wstring QLMFormatFloatE(double value, int decimals, bool showPlus, const std::wstring& decimalSymbol,
                             bool trimZeros, bool keepSymbol)
{
    // Deliberately not brought back into range: a mantissa that rounds up to 10 is written so.
    const Scientific number = Split(value);
    wchar_t exponent[5] = {L'E', number.exponent < 0 ? L'-' : L'+'};
    utility::detail::WriteDigits(exponent + 2, static_cast<std::uint64_t>(std::abs(number.exponent)), 3);
    return MakeString(number.mantissa, decimals, {showPlus, decimalSymbol, trimZeros, keepSymbol}, {exponent, 5});
}

std::wstring QLMFormatFloatPrecise(double value, int decimals)
{
    // What rounds to a negative zero, and a NaN. Nothing here raises an exception of a NaN.
    const bool mayBeZero = decimals < 0 || !std::isgreaterequal(std::fabs(value), 1.0);
    if (mayBeZero && !std::isgreaterequal(value, 0.0))
    {
        const double tenthsOfLastPlace = -1.0 / pow10(-1 - decimals) * value;
        if (!std::isgreaterequal(tenthsOfLastPlace, 5.0))
            value = 0.0;
    }
    return to_wstring(value, decimals);
}
