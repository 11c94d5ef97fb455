// Doubles to text with a fixed number of places: wide strings, which the peers' texts become too, and narrow and wide
// text in memory that is there. Trimming is done for the peers by hand. What costs them nothing extra is given to them: a
// format in the source text, parsed once.

#include "bench/AllocationCount.h"
#include "utility/numbers/FloatFormat.h"

#include <benchmark/benchmark.h>
#include <boost/format.hpp>
#include <fmt/compile.h>
#include <fmt/xchar.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cwchar>
#include <iterator>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace
{

/// Coordinates of either sign with one to six digits ahead of the point, so many that no branch predictor learns them.
const std::vector<double>& Values()
{
    static const std::vector<double> values = []
    {
        std::vector<double> made(200'000);
        std::mt19937_64 random(20'000'003);
        for (double& value : made)
        {
            const double fraction = static_cast<double>(static_cast<std::int64_t>(random())) * 0x1p-63;
            value = fraction * std::pow(10.0, static_cast<int>(1 + random() % 6));
        }
        return made;
    }();
    return values;
}

template <class Char>
std::size_t TrimmedLength(const Char* text, std::size_t length)
{
    if (std::char_traits<Char>::find(text, length, Char{'.'}) == nullptr)
        return length;
    while (text[length - 1] == Char{'0'})
        --length;
    return text[length - 1] == Char{'.'} ? length - 1 : length;
}

template <int places, bool trim>
struct Peers
{
    static std::wstring Wide(std::wstring text)
    {
        if (trim)
            text.resize(TrimmedLength(text.data(), text.size()));
        return text;
    }

    static std::wstring ByToWString(double value)
    {
        return to_wstring(value, places, false, GetDecimalSymbol(), trim, false);
    }

    static std::wstring ByPrecise(double value) { return QLMFormatFloatPrecise(value, places); }

    /// What `precise` writes: never a negative zero.
    static std::wstring ByToCharsUnsignedZero(double value)
    {
        std::wstring text = ByToChars(value);
        if (text.find_first_of(L"123456789") == std::wstring::npos && text.front() == L'-')
            text.erase(0, 1);
        return text;
    }

    static std::wstring BySwprintf(double value)
    {
        static constexpr wchar_t format[] = {L'%', L'.', L'0' + places, L'f', L'\0'};
        wchar_t text[64];
        const auto length = static_cast<std::size_t>(std::swprintf(text, std::size(text), format, value));
        return {text, trim ? TrimmedLength(text, length) : length};
    }

    static std::wstring ByToChars(double value)
    {
        char text[64];
        const char* const end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, places).ptr;
        const auto length = static_cast<std::size_t>(end - text);
        return {text, text + (trim ? TrimmedLength(text, length) : length)};
    }

    static std::wstring ByFmt(double value) { return Wide(fmt::format(L"{:.{}f}", value, places)); }

    static std::wstring ByCompiledFmt(double value)
    {
        return Wide(fmt::format(FMT_COMPILE(L"{:.{}f}"), value, places));
    }

    static std::wstring ByBoost(double value)
    {
        static boost::wformat format(L"%." + std::to_wstring(places) + L"f");
        return Wide((format % value).str());
    }
};

constexpr double anyAllocations = std::numeric_limits<double>::infinity();

/// Tells of the texts that were written. More allocations for one of them are an error.
void CountTexts(benchmark::State& state, std::uint64_t allocations, double mostForOne)
{
    const auto texts = state.iterations() * static_cast<std::int64_t>(Values().size());
    const double forOne = static_cast<double>(allocations) / static_cast<double>(texts);
    if (forOne > mostForOne)
        return state.SkipWithError("too many allocations");
    state.counters["allocations"] = forOne;
    state.SetItemsProcessed(texts);
}

/// Measures a way to write all values. One that writes another text is an error, and so is one of the
/// library's that allocates more than once.
template <auto Write, auto Expect, bool isOurs = false>
void WriteAll(benchmark::State& state)
{
    static const bool isRight = []
    {
        for (const double value : Values())
            if (Write(value) != Expect(value))
                return false;
        return true;
    }();
    if (!isRight)
        return state.SkipWithError("another text");
    const std::uint64_t before = AllocationCount();
    for (auto _ : state)
        for (const double value : Values())
            benchmark::DoNotOptimize(Write(value));
    CountTexts(state, AllocationCount() - before, isOurs ? 1.0 : anyAllocations);
}

/// Ways to write into memory; the length of the text.
template <class Char, int places, bool trim>
struct IntoPlace
{
    using Place = std::span<Char, 64>;

    static std::size_t ByFormatFixed(Place place, double value)
    {
        static constexpr Char point[] = {'.'};
        return FormatFixed(place, value, places, false, {point, 1}, trim);
    }

    static std::size_t ByToChars(Place place, double value)
    {
        if constexpr (std::is_same_v<Char, char>)
        {
            const char* const end =
                std::to_chars(place.data(), place.data() + place.size(), value, std::chars_format::fixed, places).ptr;
            const auto length = static_cast<std::size_t>(end - place.data());
            return trim ? TrimmedLength(place.data(), length) : length;
        }
        else
        {
            std::array<char, 64> text;
            const std::size_t length = IntoPlace<char, places, trim>::ByToChars(text, value);
            std::copy_n(text.data(), length, place.data());
            return length;
        }
    }

    static std::size_t ByCompiledFmt(Place place, double value)
    {
        auto format = []
        {
            if constexpr (std::is_same_v<Char, char>)
                return FMT_COMPILE("{:.{}f}");
            else
                return FMT_COMPILE(L"{:.{}f}");
        }();
        const auto length =
            static_cast<std::size_t>(fmt::format_to(place.data(), format, value, places) - place.data());
        return trim ? TrimmedLength(place.data(), length) : length;
    }
};

/// Measures a way to write all values into memory. The library's may not allocate.
template <class Char, auto Write, auto Expect, bool isOurs = false>
void WriteAllInto(benchmark::State& state)
{
    std::array<Char, 64> text;
    static const bool isRight = []
    {
        std::array<Char, 64> written;
        std::array<Char, 64> expected;
        for (const double value : Values())
            if (std::basic_string_view<Char>(written.data(), Write(written, value)) !=
                std::basic_string_view<Char>(expected.data(), Expect(expected, value)))
                return false;
        return true;
    }();
    if (!isRight)
        return state.SkipWithError("another text");
    const std::uint64_t before = AllocationCount();
    for (auto _ : state)
    {
        for (const double value : Values())
        {
            benchmark::DoNotOptimize(Write(text, value));
            benchmark::DoNotOptimize(text);
        }
    }
    CountTexts(state, AllocationCount() - before, isOurs ? 0.0 : anyAllocations);
}

template <class Char, int places, bool trim>
bool RegisterInto()
{
    using P = IntoPlace<Char, places, trim>;
    const std::string what = std::string("doubles into ") + (sizeof(Char) == 1 ? "memory, " : "wide memory, ") +
                             std::to_string(places) + " places" + (trim ? ", trimmed" : "") + "/";
    const auto add = [&what](const char* who, benchmark::internal::Function* run)
    { benchmark::RegisterBenchmark((what + who).c_str(), run); };
    add("Utility", WriteAllInto<Char, P::ByFormatFixed, P::ByToChars, true>);
    add("to_chars", WriteAllInto<Char, P::ByToChars, P::ByToChars>);
    add("fmt, compiled", WriteAllInto<Char, P::ByCompiledFmt, P::ByToChars>);
    return true;
}

template <int places, bool trim>
bool Register()
{
    using P = Peers<places, trim>;
    const std::string what = "doubles to text, " + std::to_string(places) + " places" + (trim ? ", trimmed" : "") + "/";
    const auto add = [&what](const char* who, benchmark::internal::Function* run)
    { benchmark::RegisterBenchmark((what + who).c_str(), run); };
    add("Utility:to_wstring", WriteAll<P::ByToWString, P::ByToChars, true>);
    if constexpr (!trim)
        add("Utility:precise", WriteAll<P::ByPrecise, P::ByToCharsUnsignedZero, true>);
    add("swprintf", WriteAll<P::BySwprintf, P::ByToChars>);
    add("to_chars", WriteAll<P::ByToChars, P::ByToChars>);
    add("fmt", WriteAll<P::ByFmt, P::ByToChars>);
    add("fmt, compiled", WriteAll<P::ByCompiledFmt, P::ByToChars>);
    add("Boost.Format", WriteAll<P::ByBoost, P::ByToChars>);
    return RegisterInto<char, places, trim>() && RegisterInto<wchar_t, places, trim>();
}

[[maybe_unused]] const bool registered = Register<0, false>() && Register<3, false>() && Register<3, true>() &&
                                         Register<6, false>() && Register<6, true>() && Register<9, false>();

}
