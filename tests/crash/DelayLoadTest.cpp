#include "utility/crash/DelayLoad.h"

#include <gtest/gtest.h>

TEST(DelayLoadHookTest, DoesNothingButForALibraryThatCouldNotBeLoaded)
{
    for (const unsigned int notification : {0U, 1U, 2U, 4U, 5U, 0xFFFFFFFFU})
        EXPECT_EQ(ZeloDliHook(notification, nullptr), nullptr);
}
