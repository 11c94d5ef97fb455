#include "utility/desktop/ZeloImageList.h"

#include "tests/support/ForwardingImages.h"
#include "tests/support/StripModule.h"
#include "utility/guards/ResourcePtr.h"
#include "utility/platform/Handles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using support::NumberedResource;
using support::PixelsOf;
using Pixels = std::vector<DWORD>;

namespace
{

constexpr DWORD anyTint = 0x00C08040;
constexpr unsigned int asTheyAre = TB_SETIMAGELIST;

/// What is asked of images and of handles, in its order. Each can be refused.
class RecordingImages : public support::ForwardingImages
{
public:
    HBITMAP LoadStrip(HINSTANCE module, const wchar_t* name) override
    {
        calls.emplace_back("load");
        holder = module;
        return ForwardingImages::LoadStrip(module, name);
    }
    HBITMAP MakeBitmap(int width, int height) override
    {
        calls.push_back("make " + std::to_string(width) + " x " + std::to_string(height));
        return refused == "make" ? nullptr : ForwardingImages::MakeBitmap(width, height);
    }
    HIMAGELIST MakeList(int width, int height, UINT flags, int initialCount, int growth) override
    {
        calls.push_back("list " + std::to_string(width) + " x " + std::to_string(height) + ", flags " +
                        std::to_string(flags) + ", room " + std::to_string(initialCount) + ", growth " +
                        std::to_string(growth));
        return refused == "list" ? nullptr : ForwardingImages::MakeList(width, height, flags, initialCount, growth);
    }
    int Add(HIMAGELIST list, HBITMAP bitmap) override
    {
        calls.emplace_back(bitmap != nullptr ? "add" : "add null");
        added = bitmap;
        return refused == "add" ? -1 : ForwardingImages::Add(list, bitmap);
    }

    std::vector<std::string> calls;
    std::string refused;
    HINSTANCE holder = nullptr;
    HBITMAP added = nullptr;

private:
    class RecordingHandles final : public utility::platform::HandleService
    {
    public:
        explicit RecordingHandles(RecordingImages& images) : m_images(images) {}

        bool CloseHandle(HANDLE handle) override { return m_system.CloseHandle(handle); }
        bool CloseWindowStation(HWINSTA station) override { return m_system.CloseWindowStation(station); }
        bool DeleteObject(void* object) override
        {
            m_images.calls.emplace_back(object == m_images.added ? "delete the added" : "delete another");
            return m_system.DeleteObject(object);
        }

    private:
        RecordingImages& m_images;
        utility::platform::HandleService& m_system = utility::platform::Handles();
        support::Substitute<utility::platform::HandleService> m_scope{utility::platform::HandlesSlot(), *this};
    };

    RecordingHandles m_handles{*this};
};

// What is private is part of the class's shape. An explicit instantiation may name it.
unsigned char PrivateGamma(const CZeloImageList& list, unsigned char channel, double gamma);
tagRGBQUAD PrivateDisable(const CZeloImageList& list, const unsigned char (&pixel)[3], const unsigned char (&tint)[3]);
HBITMAP PrivateImage(CZeloImageList& list, unsigned int resourceId, int imageSize, int& imageCount);
std::vector<double> PrivateConstants();
template <auto gamma, auto disable, HBITMAP (CZeloImageList::*image)(unsigned, int, int&, const DWORD&, unsigned),
          auto... constants>
struct PrivateOfImageList
{
    friend unsigned char PrivateGamma(const CZeloImageList& list, unsigned char channel, double exponent)
    {
        return (list.*gamma)(channel, exponent);
    }
    friend tagRGBQUAD PrivateDisable(const CZeloImageList& list, const unsigned char (&pixel)[3],
                                     const unsigned char (&tint)[3])
    {
        return (list.*disable)(pixel[0], pixel[1], pixel[2], tint[0], tint[1], tint[2]);
    }
    friend HBITMAP PrivateImage(CZeloImageList& list, unsigned int resourceId, int imageSize, int& imageCount)
    {
        return (list.*image)(resourceId, imageSize, imageCount, 0, TB_SETIMAGELIST);
    }
    friend std::vector<double> PrivateConstants() { return {static_cast<double>(*constants)...}; }
};
template struct PrivateOfImageList<&CZeloImageList::ApplyGamma, &CZeloImageList::ApplyDisable,
                                   &CZeloImageList::Create32BitImage, &CZeloImageList::m_dDisabledGamma,
                                   &CZeloImageList::m_dHotGamma, &CZeloImageList::m_clrBackgroundRed,
                                   &CZeloImageList::m_clrBackgroundGreen, &CZeloImageList::m_clrBackgroundBlue>;

class ZeloImageListTest : public testing::Test
{
protected:
    ZeloImageListTest() { support::StripModule(); }

    CZeloImageList list;
};

using Calls = std::vector<std::string>;

}

TEST_F(ZeloImageListTest, IsWithoutAListAtFirst)
{
    EXPECT_EQ(list.GetSafeHandle(), nullptr);
    EXPECT_EQ(list.AppendBitmap(101, 2, anyTint, asTheyAre), -1);
}

TEST_F(ZeloImageListTest, ImagesOfAStripStandSideBySideAndTheUppermostRowIsTheLastInMemory)
{
    ASSERT_EQ(list.AddBitmap(101, 2, anyTint, asTheyAre), 1);
    ASSERT_EQ(list.GetImageCount(), 2);
    EXPECT_EQ(PixelsOf(list.GetImage(0)), (Pixels{0xFF64321E, 0x10FF0000, 0x00FFFFFF, 0xFF000000}));
    EXPECT_EQ(PixelsOf(list.GetImage(1)), (Pixels{0x2000FF00, 0x300000FF, 0x80808080, 0x401E3264}));
    EXPECT_TRUE(list.GetImage(2).pixels.empty());
    EXPECT_TRUE(list.GetImage(-1).pixels.empty());
}

TEST_F(ZeloImageListTest, HotImagesAreDarkenedAndKeepTheirAlpha)
{
    ASSERT_EQ(list.AddBitmap(101, 2, anyTint, TB_SETHOTIMAGELIST), 1);
    EXPECT_EQ(PixelsOf(list.GetImage(0)), (Pixels{0xFF522413, 0x10FF0000, 0x00FFFFFF, 0xFF000000}));
    EXPECT_EQ(PixelsOf(list.GetImage(1)), (Pixels{0x2000FF00, 0x300000FF, 0x806F6F6F, 0x40132452}));
}

TEST_F(ZeloImageListTest, DisabledImagesAreAWashOfTheTintAndKeepTheirAlpha)
{
    ASSERT_EQ(list.AddBitmap(101, 2, 0x00C0C0C0, TB_SETDISABLEDIMAGELIST), 1);
    EXPECT_EQ(PixelsOf(list.GetImage(0))[0], 0xFF5A5A5A);
    EXPECT_EQ(PixelsOf(list.GetImage(1))[3], 0x405A5A5A);
    // The lowest byte of a tint is red.
    CZeloImageList red;
    ASSERT_EQ(red.AddBitmap(101, 2, 0x000000FF, TB_SETDISABLEDIMAGELIST), 1);
    EXPECT_EQ(PixelsOf(red.GetImage(1))[2], 0x80A80000);
}

TEST_F(ZeloImageListTest, TransparentPixelStaysTransparentAndItsColoursAreProcessed)
{
    ASSERT_EQ(list.AddBitmap(101, 2, 0x00808080, TB_SETDISABLEDIMAGELIST), 1);
    EXPECT_EQ(PixelsOf(list.GetImage(0))[2], 0x00A7A7A7);
}

TEST_F(ZeloImageListTest, OtherKindsAreCopied)
{
    for (const unsigned int kind : {0u, 1u, 0x430u, 0x433u, 0x435u, 0x437u, 0xFFFFFFFFu})
    {
        CZeloImageList copied;
        ASSERT_EQ(copied.AddBitmap(101, 2, anyTint, kind), 1);
        EXPECT_EQ(PixelsOf(copied.GetImage(0)), (Pixels{0xFF64321E, 0x10FF0000, 0x00FFFFFF, 0xFF000000})) << kind;
    }
}

TEST_F(ZeloImageListTest, KindsAreTheMessagesOfAToolbar)
{
    EXPECT_EQ(static_cast<unsigned int>(TB_SETHOTIMAGELIST), 0x434u);
    EXPECT_EQ(static_cast<unsigned int>(TB_SETDISABLEDIMAGELIST), 0x436u);
}

TEST_F(ZeloImageListTest, StripOf160PixelsHasTenImagesOf16)
{
    RecordingImages images;
    ASSERT_EQ(list.AddBitmap(160, 16, anyTint, asTheyAre), 1);
    EXPECT_EQ(list.GetImageCount(), 10);
    EXPECT_EQ(images.holder, support::StripModule());
    EXPECT_EQ(images.calls, (Calls{"load", "make 160 x 1", "delete another",
                                   "list 16 x 16, flags 32, room 10, growth 0", "add", "delete the added"}));
}

TEST_F(ZeloImageListTest, RoomIsDeliberatelyMadeForImagesOf16WhateverTheirSize)
{
    RecordingImages images;
    ASSERT_EQ(list.AddBitmap(240, 24, anyTint, asTheyAre), 1);
    EXPECT_EQ(list.GetImageCount(), 10);
    ASSERT_EQ(images.calls.size(), 6u);
    EXPECT_EQ(images.calls[3], "list 24 x 24, flags 32, room 15, growth 0");
}

TEST_F(ZeloImageListTest, NumberOfAResourceIsCutTo16Bits)
{
    ASSERT_EQ(list.AddBitmap(0x10000 + 101, 2, anyTint, asTheyAre), 1);
    EXPECT_EQ(list.AppendBitmap(0xFFFF0000 + 101, 2, anyTint, asTheyAre), 2);
}

TEST_F(ZeloImageListTest, NamesAreFoundInAnyCaseAndAsNumbers)
{
    EXPECT_EQ(list.AddBitmap(L"TOOLS", 2, anyTint, asTheyAre), 1);
    EXPECT_EQ(list.AppendBitmap(L"tools", 2, anyTint, asTheyAre), 2);
    EXPECT_EQ(list.AppendBitmap(L"#101", 2, anyTint, asTheyAre), 4);
    EXPECT_EQ(list.AppendBitmap(NumberedResource(101), 2, anyTint, asTheyAre), 6);
    EXPECT_EQ(list.GetImageCount(), 8);
}

TEST_F(ZeloImageListTest, AppendedImagesFollowInTheirOwnKind)
{
    ASSERT_EQ(list.AddBitmap(101, 2, anyTint, asTheyAre), 1);
    RecordingImages images;
    EXPECT_EQ(list.AppendBitmap(101, 2, anyTint, TB_SETHOTIMAGELIST), 2);
    EXPECT_EQ(images.calls, (Calls{"load", "make 4 x 2", "delete another", "add", "delete the added"}));
    EXPECT_EQ(PixelsOf(list.GetImage(0))[0], 0xFF64321E);
    EXPECT_EQ(PixelsOf(list.GetImage(2))[0], 0xFF522413);
    EXPECT_EQ(list.GetImageCount(), 4);
}

TEST_F(ZeloImageListTest, AbsentResourceLeavesAnEmptyListThatCanBeUsed)
{
    RecordingImages images;
    EXPECT_EQ(list.AddBitmap(999, 2, anyTint, asTheyAre), 0);
    EXPECT_EQ(images.calls, (Calls{"load", "list 2 x 2, flags 32, room 0, growth 0", "add null"}));
    EXPECT_NE(list.GetSafeHandle(), nullptr);
    EXPECT_EQ(list.GetImageCount(), 0);
    EXPECT_EQ(list.AppendBitmap(L"absent", 2, anyTint, asTheyAre), -1);
    EXPECT_EQ(list.AppendBitmap(500, 2, anyTint, asTheyAre), -1);
    EXPECT_EQ(list.AppendBitmap(static_cast<const wchar_t*>(nullptr), 2, anyTint, asTheyAre), -1);
    EXPECT_EQ(list.AppendBitmap(101, 2, anyTint, asTheyAre), 0);
    EXPECT_EQ(list.GetImageCount(), 2);
}

TEST_F(ZeloImageListTest, BitmapIsDeliberatelyNotDeletedWhenNoListIsMade)
{
    RecordingImages images;
    images.refused = "list";
    EXPECT_EQ(list.AddBitmap(101, 2, anyTint, asTheyAre), 0);
    EXPECT_EQ(images.calls, (Calls{"load", "make 4 x 2", "delete another", "list 2 x 2, flags 32, room 0, growth 0"}));
    EXPECT_EQ(list.GetSafeHandle(), nullptr);
}

TEST_F(ZeloImageListTest, BitmapIsDeliberatelyNotDeletedWhenItCannotBeAdded)
{
    RecordingImages images;
    images.refused = "add";
    EXPECT_EQ(list.AddBitmap(101, 2, anyTint, asTheyAre), 0);
    EXPECT_EQ(images.calls.back(), "add");
    utility::platform::BitmapBits bits;
    EXPECT_TRUE(images.Describe(images.added, bits));
    EXPECT_TRUE(utility::platform::Handles().DeleteObject(images.added));
}

TEST_F(ZeloImageListTest, BitmapThatCannotBeAppendedIsDeletedAndTheListStays)
{
    ASSERT_EQ(list.AddBitmap(101, 2, anyTint, asTheyAre), 1);
    RecordingImages images;
    images.refused = "add";
    EXPECT_EQ(list.AppendBitmap(101, 2, anyTint, asTheyAre), -1);
    EXPECT_EQ(images.calls.back(), "delete the added");
    images.refused = "make";
    EXPECT_EQ(list.AppendBitmap(101, 2, anyTint, asTheyAre), -1);
    EXPECT_EQ(images.calls.back(), "add null");
    EXPECT_EQ(list.GetImageCount(), 2);
}

TEST_F(ZeloImageListTest, AnotherStripTakesThePlaceOfTheFirst)
{
    ASSERT_EQ(list.AddBitmap(101, 2, anyTint, asTheyAre), 1);
    ASSERT_EQ(list.AddBitmap(160, 16, anyTint, asTheyAre), 1);
    EXPECT_EQ(list.GetImageCount(), 10);
}

TEST_F(ZeloImageListTest, BytesThatAStripOfAnotherDepthDoesNotHaveAreBlack)
{
    // Of its 24 bytes there are six pixels of eight.
    ASSERT_EQ(list.AddBitmap(24, 2, anyTint, asTheyAre), 1);
    ASSERT_EQ(list.GetImageCount(), 2);
    EXPECT_EQ(PixelsOf(list.GetImage(0)), (Pixels{0x18171615, 0x1C1B1A19, 0x04030201, 0x08070605}));
    EXPECT_EQ(PixelsOf(list.GetImage(1)), (Pixels{0, 0, 0x0C0B0A09, 0x14131211}));
    int first = 2;
    for (const unsigned int kind : {asTheyAre, unsigned{TB_SETHOTIMAGELIST}, unsigned{TB_SETDISABLEDIMAGELIST}})
    {
        EXPECT_EQ(list.AppendBitmap(1, 2, anyTint, kind), first);
        first += 4;
    }
    EXPECT_EQ(PixelsOf(list.GetImage(2))[0], 0x000000A5u);
    EXPECT_EQ(PixelsOf(list.GetImage(3))[0], 0u);
}

TEST_F(ZeloImageListTest, StripNarrowerThanAnImageAddsNone)
{
    EXPECT_EQ(list.AddBitmap(101, 5, anyTint, asTheyAre), 1);
    EXPECT_EQ(list.GetImageCount(), 0);
}

TEST_F(ZeloImageListTest, StripThatIsNoWholeNumberOfImagesWideLosesTheRest)
{
    EXPECT_EQ(list.AddBitmap(101, 3, anyTint, asTheyAre), 1);
    EXPECT_EQ(list.GetImageCount(), 1);
}

TEST_F(ZeloImageListTest, StripHigherThanAnImageLosesItsLowerRows)
{
    EXPECT_EQ(list.AddBitmap(101, 1, anyTint, asTheyAre), 1);
    EXPECT_EQ(list.GetImageCount(), 4);
    EXPECT_EQ(PixelsOf(list.GetImage(2)), (Pixels{0x2000FF00}));
}

TEST_F(ZeloImageListTest, HasNothingButTheListOfItsBase)
{
    EXPECT_EQ(sizeof(CZeloImageList), sizeof(CImageList));
    const CObject& object = list;
    EXPECT_EQ(dynamic_cast<const CImageList*>(&object), &list);
}

TEST_F(ZeloImageListTest, ConstantsAreTheTwoExponentsAndMagentaForNobody)
{
    EXPECT_EQ(PrivateConstants(), (std::vector<double>{0.6, 1.2, 255, 0, 255}));
}

TEST_F(ZeloImageListTest, CurvesOfOnePixelAreThoseOfTheTables)
{
    EXPECT_EQ(PrivateGamma(list, 128, 1.2), 111);
    EXPECT_EQ(PrivateGamma(list, 254, 1.2), 253);
    EXPECT_EQ(PrivateGamma(list, 128, 0.6), 168);
    const tagRGBQUAD red = PrivateDisable(list, {128, 128, 128}, {255, 0, 0});
    EXPECT_EQ(support::PixelOf(red), 0x00A80000u);
    const tagRGBQUAD grey = PrivateDisable(list, {100, 50, 30}, {192, 192, 192});
    EXPECT_EQ(support::PixelOf(grey), 0x005A5A5Au);
    const tagRGBQUAD white = PrivateDisable(list, {255, 255, 255}, {1, 2, 255});
    EXPECT_EQ(support::PixelOf(white), 0x000009FEu);
}

TEST_F(ZeloImageListTest, CountOfImagesIsHowManyAreWholeInTheWidth)
{
    const auto countOf = [&](unsigned int resourceId, int imageSize)
    {
        int count = -1;
        const resource_ptr<HBITMAP> image(PrivateImage(list, resourceId, imageSize, count));
        EXPECT_NE(image, nullptr);
        return count;
    };
    EXPECT_EQ(countOf(160, 16), 10);
    EXPECT_EQ(countOf(0x10000 + 160, 24), 6);
    EXPECT_EQ(countOf(160, 161), 0);
}

TEST_F(ZeloImageListTest, CountStaysWhereThereIsNoStrip)
{
    int count = 24;
    EXPECT_EQ(PrivateImage(list, 999, 16, count), nullptr);
    EXPECT_EQ(count, 24);
}

TEST(AlphaColourTest, AlphaStandsAboveTheColour)
{
    EXPECT_EQ(MakeRGBA(0x112233, 0x80), 0x80112233u);
    EXPECT_EQ(GetRGB(0x80112233), 0x112233u);
    EXPECT_EQ(GetAValue(0x80112233), 0x80);
}

TEST(AlphaColourTest, WhatStandsAboveTheColourIsDeliberatelyNotCleared)
{
    EXPECT_EQ(MakeRGBA(0x01112233, 0x80), 0x81112233u);
    EXPECT_EQ(MakeRGBA(0xFF000000, 0), 0xFF000000u);
}
