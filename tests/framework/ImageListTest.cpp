#include "utility/framework/ImageList.h"

#include "tests/support/ForwardingImages.h"

#include <gtest/gtest.h>

#include <climits>
#include <utility>

namespace
{

/// Knows which lists there are.
class CountingImages : public support::ForwardingImages
{
public:
    HIMAGELIST MakeList(int width, int height, UINT flags, int initialCount, int growth) override
    {
        const HIMAGELIST list = ForwardingImages::MakeList(width, height, flags, initialCount, growth);
        lists += list != nullptr ? 1 : 0;
        return list;
    }
    bool DestroyList(HIMAGELIST list) override
    {
        --lists;
        return ForwardingImages::DestroyList(list);
    }

    int lists = 0;
};

}

TEST(ImageListTest, WithoutAListThereIsNothing)
{
    CImageList list;
    EXPECT_EQ(list.GetSafeHandle(), nullptr);
    EXPECT_EQ(list.GetImageCount(), 0);
    EXPECT_TRUE(list.GetImage(0).pixels.empty());
    EXPECT_EQ(list.DeleteImageList(), 0);
}

TEST(ImageListTest, EndsItsListWithItself)
{
    CountingImages images;
    {
        CImageList list;
        ASSERT_EQ(list.Create(16, 16, ILC_COLOR32, 4, 0), 1);
        EXPECT_EQ(list.GetSafeHandle(), list.m_hImageList);
        EXPECT_EQ(images.lists, 1);
    }
    EXPECT_EQ(images.lists, 0);
}

TEST(ImageListTest, AnotherListTakesThePlaceOfTheFirst)
{
    CountingImages images;
    CImageList list;
    ASSERT_EQ(list.Create(16, 16, ILC_COLOR32, 4, 0), 1);
    ASSERT_EQ(list.Create(24, 24, ILC_COLOR32, 0, 0), 1);
    EXPECT_EQ(images.lists, 1);
    EXPECT_EQ(list.DeleteImageList(), 1);
    EXPECT_EQ(images.lists, 0);
    EXPECT_EQ(list.GetSafeHandle(), nullptr);
    EXPECT_EQ(list.DeleteImageList(), 0);
}

TEST(ImageListTest, FailureLeavesTheListThatIsThere)
{
    CImageList list;
    ASSERT_EQ(list.Create(16, 16, ILC_COLOR32, 4, 0), 1);
    const HIMAGELIST first = list.GetSafeHandle();
    EXPECT_EQ(list.Create(-1, 16, ILC_COLOR32, 0, 0), 0);
    EXPECT_EQ(list.Create(16, -1, ILC_COLOR32, 0, 0), 0);
    EXPECT_EQ(list.GetSafeHandle(), first);
    EXPECT_EQ(list.GetImageCount(), 0);
}
