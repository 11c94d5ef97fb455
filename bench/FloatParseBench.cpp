// Wide text to doubles: 200,000 different texts, so many that no branch predictor learns them.

#include "bench/RealFields.h"
#include "utility/numbers/FloatParse.h"

#include <benchmark/benchmark.h>
#include <fast_float/fast_float.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <random>
#include <sstream>
#include <string>
#include <unordered_set>
#include <vector>

namespace
{

constexpr std::size_t textCount = 200'000;

struct Texts
{
    std::vector<std::wstring> texts;
    long double sum = 0.0L;
    long double magnitude = 0.0L; ///< the sum of the absolute values
};

const Texts& Reals()
{
    static const Texts reals = []
    {
        Texts made;
        std::mt19937 random(20'000'005);
        std::unordered_set<std::string> known;
        while (known.size() < textCount)
        {
            const auto [text, isNew] = known.insert(NextReal(random));
            if (!isNew)
                continue;
            made.texts.emplace_back(text->begin(), text->end());
            const long double value = std::strtold(text->c_str(), nullptr);
            made.sum += value;
            made.magnitude += std::fabs(value);
        }
        return made;
    }();
    return reals;
}

double ByScanner(const std::wstring& text)
{
    double value = 0.0;
    QLMParseFloat1(text.c_str(), L".", value);
    return value;
}

double ByWcstod(const std::wstring& text)
{
    wchar_t* end;
    return std::wcstod(text.c_str(), &end);
}

double ByFastFloat(const std::wstring& text)
{
    char narrow[64];
    char* end = narrow;
    for (const wchar_t c : text)
        *end++ = static_cast<char>(c);
    double value = 0.0;
    fast_float::from_chars(narrow, end, value);
    return value;
}

double ByStream(const std::wstring& text)
{
    static std::wistringstream stream;
    stream.clear();
    stream.str(text);
    double value = 0.0;
    stream >> value;
    return value;
}

template <auto Read>
double Sum()
{
    double sum = 0.0;
    for (const std::wstring& text : Reals().texts)
        sum += Read(text);
    return sum;
}

/// Measures a way to read all texts. A way that misreads one is an error.
template <auto Read>
void ReadAll(benchmark::State& state)
{
    static const auto sum = static_cast<long double>(Sum<Read>());
    // Each value and each addition may be off by some units in the last place.
    if (!(std::fabs(sum - Reals().sum) <= Reals().magnitude * 1e-14L))
        return state.SkipWithError("another sum");
    for (auto _ : state)
        benchmark::DoNotOptimize(Sum<Read>());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(textCount));
}

BENCHMARK(ReadAll<ByScanner>)->Name("doubles from wide text/Utility");
BENCHMARK(ReadAll<ByWcstod>)->Name("doubles from wide text/wcstod");
BENCHMARK(ReadAll<ByFastFloat>)->Name("doubles from wide text/narrowed, fast_float");
BENCHMARK(ReadAll<ByStream>)->Name("doubles from wide text/wistream");

}
