#include "utility/platform/Keys.h"

#include "tests/support/windows/ThreadInput.h"

#include <gtest/gtest.h>

using support::HoldControl;
using utility::platform::Keys;

TEST(ControlKeyTest, IsThatOfTheThread)
{
    EXPECT_FALSE(Keys().IsControlKeyDown());
    HoldControl(true);
    EXPECT_TRUE(Keys().IsControlKeyDown());
    HoldControl(false);
    EXPECT_FALSE(Keys().IsControlKeyDown());
}
