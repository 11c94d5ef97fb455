#include "utility/platform/ThreadTimes.h"

#include "tests/support/posix/FailingCall.h"
#include "utility/platform/Handles.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <time.h>

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

TEST(PosixThreadTimesTest, TimeOfAnotherThreadIsSplitAndNothingStaysOpen)
{
    std::promise<HANDLE> computed;
    std::promise<void> asked;
    std::thread worker(
        [&]
        {
            const HANDLE self = ThreadTimes().OpenCallingThread();
            timespec spent = {};
            volatile double sum = 0;
            while (spent.tv_sec == 0 && spent.tv_nsec < 100000000)
            {
                for (int i = 0; i < 1000000; ++i)
                    sum = sum + i;
                ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &spent);
            }
            computed.set_value(self);
            asked.get_future().wait();
        });
    const HANDLE thread = computed.get_future().get();
    FILETIME kernel = {};
    FILETIME user = {};
    const std::ptrdiff_t descriptors = support::OpenDescriptors();
    EXPECT_TRUE(ThreadTimes().Times(thread, kernel, user));
    EXPECT_EQ(support::OpenDescriptors(), descriptors);
    EXPECT_GT(user.dwLowDateTime, 2 * kernel.dwLowDateTime);
    asked.set_value();
    worker.join();
    EXPECT_TRUE(Handles().CloseHandle(thread));
}
