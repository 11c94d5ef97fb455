#include "utility/desktop/internal/ImageCurves.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace utility::detail
{

namespace
{

constexpr std::size_t pixelSize = sizeof(tagRGBQUAD);
constexpr std::uint32_t alphaBits = 0xFF000000;

std::uint32_t PixelAt(const void* place)
{
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, place, sizeof(pixel));
    return pixel;
}

void PutPixel(std::byte* place, std::uint32_t pixel) { std::memcpy(place, &pixel, sizeof(pixel)); }

void ApplyTableByteByByte(const ChannelTable& table, const std::byte* source, std::byte* destination, std::size_t count)
{
    for (const std::byte* const end = source + count * pixelSize; source != end; source += pixelSize)
    {
        const std::uint32_t pixel = PixelAt(source);
        const std::uint32_t colours = static_cast<std::uint32_t>(table[pixel & 0xFF]) |
                                      static_cast<std::uint32_t>(table[pixel >> 8 & 0xFF]) << 8 |
                                      static_cast<std::uint32_t>(table[pixel >> 16 & 0xFF]) << 16;
        PutPixel(destination, colours | (pixel & alphaBits));
        destination += pixelSize;
    }
}

#if defined(__x86_64__)

bool HasTablesOfBytes() { return platform::HasMaskedVectors() && __builtin_cpu_supports("avx512vbmi"); }

bool HasTablesOfHalfBytes()
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2");
}

/// Sixteen pixels at a time: the processor looks up each of their bytes in a half of the table.
[[gnu::target("avx512vbmi,avx512bw")]] void ApplyTableOfBytes(const ChannelTable& table, const std::byte* source,
                                                              std::byte* destination, std::size_t count)
{
    constexpr std::size_t atOnce = 16;
    constexpr __mmask64 colours = 0x7777777777777777;
    const __m512i first = _mm512_loadu_si512(table.data());
    const __m512i second = _mm512_loadu_si512(table.data() + 64);
    const __m512i third = _mm512_loadu_si512(table.data() + 128);
    const __m512i fourth = _mm512_loadu_si512(table.data() + 192);
    for (std::size_t i = 0; i < count; i += atOnce)
    {
        const auto there = static_cast<__mmask16>(count - i < atOnce ? (1u << (count - i)) - 1 : 0xFFFF);
        const __m512i pixels = _mm512_maskz_loadu_epi32(there, source + i * pixelSize);
        const __m512i ifBelow128 = _mm512_permutex2var_epi8(first, pixels, second);
        const __m512i ifAbove = _mm512_permutex2var_epi8(third, pixels, fourth);
        const __m512i mapped = _mm512_mask_blend_epi8(_mm512_movepi8_mask(pixels), ifBelow128, ifAbove);
        _mm512_mask_storeu_epi32(destination + i * pixelSize, there, _mm512_mask_blend_epi8(colours, pixels, mapped));
    }
}

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i Twice(const unsigned char* sixteen)
{
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(sixteen)));
}

/// The values at 32 places of a table, of which this is a piece of that size. The processor looks up the lower half of
/// a place's byte, or gives 0 if the byte's highest bit is set; the bits of the upper half choose between two pieces.
template <std::size_t size>
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i ValuesAt(__m256i places, const unsigned char* piece)
{
    const __m256i highest = _mm256_set1_epi8('\x80');
    if constexpr (size == 32)
    {
        const __m256i lower = _mm256_or_si256(_mm256_and_si256(places, _mm256_set1_epi8(0xF)),
                                              _mm256_and_si256(_mm256_slli_epi16(places, 3), highest));
        return _mm256_or_si256(_mm256_shuffle_epi8(Twice(piece), lower),
                               _mm256_shuffle_epi8(Twice(piece + 16), _mm256_xor_si256(lower, highest)));
    }
    else
    {
        constexpr int belowTheHighest = std::countr_zero(256 / size);
        return _mm256_blendv_epi8(ValuesAt<size / 2>(places, piece), ValuesAt<size / 2>(places, piece + size / 2),
                                  _mm256_slli_epi16(places, belowTheHighest));
    }
}

/// Eight pixels at a time.
[[gnu::target("avx2")]] void ApplyTableOfHalfBytes(const ChannelTable& table, const std::byte* source,
                                                   std::byte* destination, std::size_t count)
{
    constexpr std::size_t atOnce = 8;
    const __m256i alpha = _mm256_set1_epi32(static_cast<int>(alphaBits));
    for (; count >= atOnce; count -= atOnce)
    {
        const __m256i pixels = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source));
        const __m256i mapped = _mm256_blendv_epi8(ValuesAt<256>(pixels, table.data()), pixels, alpha);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(destination), mapped);
        source += atOnce * pixelSize;
        destination += atOnce * pixelSize;
    }
    ApplyTableByteByByte(table, source, destination, count);
}

#endif

constexpr TableMethod methods[] = {
#if defined(__x86_64__)
    {{"512 bits", HasTablesOfBytes}, ApplyTableOfBytes},
    {{"256 bits", HasTablesOfHalfBytes}, ApplyTableOfHalfBytes},
#endif
    {{"bytes", platform::OnAnyProcessor}, ApplyTableByteByByte},
};

}

unsigned char ApplyGamma(unsigned char channel, double gamma)
{
    return static_cast<unsigned char>(std::pow(channel * 0.00392156862745098, gamma) * 255.0);
}

ChannelTable GammaTable(double gamma)
{
    ChannelTable table;
    for (std::size_t channel = 0; channel < table.size(); ++channel)
        table[channel] = ApplyGamma(static_cast<unsigned char>(channel), gamma);
    return table;
}

WashTable WashesOf(const Tint& tint, double gamma)
{
    const ChannelTable curve = GammaTable(gamma);
    WashTable table;
    for (unsigned sum = 0; sum < table.size(); ++sum)
        table[sum] = Washed(sum, tint, [&](unsigned char value) { return curve[value]; });
    return table;
}

constinit platform::ProcessorMethods<TableMethod> tableMethods(methods);
[[maybe_unused]] const bool isFastestTaken = tableMethods.TakeFastest();

void ApplyTable(const ChannelTable& table, const std::byte* source, std::byte* destination, std::size_t count)
{
    tableMethods.Used().apply(table, source, destination, count);
}

void ApplyTable(const WashTable& table, const std::byte* source, std::byte* destination, std::size_t count)
{
    std::size_t done = 0;
#if defined(__x86_64__)
    // The sums of four pixels at a time, of which the processor hands out two at a time.
    constexpr std::size_t atOnce = 4;
    const auto washed = [&table](std::uint64_t sum) { return static_cast<int>(PixelAt(&table[sum & 0xFFFF])); };
    for (; count - done >= atOnce; done += atOnce)
    {
        const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + done * pixelSize));
        const __m128i blueAndRed = _mm_madd_epi16(_mm_and_si128(pixels, _mm_set1_epi16(0xFF)), _mm_set1_epi16(1));
        const __m128i green = _mm_and_si128(_mm_srli_epi32(pixels, 8), _mm_set1_epi32(0xFF));
        const __m128i sums = _mm_add_epi32(blueAndRed, green);
        const auto first = static_cast<std::uint64_t>(_mm_cvtsi128_si64(sums));
        const auto second = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums)));
        const __m128i colours = _mm_set_epi32(washed(second >> 32), washed(second), washed(first >> 32), washed(first));
        const __m128i alpha = _mm_and_si128(pixels, _mm_set1_epi32(static_cast<int>(alphaBits)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(destination + done * pixelSize), _mm_or_si128(colours, alpha));
    }
#endif
    for (; done < count; ++done)
    {
        const std::uint32_t pixel = PixelAt(source + done * pixelSize);
        const std::size_t sum = (pixel & 0xFF) + (pixel >> 8 & 0xFF) + (pixel >> 16 & 0xFF);
        PutPixel(destination + done * pixelSize, PixelAt(&table[sum]) | (pixel & alphaBits));
    }
}

}
