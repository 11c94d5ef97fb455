#include "utility/platform/formats/BitmapResource.h"

#include "tests/support/GuardedText.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <initializer_list>
#include <string>

using utility::platform::formats::BitmapResource;
using utility::platform::formats::ReadBitmapResource;

namespace
{

/// What stands in the header of a bitmap.
struct Described
{
    std::uint32_t size = 40;
    std::int32_t width = 2;
    std::int32_t height = 1;
    std::uint16_t planes = 1;
    std::uint16_t depth = 32;
    std::uint32_t compression = 0;
    std::uint32_t unused[3] = {};
    std::uint32_t colours = 0;
    std::uint32_t important = 0;
};
static_assert(sizeof(Described) == 40);

std::string ResourceOf(const Described& header, std::size_t behind)
{
    std::string bytes(sizeof(header) + behind, '\0');
    std::memcpy(bytes.data(), &header, sizeof(header));
    for (std::size_t i = sizeof(header); i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i - sizeof(header));
    return bytes;
}

/// Where the pixels are behind the header, and how many bytes; "none" for what is no bitmap.
std::string Read(const std::string& bytes)
{
    const support::GuardedText guarded(bytes, support::GuardedText::Touches::pageBehind);
    const auto all = std::as_bytes(std::span(guarded.First(), bytes.size()));
    const auto bitmap = ReadBitmapResource(all);
    if (!bitmap)
        return "none";
    return std::to_string(bitmap->width) + " x " + std::to_string(bitmap->height) + ": " +
           std::to_string(bitmap->bits.size()) + " at " + std::to_string(bitmap->bits.data() - all.data() - 40);
}

}

TEST(BitmapResourceTest, PixelsStandBehindTheHeader)
{
    EXPECT_EQ(Read(ResourceOf({}, 8)), "2 x 1: 8 at 0");
    EXPECT_EQ(Read(ResourceOf({}, 100)), "2 x 1: 8 at 0");
    EXPECT_EQ(Read(ResourceOf({.height = -3}, 24)), "2 x 3: 24 at 0");
    EXPECT_EQ(Read(ResourceOf({.size = 108}, 68 + 8)), "2 x 1: 8 at 68");
}

TEST(BitmapResourceTest, RowsAreWholeUnitsOf32Bits)
{
    EXPECT_EQ(Read(ResourceOf({.width = 3, .height = 2, .depth = 24}, 24)), "3 x 2: 24 at 0");
    EXPECT_EQ(Read(ResourceOf({.width = 3, .height = 2, .depth = 16}, 16)), "3 x 2: 16 at 0");
    EXPECT_EQ(Read(ResourceOf({.width = 33, .depth = 1}, 16)), "33 x 1: 8 at 8");
}

TEST(BitmapResourceTest, ColoursStandAheadOfThePixels)
{
    EXPECT_EQ(Read(ResourceOf({.depth = 8}, 1028)), "2 x 1: 4 at 1024");
    EXPECT_EQ(Read(ResourceOf({.depth = 4}, 68)), "2 x 1: 4 at 64");
    EXPECT_EQ(Read(ResourceOf({.depth = 8, .colours = 3}, 16)), "2 x 1: 4 at 12");
    EXPECT_EQ(Read(ResourceOf({.colours = 2}, 16)), "2 x 1: 8 at 8");
}

TEST(BitmapResourceTest, MasksStandAheadOfThePixelsWhereTheHeaderDoesNotHaveThem)
{
    EXPECT_EQ(Read(ResourceOf({.compression = 3}, 20)), "2 x 1: 8 at 12");
    EXPECT_EQ(Read(ResourceOf({.depth = 16, .compression = 3}, 16)), "2 x 1: 4 at 12");
    EXPECT_EQ(Read(ResourceOf({.size = 108, .compression = 3}, 76)), "2 x 1: 8 at 68");
    EXPECT_EQ(Read(ResourceOf({.depth = 24, .compression = 3}, 76)), "none");
}

TEST(BitmapResourceTest, WhatIsCompressedOrNotKnownIsNotRead)
{
    for (const std::uint32_t compression : {1u, 2u, 4u, 5u, 0xFFFFFFFFu})
        EXPECT_EQ(Read(ResourceOf({.compression = compression}, 2000)), "none");
    for (const std::uint16_t depth : std::initializer_list<std::uint16_t>{0, 2, 15, 31, 33, 64, 0xFFFF})
        EXPECT_EQ(Read(ResourceOf({.depth = depth}, 2000)), "none") << depth;
    for (const std::uint32_t size : {0u, 12u, 39u, 0xFFFFFFFFu})
        EXPECT_EQ(Read(ResourceOf({.size = size}, 2000)), "none") << size;
}

TEST(BitmapResourceTest, SizesThatLieAreRefused)
{
    for (const std::int32_t width : {0, -1, INT_MIN, INT_MAX, 3})
        EXPECT_EQ(Read(ResourceOf({.width = width}, 8)), "none") << width;
    for (const std::int32_t height : {0, INT_MIN, INT_MAX, 2, -2})
        EXPECT_EQ(Read(ResourceOf({.height = height}, 8)), "none") << height;
    EXPECT_EQ(Read(ResourceOf({.width = INT_MAX, .height = INT_MAX}, 8)), "none");
    EXPECT_EQ(Read(ResourceOf({.colours = 0xFFFFFFFF}, 8)), "none");
}

TEST(BitmapResourceTest, CutAtEveryByteItIsNone)
{
    const std::string whole = ResourceOf({.width = 3, .height = 2, .depth = 8, .colours = 4}, 24);
    ASSERT_EQ(Read(whole), "3 x 2: 8 at 16");
    for (std::size_t size = 1; size < whole.size(); ++size)
        EXPECT_EQ(Read(whole.substr(0, size)), "none") << size;
}
