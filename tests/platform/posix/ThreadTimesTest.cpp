#include "utility/platform/ThreadTimes.h"

#include "utility/platform/Handles.h"

#include <gtest/gtest.h>

#include <thread>

using utility::platform::Handles;
using utility::platform::ThreadTimes;

// Wine knows nothing of a thread that has ended.
TEST(PosixThreadTimesTest, TimesOfAThreadThatHasEndedAreThoseLastGiven)
{
    HANDLE worker = nullptr;
    FILETIME kernel = {};
    FILETIME user = {};
    std::thread(
        [&]
        {
            worker = ThreadTimes().OpenCallingThread();
            volatile double sum = 0;
            do
            {
                for (int i = 0; i < 10000; ++i)
                    sum = sum + i;
                EXPECT_TRUE(ThreadTimes().Times(worker, kernel, user));
            } while (user.dwLowDateTime < 50000);
        })
        .join();
    // The system may give the next thread the identifier of that one.
    std::thread(
        [&]
        {
            FILETIME lastKernel = {};
            FILETIME lastUser = {};
            EXPECT_TRUE(ThreadTimes().Times(worker, lastKernel, lastUser));
            EXPECT_EQ(lastKernel.dwLowDateTime, kernel.dwLowDateTime);
            EXPECT_EQ(lastUser.dwLowDateTime, user.dwLowDateTime);
        })
        .join();
    EXPECT_TRUE(Handles().CloseHandle(worker));
}
