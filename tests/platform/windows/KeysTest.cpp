#include "utility/platform/Keys.h"

#include "tests/support/windows/ImportedCall.h"
#include "tests/support/windows/ThreadInput.h"

#include <gtest/gtest.h>

using support::HoldControl;
using utility::platform::Keys;

extern "C" decltype(&::GetAsyncKeyState) __imp_GetAsyncKeyState;
extern "C" decltype(&::GetKeyState) __imp_GetKeyState;

TEST(ControlKeyTest, IsThatOfTheThread)
{
    EXPECT_FALSE(Keys().IsControlKeyDown());
    HoldControl(true);
    EXPECT_TRUE(Keys().IsControlKeyDown());
    HoldControl(false);
    EXPECT_FALSE(Keys().IsControlKeyDown());
}

TEST(HeldKeysTest, ThreadIsAskedAndTheSystemIs)
{
    static int asked;
    const support::ImportedCall stateCall(__imp_GetKeyState,
                                          [](int key) -> SHORT
                                          {
                                              asked = key;
                                              return key == 0x41 ? SHORT(-0x8000) : SHORT(0x7FFF);
                                          });
    const support::ImportedCall asyncCall(__imp_GetAsyncKeyState,
                                          [](int key) -> SHORT
                                          {
                                              asked = -key;
                                              return key == 0x42 ? SHORT(-1) : SHORT(1);
                                          });
    EXPECT_TRUE(Keys().IsDown(0x41));
    EXPECT_EQ(asked, 0x41);
    EXPECT_FALSE(Keys().IsDown(0x42)) << "bit 15 alone counts";
    EXPECT_TRUE(Keys().IsDownNow(0x42));
    EXPECT_EQ(asked, -0x42);
    EXPECT_FALSE(Keys().IsDownNow(0x41));
}

TEST(HeldKeysTest, KeyOfTheThreadIsHeld)
{
    HoldControl(true);
    EXPECT_TRUE(Keys().IsDown(VK_CONTROL));
    HoldControl(false);
    EXPECT_FALSE(Keys().IsDown(VK_CONTROL));
}
