#include "utility/platform/ThreadTimes.h"

#include "utility/platform/Error.h"
#include "utility/platform/Handles.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

using utility::platform::Handles;
using utility::platform::ThreadTimes;

namespace
{

std::uint64_t Ticks(const FILETIME& time) { return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime; }

struct Spent
{
    std::uint64_t kernel = 0;
    std::uint64_t user = 0;
};

Spent TimesOf(HANDLE thread)
{
    FILETIME kernel = {};
    FILETIME user = {};
    EXPECT_TRUE(ThreadTimes().Times(thread, kernel, user));
    return {Ticks(kernel), Ticks(user)};
}

constexpr std::uint64_t millisecond = 10000;

/// Computes until the thread has used so many milliseconds more.
void Compute(HANDLE thread, std::uint64_t milliseconds)
{
    const Spent before = TimesOf(thread);
    volatile double sum = 0;
    while (TimesOf(thread).user < before.user + milliseconds * millisecond)
        for (int i = 0; i < 100000; ++i)
            sum = sum + i;
}

}

TEST(ThreadTimesTest, ComputingIsUserTimeOfItsThread)
{
    const HANDLE self = ThreadTimes().OpenCallingThread();
    ASSERT_NE(self, INVALID_HANDLE_VALUE);
    const Spent before = TimesOf(self);
    std::thread(
        []
        {
            const HANDLE other = ThreadTimes().OpenCallingThread();
            Compute(other, 60);
            EXPECT_TRUE(Handles().CloseHandle(other));
        })
        .join();
    const Spent after = TimesOf(self);
    EXPECT_LT(after.user + after.kernel, before.user + before.kernel + 60 * millisecond);
    EXPECT_TRUE(Handles().CloseHandle(self));
}

TEST(ThreadTimesTest, HandleTellsOfItsThreadOnAnotherOne)
{
    std::atomic<HANDLE> worker = nullptr;
    std::atomic<bool> leave = false;
    std::thread thread(
        [&]
        {
            worker = ThreadTimes().OpenCallingThread();
            while (!leave)
                std::this_thread::sleep_for(std::chrono::microseconds(0));
        });
    while (worker == nullptr)
        std::this_thread::yield();
    // Neither time goes back, however the sum is split.
    Spent last = TimesOf(worker);
    const Spent first = last;
    while (last.kernel + last.user < first.kernel + first.user + 50 * millisecond)
    {
        const Spent now = TimesOf(worker);
        ASSERT_GE(now.kernel, last.kernel);
        ASSERT_GE(now.user, last.user);
        last = now;
    }
    leave = true;
    thread.join();
    EXPECT_TRUE(Handles().CloseHandle(worker));
}

TEST(ThreadTimesTest, WhatIsNoThreadIsRefused)
{
    const HANDLE closed = ThreadTimes().OpenCallingThread();
    EXPECT_TRUE(Handles().CloseHandle(closed));
    for (const HANDLE handle : {closed, INVALID_HANDLE_VALUE, HANDLE(nullptr)})
    {
        FILETIME kernel = {1, 1};
        FILETIME user = {1, 1};
        utility::platform::SetLastError(0);
        EXPECT_FALSE(ThreadTimes().Times(handle, kernel, user));
        EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    }
}
