#include "examples/toolbar/Picture.h"

#include <gtest/gtest.h>

#include <vector>

TEST(ToolbarPictureTest, PixelsAreMixedWithWhatIsBelowByTheirAlpha)
{
    toolbar::Picture picture(3, 1, 0x0000FF64);
    EXPECT_EQ(picture.bytes, (std::vector<std::uint8_t>{100, 255, 0, 100, 255, 0, 100, 255, 0}));
    picture.Paint({3, 1, {{1, 2, 3, 255}, {200, 0, 0, 128}, {9, 9, 9, 0}}}, 0, 0, 1);
    EXPECT_EQ(picture.bytes, (std::vector<std::uint8_t>{3, 2, 1, 50, 127, 100, 100, 255, 0}));
}

TEST(ToolbarPictureTest, PixelIsASquareAtItsPlace)
{
    toolbar::Picture picture(4, 3, 0);
    picture.Paint({1, 1, {{0, 0, 255, 255}}}, 1, 1, 2);
    std::vector<int> red;
    for (std::size_t i = 0; i < picture.bytes.size(); i += 3)
        red.push_back(picture.bytes[i]);
    EXPECT_EQ(red, (std::vector<int>{0, 0, 0, 0, 0, 255, 255, 0, 0, 255, 255, 0}));
}
