#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <thread>

namespace platform = utility::platform;

TEST(LastErrorTest, GivesWhatWasSet)
{
    platform::SetLastError(ERROR_DISK_FULL);
    EXPECT_EQ(platform::LastError(), 112u);
    platform::SetLastError(0xFFFFFFFF);
    EXPECT_EQ(platform::LastError(), 0xFFFFFFFFu);
}

TEST(LastErrorThreadTest, EachThreadHasItsOwn)
{
    platform::SetLastError(ERROR_DISK_FULL);
    DWORD atStart = 77;
    std::thread(
        [&atStart]
        {
            atStart = platform::LastError();
            platform::SetLastError(ERROR_ACCESS_DENIED);
        })
        .join();
    EXPECT_EQ(atStart, ERROR_SUCCESS);
    EXPECT_EQ(platform::LastError(), ERROR_DISK_FULL);
}
