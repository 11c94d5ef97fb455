#include "utility/platform/Images.h"

#include "tests/support/StripModule.h"
#include "utility/guards/ResourcePtr.h"
#include "utility/platform/Error.h"
#include "utility/platform/Handles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <vector>

using support::NumberedResource;
using support::StripModule;
using utility::platform::BitmapBits;
using utility::platform::Handles;
using utility::platform::Images;

namespace
{

/// A list that ends with its scope.
struct OwnList
{
    HIMAGELIST handle;

    OwnList(int width, int height) : handle(Images().MakeList(width, height, ILC_COLOR32, 0, 0)) {}
    OwnList(const OwnList&) = delete;
    OwnList& operator=(const OwnList&) = delete;
    ~OwnList() { Images().DestroyList(handle); }
};

std::vector<int> BytesOf(const BitmapBits& bits)
{
    std::vector<int> bytes;
    for (const std::byte byte : bits.bytes)
        bytes.push_back(std::to_integer<int>(byte));
    return bytes;
}

}

TEST(ImagesTest, BitmapIsBlackAtFirstAndItsBitsCanBeWritten)
{
    const resource_ptr<HBITMAP> bitmap(Images().MakeBitmap(3, 2));
    BitmapBits bits;
    ASSERT_TRUE(Images().Describe(bitmap.get(), bits));
    EXPECT_EQ(bits.width, 3);
    EXPECT_EQ(bits.height, 2);
    EXPECT_EQ(BytesOf(bits), std::vector<int>(24, 0));
    std::ranges::fill(bits.bytes, std::byte{7});
    BitmapBits again;
    ASSERT_TRUE(Images().Describe(bitmap.get(), again));
    EXPECT_EQ(BytesOf(again), std::vector<int>(24, 7));
}

TEST(ImagesTest, BitmapThatIsDeletedIsNone)
{
    const HBITMAP bitmap = Images().MakeBitmap(1, 1);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_TRUE(Handles().DeleteObject(bitmap));
    EXPECT_FALSE(Handles().DeleteObject(bitmap));
    BitmapBits bits;
    EXPECT_FALSE(Images().Describe(bitmap, bits));
    EXPECT_FALSE(Images().Describe(nullptr, bits));
    EXPECT_EQ(bits.width, 0);
}

TEST(ImagesTest, BitmapNeedsASize)
{
    EXPECT_EQ(Images().MakeBitmap(0, 1), nullptr);
    EXPECT_EQ(Images().MakeBitmap(-1, 1), nullptr);
}

TEST(ImagesTest, BitmapForWhichThereIsNoMemoryIsNull) { EXPECT_EQ(Images().MakeBitmap(INT_MAX, INT_MAX), nullptr); }

TEST(ImagesTest, StripIsLoadedAsDeepAsItIs)
{
    const resource_ptr<HBITMAP> deep(Images().LoadStrip(StripModule(), NumberedResource(101)));
    BitmapBits bits;
    ASSERT_TRUE(Images().Describe(deep.get(), bits));
    EXPECT_EQ(bits.width, 4);
    EXPECT_EQ(bits.height, 2);
    ASSERT_EQ(bits.bytes.size(), 32u);
    // The lower row is the first in memory; a pixel is blue, green, red and alpha.
    const std::vector<int> bytes = BytesOf(bits);
    EXPECT_EQ((std::vector<int>(bytes.begin() + 12, bytes.begin() + 20)),
              (std::vector<int>{0x64, 0x32, 0x1E, 0x40, 0x1E, 0x32, 0x64, 0xFF}));
    const resource_ptr<HBITMAP> of24(Images().LoadStrip(StripModule(), NumberedResource(24)));
    ASSERT_TRUE(Images().Describe(of24.get(), bits));
    EXPECT_EQ(bits.bytes.size(), 24u);
    const resource_ptr<HBITMAP> of1(Images().LoadStrip(StripModule(), NumberedResource(1)));
    ASSERT_TRUE(Images().Describe(of1.get(), bits));
    EXPECT_EQ(BytesOf(bits), (std::vector<int>{0xA5, 0, 0, 0}));
}

TEST(ImagesTest, WhatIsNoBitmapOfAModuleIsNotLoaded)
{
    EXPECT_EQ(Images().LoadStrip(StripModule(), NumberedResource(999)), nullptr);
    EXPECT_EQ(Images().LoadStrip(StripModule(), NumberedResource(500)), nullptr);
    EXPECT_EQ(Images().LoadStrip(StripModule(), L"absent"), nullptr);
    EXPECT_EQ(Images().LoadStrip(nullptr, NumberedResource(101)), nullptr);
    // Number of a bitmap of the system's own.
    EXPECT_EQ(Images().LoadStrip(nullptr, NumberedResource(32754)), nullptr);
}

TEST(ImagesTest, ListCountsWhatIsAdded)
{
    const OwnList list(2, 2);
    const resource_ptr<HBITMAP> bitmap(Images().MakeBitmap(9, 2));
    EXPECT_EQ(Images().Count(list.handle), 0);
    EXPECT_EQ(Images().Add(list.handle, bitmap.get()), 0);
    EXPECT_EQ(Images().Add(list.handle, bitmap.get()), 4);
    EXPECT_EQ(Images().Count(list.handle), 8);
}

TEST(ImagesTest, ListGrowsAndKeepsItsImages)
{
    const OwnList list(4, 2);
    const resource_ptr<HBITMAP> bitmap(Images().MakeBitmap(4, 2));
    BitmapBits bits;
    ASSERT_TRUE(Images().Describe(bitmap.get(), bits));
    for (int i = 0; i < 100; ++i)
    {
        std::ranges::fill(bits.bytes, static_cast<std::byte>(i + 1));
        ASSERT_EQ(Images().Add(list.handle, bitmap.get()), i);
    }
    for (int i = 0; i < 100; ++i)
    {
        const utility::platform::ListImage image = Images().ImageOf(list.handle, i);
        ASSERT_EQ(image.width, 4);
        ASSERT_EQ(image.height, 2);
        EXPECT_EQ(support::PixelsOf(image), std::vector<DWORD>(8, 0x01010101u * static_cast<DWORD>(i + 1)));
    }
}

TEST(ImagesTest, NullIsNotAddedAndThereIsNothingInNoList)
{
    const OwnList list(2, 2);
    EXPECT_EQ(Images().Add(list.handle, nullptr), -1);
    const resource_ptr<HBITMAP> bitmap(Images().MakeBitmap(4, 2));
    EXPECT_EQ(Images().Add(nullptr, bitmap.get()), -1);
    EXPECT_EQ(Images().Count(list.handle), 0);
    EXPECT_EQ(Images().Count(nullptr), 0);
    EXPECT_FALSE(Images().DestroyList(nullptr));
    EXPECT_TRUE(Images().ImageOf(nullptr, 0).pixels.empty());
}
