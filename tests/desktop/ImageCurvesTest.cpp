#include "utility/desktop/internal/ImageCurves.h"

#include "tests/support/GuardedText.h"
#include "tests/support/MethodTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <tuple>

using utility::detail::ApplyGamma;
using utility::detail::ApplyTable;
using utility::detail::ChannelTable;
using utility::detail::GammaTable;
using utility::detail::tableMethods;
using utility::detail::Tint;
using utility::detail::WashesOf;
using utility::detail::WashTable;

namespace
{

constexpr double hotGamma = 1.2;
constexpr double disabledGamma = 0.6;

unsigned char CurveByPower(int channel, double gamma)
{
    return static_cast<unsigned char>(std::pow(channel * 0.00392156862745098, gamma) * 255.0);
}

/// What becomes of a channel of a disabled pixel, step by step.
unsigned char WashByPower(int first, int second, int third, unsigned char tint)
{
    const double brightness = (first + second + third) * 0.00130718954248366;
    const auto scaled = static_cast<int>(tint * brightness) & 0xFF;
    return CurveByPower(scaled, disabledGamma);
}

std::string HotByPower(std::string pixels)
{
    for (std::size_t i = 0; i < pixels.size(); ++i)
    {
        if (i % 4 != 3)
            pixels[i] = static_cast<char>(CurveByPower(static_cast<unsigned char>(pixels[i]), hotGamma));
    }
    return pixels;
}

std::string RandomPixels(std::size_t count)
{
    std::mt19937 random(24);
    std::string bytes(count * 4, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

/// What a table makes of pixels that lie against the end of readable memory, and writes against it.
template <class Table>
std::string Applied(void (*apply)(const Table&, const std::byte*, std::byte*, std::size_t), const Table& table,
                    const std::string& pixels)
{
    const support::GuardedText source(pixels, support::GuardedText::Touches::pageBehind);
    std::string result(pixels.size() + 2, '\x5A');
    apply(table, reinterpret_cast<const std::byte*>(source.First()), reinterpret_cast<std::byte*>(result.data() + 1),
          pixels.size() / 4);
    EXPECT_EQ(result.front(), '\x5A');
    EXPECT_EQ(result.back(), '\x5A');
    return result.substr(1, pixels.size());
}

unsigned char ByteOf(const std::string& text, std::size_t at) { return static_cast<unsigned char>(text[at]); }

}

class HotCurveTest : public testing::TestWithParam<std::pair<int, int>>
{
};

TEST_P(HotCurveTest, DarkensAChannel)
{
    const auto [channel, expected] = GetParam();
    EXPECT_EQ(ApplyGamma(static_cast<unsigned char>(channel), hotGamma), expected);
}

INSTANTIATE_TEST_SUITE_P(Channels, HotCurveTest,
                         testing::Values(std::pair(0, 0), std::pair(1, 0), std::pair(64, 48), std::pair(128, 111),
                                         std::pair(200, 190), std::pair(254, 253), std::pair(255, 255)));

struct WashedPixelCase
{
    unsigned char pixel[3];
    Tint tint;
    unsigned char expected[3];
};

class DisabledCurveTest : public testing::TestWithParam<WashedPixelCase>
{
};

TEST_P(DisabledCurveTest, ScalesTheTintByTheBrightnessOfThePixel)
{
    const auto& [pixel, tint, expected] = GetParam();
    const tagRGBQUAD washed = WashesOf(tint, disabledGamma)[pixel[0] + pixel[1] + pixel[2]];
    EXPECT_EQ(washed.rgbRed, expected[0]);
    EXPECT_EQ(washed.rgbGreen, expected[1]);
    EXPECT_EQ(washed.rgbBlue, expected[2]);
}

INSTANTIATE_TEST_SUITE_P(Pixels, DisabledCurveTest,
                         testing::Values(WashedPixelCase{{255, 255, 255}, {128, 128, 128}, {167, 167, 167}},
                                         WashedPixelCase{{0, 0, 0}, {128, 128, 128}, {0, 0, 0}},
                                         WashedPixelCase{{128, 128, 128}, {255, 0, 0}, {168, 0, 0}},
                                         WashedPixelCase{{100, 50, 30}, {192, 192, 192}, {90, 90, 90}},
                                         WashedPixelCase{{255, 255, 255}, {1, 2, 255}, {0, 9, 254}}));

TEST(DisabledCurve, WhiteUnderAWhiteTintDeliberatelyFallsOneShort)
{
    const tagRGBQUAD washed = WashesOf({255, 255, 255}, disabledGamma)[765];
    EXPECT_EQ(washed.rgbRed, 254);
    EXPECT_EQ(washed.rgbGreen, 254);
    EXPECT_EQ(washed.rgbBlue, 254);
}

TEST(HotTable, IsThePowerForEveryValue)
{
    const ChannelTable table = GammaTable(hotGamma);
    for (int channel = 0; channel < 256; ++channel)
        EXPECT_EQ(table[static_cast<std::size_t>(channel)], CurveByPower(channel, hotGamma)) << channel;
}

TEST(DisabledTable, IsThePowerForEverySumUnderEveryGreyAndManyTints)
{
    std::mt19937 random(7);
    for (unsigned step = 0; step < 300; ++step)
    {
        const auto channel = [&] { return static_cast<unsigned char>(step < 256 ? step : random()); };
        const Tint tint{channel(), channel(), channel()};
        const WashTable table = WashesOf(tint, disabledGamma);
        for (int sum = 0; sum <= 765; ++sum)
        {
            const int first = std::min(sum, 255);
            const int second = std::min(sum - first, 255);
            const int third = sum - first - second;
            const tagRGBQUAD& washed = table[static_cast<std::size_t>(sum)];
            const auto found = std::tuple(washed.rgbRed, washed.rgbGreen, washed.rgbBlue, washed.rgbReserved);
            const auto expected =
                std::tuple(WashByPower(first, second, third, tint.red), WashByPower(first, second, third, tint.green),
                           WashByPower(first, second, third, tint.blue), 0);
            ASSERT_EQ(found, expected) << sum << " under " << int{tint.red} << ' ' << int{tint.green};
        }
    }
}

TEST(TintTest, RedIsLowest)
{
    const Tint tint = utility::detail::TintOf(0xAA332211);
    EXPECT_EQ(std::tuple(tint.red, tint.green, tint.blue), std::tuple(0x11, 0x22, 0x33));
}

using TableMethodTest = support::MethodTest<tableMethods>;

TEST_P(TableMethodTest, EachChannelGoesThroughTheCurveAndAlphaStays)
{
    for (const std::size_t count : {0, 1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 1000})
        EXPECT_EQ(Applied<ChannelTable>(m_method->apply, GammaTable(hotGamma), RandomPixels(count)),
                  HotByPower(RandomPixels(count)))
            << count;
}

INSTANTIATE_TEST_SUITE_P(By, TableMethodTest, testing::Values("512 bits", "256 bits", "bytes"), support::NameOfMethod);

TEST(TableMethodsTest, FirstThatTheProcessorHasIsInUse) { support::ExpectFastestInUse(tableMethods); }

TEST(HotPixels, EachChannelGoesThroughTheCurveAndAlphaStays)
{
    const std::string pixels = RandomPixels(1000);
    EXPECT_EQ(Applied<ChannelTable>(ApplyTable, GammaTable(hotGamma), pixels), HotByPower(pixels));
}

TEST(DisabledPixels, EachBecomesTheWashOfItsSumAndAlphaStays)
{
    const Tint tint{200, 100, 50};
    for (const std::size_t count : {0, 1, 2, 3, 4, 5, 7, 8, 1001})
    {
        const std::string pixels = RandomPixels(count);
        std::string expected = pixels;
        for (std::size_t i = 0; i < pixels.size(); i += 4)
        {
            const auto channel = [&](unsigned char of) {
                return static_cast<char>(
                    WashByPower(ByteOf(pixels, i + 2), ByteOf(pixels, i + 1), ByteOf(pixels, i), of));
            };
            expected[i] = channel(tint.blue);
            expected[i + 1] = channel(tint.green);
            expected[i + 2] = channel(tint.red);
        }
        EXPECT_EQ(Applied<WashTable>(ApplyTable, WashesOf(tint, disabledGamma), pixels), expected) << count;
    }
}
