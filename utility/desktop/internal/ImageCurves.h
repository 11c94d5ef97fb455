#pragma once

// What the hot and the disabled images of a toolbar are made of: a curve for each channel, and a wash of one tint, as
// bright as the pixel. Pixels are blue, green, red and alpha in memory, which stays as it is.

#include "utility/platform/ImageTypes.h"
#include "utility/platform/ProcessorMethods.h"

#include <array>
#include <cstddef>

namespace utility::detail
{

/// The gamma curve, for one channel.
unsigned char ApplyGamma(unsigned char channel, double gamma);

/// What a curve makes of each value of a channel.
using ChannelTable = std::array<unsigned char, 256>;

ChannelTable GammaTable(double gamma);

struct Tint
{
    unsigned char red;
    unsigned char green;
    unsigned char blue;
};

/// Of a colour whose lowest byte is red.
constexpr Tint TintOf(DWORD colour)
{
    return {static_cast<unsigned char>(colour), static_cast<unsigned char>(colour >> 8),
            static_cast<unsigned char>(colour >> 16)};
}

/// The brightest pixel is the sum of three times 255.
inline constexpr unsigned brightest = 765;

/// A tint at the brightness of a pixel whose colours add up to `sum`, each channel by `curve(value)`.
template <class Curve>
tagRGBQUAD Washed(unsigned sum, const Tint& tint, Curve curve)
{
    // A little less than 1 / 765: white deliberately stays one step below the tint.
    const double brightness = sum * 0.00130718954248366;
    const auto channel = [&](unsigned char of)
    { return static_cast<unsigned char>(curve(static_cast<unsigned char>(static_cast<int>(of * brightness)))); };
    return {channel(tint.blue), channel(tint.green), channel(tint.red), 0};
}

/// What becomes of a pixel by the sum of its colours.
using WashTable = std::array<tagRGBQUAD, brightest + 1>;

WashTable WashesOf(const Tint& tint, double gamma);

// What these read and write is `count` pixels, at any alignment; source and destination are apart.
void ApplyTable(const ChannelTable& table, const std::byte* source, std::byte* destination, std::size_t count);
void ApplyTable(const WashTable& table, const std::byte* source, std::byte* destination, std::size_t count);

/// A way to do the first of them.
struct TableMethod : platform::ProcessorMethod
{
    void (*apply)(const ChannelTable& table, const std::byte* source, std::byte* destination, std::size_t count);
};

extern platform::ProcessorMethods<TableMethod> tableMethods;

}
