#include "utility/platform/Images.h"

#include "tests/support/StripModule.h"
#include "utility/desktop/ZeloImageList.h"
#include "utility/guards/ResourcePtr.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

using utility::platform::Images;
using utility::platform::LastError;

TEST(PosixImagesTest, BitmapOfAnotherDepthIsNotAdded)
{
    const HIMAGELIST list = Images().MakeList(2, 2, ILC_COLOR32, 0, 0);
    const resource_ptr<HBITMAP> of24(Images().LoadStrip(support::StripModule(), support::NumberedResource(24)));
    ASSERT_NE(of24, nullptr);
    EXPECT_EQ(Images().Add(list, of24.get()), -1);
    EXPECT_EQ(LastError(), ERROR_INVALID_HANDLE);
    EXPECT_TRUE(Images().DestroyList(list));
}

TEST(PosixImagesTest, ListThatHasEndedIsNone)
{
    const HIMAGELIST list = Images().MakeList(2, 2, ILC_COLOR32, 0, 0);
    EXPECT_TRUE(Images().DestroyList(list));
    EXPECT_FALSE(Images().DestroyList(list));
    EXPECT_EQ(LastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Images().Count(list), 0);
    EXPECT_TRUE(Images().ImageOf(list, 0).pixels.empty());
}

TEST(PosixImagesTest, ListNeedsASizeAndRoom)
{
    EXPECT_EQ(Images().MakeList(0, 2, ILC_COLOR32, 0, 0), nullptr);
    EXPECT_EQ(Images().MakeList(2, 0, ILC_COLOR32, 0, 0), nullptr);
    EXPECT_EQ(Images().MakeList(2, 2, ILC_COLOR32, -1, 0), nullptr);
    EXPECT_EQ(LastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Images().MakeList(INT_MAX, INT_MAX, ILC_COLOR32, INT_MAX, 0), nullptr);
    EXPECT_EQ(LastError(), ERROR_NOT_ENOUGH_MEMORY);
}

TEST(PosixImagesTest, StripStoredFromItsUppermostRowDeliberatelyComesOutUpsideDown)
{
    support::StripModule();
    CZeloImageList list;
    ASSERT_EQ(list.AddBitmap(L"Tools", 2, 0, TB_SETIMAGELIST), 1);
    EXPECT_EQ(support::PixelsOf(list.GetImage(0)),
              (std::vector<DWORD>{0xFF64321E, 0x10FF0000, 0x00FFFFFF, 0xFF000000}));
}

TEST(PosixImagesTest, RowsThatAStripDoesNotHaveAreTransparentBlack)
{
    support::StripModule();
    CZeloImageList list;
    ASSERT_EQ(list.AddBitmap(101, 3, 0, TB_SETIMAGELIST), 1);
    EXPECT_EQ(support::PixelsOf(list.GetImage(0)),
              (std::vector<DWORD>{0xFF64321E, 0x10FF0000, 0x2000FF00, 0x00FFFFFF, 0xFF000000, 0x80808080, 0, 0, 0}));
}
