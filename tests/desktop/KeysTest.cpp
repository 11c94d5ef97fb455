#include "utility/desktop/Keys.h"

#include "tests/support/ScriptedDesktop.h"

#include <gtest/gtest.h>

TEST(IsKeyDownTest, TellsWhatTheThreadHasBeenTold)
{
    support::ScriptedDesktop desktop;
    desktop.keyThatIsDown = 0x10;
    EXPECT_TRUE(IsKeyDown(0x10));
    EXPECT_FALSE(IsKeyDown(0x11));
    EXPECT_FALSE(IsKeyDownAsync(0x10));
}

TEST(IsKeyDownTest, AsyncTellsOfThisMoment)
{
    support::ScriptedDesktop desktop;
    desktop.keyThatIsDownNow = 0x41;
    EXPECT_TRUE(IsKeyDownAsync(0x41));
    EXPECT_FALSE(IsKeyDownAsync(0x42));
    EXPECT_FALSE(IsKeyDown(0x41));
}

TEST(MouseKeyToVirtualKeyTest, EachButtonHasItsKey)
{
    EXPECT_EQ(MouseKeyToVirtualKey(1), 1);
    EXPECT_EQ(MouseKeyToVirtualKey(2), 2);
    EXPECT_EQ(MouseKeyToVirtualKey(16), 4);
}

TEST(MouseKeyToVirtualKeyTest, AnythingElseIsZeroAndSoAreTwoButtons)
{
    for (const int flags : {3, 0, 4, 5, 8, 17, 18, 19, 32, 64, -1, 0x10001})
        EXPECT_EQ(MouseKeyToVirtualKey(flags), 0) << flags;
}
