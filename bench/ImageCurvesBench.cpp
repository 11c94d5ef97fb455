// A strip of 64 images of 24 pixels, of which every pixel is another: its hot and its disabled state, by tables, and by
// calling pow for each channel.

#include "utility/desktop/internal/ImageCurves.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

namespace
{

using utility::detail::Tint;

constexpr std::size_t pixels = std::size_t{64} * 24 * 24;
constexpr double hotGamma = 1.2;
constexpr double disabledGamma = 0.6;
constexpr Tint tint = {192, 180, 170};

using Bytes = std::vector<std::byte>;

const Bytes& Strip()
{
    static const Bytes strip = []
    {
        Bytes bytes(pixels * sizeof(tagRGBQUAD));
        std::mt19937 random(24);
        for (std::byte& byte : bytes)
            byte = static_cast<std::byte>(random());
        return bytes;
    }();
    return strip;
}

void HotByTable(const std::byte* source, std::byte* destination)
{
    utility::detail::ApplyTable(utility::detail::GammaTable(hotGamma), source, destination, pixels);
}

void HotByPow(const std::byte* source, std::byte* destination)
{
    for (std::size_t i = 0; i < pixels * 4; ++i)
    {
        const auto channel = std::to_integer<unsigned char>(source[i]);
        destination[i] = static_cast<std::byte>(i % 4 == 3 ? channel : utility::detail::ApplyGamma(channel, hotGamma));
    }
}

void DisabledByTable(const std::byte* source, std::byte* destination)
{
    utility::detail::ApplyTable(utility::detail::WashesOf(tint, disabledGamma), source, destination, pixels);
}

void DisabledByPow(const std::byte* source, std::byte* destination)
{
    for (std::size_t i = 0; i < pixels * 4; i += 4)
    {
        const auto sum = std::to_integer<unsigned>(source[i]) + std::to_integer<unsigned>(source[i + 1]) +
                         std::to_integer<unsigned>(source[i + 2]);
        const tagRGBQUAD washed = utility::detail::Washed(
            sum, tint, [](unsigned char value) { return utility::detail::ApplyGamma(value, disabledGamma); });
        destination[i] = std::byte{washed.rgbBlue};
        destination[i + 1] = std::byte{washed.rgbGreen};
        destination[i + 2] = std::byte{washed.rgbRed};
        destination[i + 3] = source[i + 3];
    }
}

template <auto Make, auto Reference>
void MakeState(benchmark::State& state)
{
    Bytes made(Strip().size());
    Bytes expected(Strip().size());
    Make(Strip().data(), made.data());
    Reference(Strip().data(), expected.data());
    if (made != expected)
        return state.SkipWithError("other pixels");
    for (auto _ : state)
    {
        Make(Strip().data(), made.data());
        benchmark::DoNotOptimize(made.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(pixels));
}

BENCHMARK(MakeState<HotByTable, HotByPow>)->Name("hot images/Utility");
BENCHMARK(MakeState<HotByPow, HotByPow>)->Name("hot images/pow");
BENCHMARK(MakeState<DisabledByTable, DisabledByPow>)->Name("disabled images/Utility");
BENCHMARK(MakeState<DisabledByPow, DisabledByPow>)->Name("disabled images/pow");

}
