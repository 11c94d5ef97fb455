#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <atomic>
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
    // Atomics alone lead the threads: other means of waiting may set the error themselves.
    std::atomic<int> turn = 0;
    DWORD othersError = 77;
    std::thread other(
        [&]
        {
            platform::SetLastError(ERROR_ACCESS_DENIED);
            turn = 1;
            while (turn != 2)
                ;
            othersError = platform::LastError();
        });
    while (turn != 1)
        ;
    platform::SetLastError(ERROR_DISK_FULL);
    turn = 2;
    const DWORD ownError = platform::LastError();
    other.join();
    EXPECT_EQ(ownError, ERROR_DISK_FULL);
    EXPECT_EQ(othersError, ERROR_ACCESS_DENIED);
}
