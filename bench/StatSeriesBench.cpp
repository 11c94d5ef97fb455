// A series of doubles, and the loop that one would write for its smallest, its largest and its sum.

#include "utility/numbers/StatSeries.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace
{

const std::vector<double>& Values()
{
    static const std::vector<double> values = []
    {
        std::vector<double> made(100'000);
        std::mt19937_64 random(20'000'011);
        std::uniform_real_distribution<double> distribution(-1000.0, 1000.0);
        for (double& value : made)
            value = distribution(random);
        return made;
    }();
    return values;
}

struct Figures
{
    double minimum;
    double maximum;
    double sum;
    bool operator==(const Figures&) const = default;
};

Figures BySeries(const std::vector<double>& values)
{
    StatSeries series;
    for (const double value : values)
        series.AddValNotArray(value);
    return series.count == 0 ? Figures() : Figures{series.minimum, series.maximum, series.sum};
}

Figures ByLoop(const std::vector<double>& values)
{
    Figures figures = {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(), 0.0};
    for (const double value : values)
    {
        figures.minimum = std::min(figures.minimum, value);
        figures.maximum = std::max(figures.maximum, value);
        figures.sum += value;
    }
    return figures;
}

template <auto Add>
void AddAll(benchmark::State& state)
{
    if (Add(Values()) != ByLoop(Values()))
        return state.SkipWithError("other figures");
    for (auto _ : state)
        benchmark::DoNotOptimize(Add(Values()));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Values().size()));
}

BENCHMARK(AddAll<BySeries>)->Name("figures of a series/Utility");
BENCHMARK(AddAll<ByLoop>)->Name("figures of a series/plain loop");

}
