// Text for XML, and the six passes that one would write for it.

#include "tests/support/XMLEncodeModel.h"
#include "utility/text/XMLEncode.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <random>
#include <string>

namespace
{

constexpr std::size_t length = 1'000'000;

/// Letters, and one in so many characters that is replaced; none with 0.
std::wstring TextWithOneIn(unsigned distance)
{
    std::mt19937 random(12);
    std::wstring text(length, L'\0');
    for (wchar_t& c : text)
        c = distance != 0 && random() % distance == 0 ? L"&<>'\"\u00B0"[random() % 6]
                                                      : static_cast<wchar_t>(L'a' + random() % 26);
    return text;
}

void OneInFiftyByUtility(benchmark::State& state)
{
    const std::wstring text = TextWithOneIn(50);
    if (XMLEncode(text, false) != support::InSixPasses(text, false))
        state.SkipWithError("the results differ");
    std::wstring given;
    for (auto _ : state)
    {
        state.PauseTiming();
        given = text;
        state.ResumeTiming();
        benchmark::DoNotOptimize(XMLEncode(std::move(given), false));
    }
}
BENCHMARK(OneInFiftyByUtility)->Name("XMLEncodeOneInFifty/Utility")->Unit(benchmark::kMicrosecond);

void OneInFiftyInSixPasses(benchmark::State& state)
{
    const std::wstring text = TextWithOneIn(50);
    for (auto _ : state)
        benchmark::DoNotOptimize(support::InSixPasses(text, false));
}
BENCHMARK(OneInFiftyInSixPasses)->Name("XMLEncodeOneInFifty/replace_all_copy")->Unit(benchmark::kMicrosecond);

void NoneByUtility(benchmark::State& state)
{
    std::wstring text = TextWithOneIn(0);
    for (auto _ : state)
    {
        text = XMLEncode(std::move(text), false);
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(NoneByUtility)->Name("XMLEncodeNone/Utility:moved")->Unit(benchmark::kMicrosecond);

void NoneOfACopyByUtility(benchmark::State& state)
{
    const std::wstring text = TextWithOneIn(0);
    for (auto _ : state)
        benchmark::DoNotOptimize(XMLEncode(text, false));
}
BENCHMARK(NoneOfACopyByUtility)->Name("XMLEncodeNone/Utility:copied")->Unit(benchmark::kMicrosecond);

void NoneByCopy(benchmark::State& state)
{
    const std::wstring text = TextWithOneIn(0);
    for (auto _ : state)
        benchmark::DoNotOptimize(std::wstring(text));
}
BENCHMARK(NoneByCopy)->Name("XMLEncodeNone/memcpy")->Unit(benchmark::kMicrosecond);

void NoneInSixPasses(benchmark::State& state)
{
    const std::wstring text = TextWithOneIn(0);
    for (auto _ : state)
        benchmark::DoNotOptimize(support::InSixPasses(text, false));
}
BENCHMARK(NoneInSixPasses)->Name("XMLEncodeNone/replace_all_copy")->Unit(benchmark::kMicrosecond);

}
