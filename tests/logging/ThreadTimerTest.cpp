#include "utility/logging/ThreadTimer.h"

#include "tests/support/Substitute.h"
#include "utility/platform/Handles.h"
#include "utility/platform/ThreadTimes.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace
{

FILETIME Time(std::uint64_t ticks) { return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)}; }

/// Threads whose times a test sets, and what is done with their handles.
class ScriptedThreads : public utility::platform::ThreadTimeService
{
public:
    HANDLE OpenCallingThread() override
    {
        ++opened;
        return thread;
    }
    bool Times(HANDLE handle, FILETIME& kernelTime, FILETIME& userTime) override
    {
        asked.push_back(handle);
        if (handle != thread)
            return false;
        kernelTime = Time(kernel);
        userTime = Time(user);
        return true;
    }

    char object = 0;
    HANDLE thread = &object;
    int opened = 0;
    std::uint64_t kernel = 0;
    std::uint64_t user = 0;
    std::vector<HANDLE> asked;

private:
    support::Substitute<utility::platform::ThreadTimeService> m_scope{utility::platform::ThreadTimesSlot(), *this};
};

class ClosedHandles : public utility::platform::HandleService
{
public:
    bool CloseHandle(HANDLE handle) override
    {
        closed.push_back(handle);
        return true;
    }
    bool CloseWindowStation(HWINSTA) override { return false; }
    bool DeleteObject(void*) override { return false; }

    std::vector<HANDLE> closed;

private:
    support::Substitute<utility::platform::HandleService> m_scope{utility::platform::HandlesSlot(), *this};
};

class ThreadTimerTest : public ::testing::Test
{
protected:
    ScriptedThreads threads;
    ClosedHandles handles;
};

/// Kernel time, then user time.
std::pair<std::uint64_t, std::uint64_t> Elapsed(const ThreadTimer& timer)
{
    std::pair<std::uint64_t, std::uint64_t> times(1, 1);
    timer.ElapsedTime(times.first, times.second);
    EXPECT_EQ(timer.ElapsedTime(), times.first + times.second);
    return times;
}

using Times = std::pair<std::uint64_t, std::uint64_t>;

}

TEST(KUtimeTest, IsZeroAtFirst)
{
    KUtime none;
    EXPECT_EQ(none.Diff(KUtime()).QuadPart, 0u);
    EXPECT_EQ(none.m_ftKernel.dwLowDateTime | none.m_ftKernel.dwHighDateTime, 0u);
    EXPECT_EQ(none.m_ftUser.dwLowDateTime | none.m_ftUser.dwHighDateTime, 0u);
}

TEST(KUtimeTest, DifferenceIsThatOfBothTimesAndWraps)
{
    KUtime earlier(Time(0xFFFFFFF0), Time(5));
    KUtime later;
    later.copy(Time(0x100000010), Time(105));
    EXPECT_EQ(later.Diff(earlier).QuadPart, 0x20u + 100u);
    EXPECT_EQ(earlier.Diff(later).QuadPart, 0 - std::uint64_t{0x20 + 100});
    EXPECT_EQ(later.m_ftKernel.dwHighDateTime, 1u);
    EXPECT_EQ(later.m_ftUser.dwLowDateTime, 105u);
}

TEST_F(ThreadTimerTest, NewTimerIsPausedAndHasNoTime)
{
    const ThreadTimer timer;
    EXPECT_TRUE(timer.IsPaused());
    EXPECT_EQ(Elapsed(timer), Times(0, 0));
    EXPECT_TRUE(threads.asked.empty());
}

TEST_F(ThreadTimerTest, RunningTimerIsReadWithoutBeingDisturbed)
{
    threads.kernel = 100;
    threads.user = 1000;
    ThreadTimer timer;
    timer.Start();
    EXPECT_FALSE(timer.IsPaused());
    EXPECT_EQ(Elapsed(timer), Times(0, 0));
    threads.kernel += 5;
    threads.user += 70;
    EXPECT_EQ(Elapsed(timer), Times(5, 70));
    EXPECT_EQ(Elapsed(timer), Times(5, 70));
    threads.user += 1;
    EXPECT_EQ(Elapsed(timer), Times(5, 71));
}

TEST_F(ThreadTimerTest, StoppedTimerKeepsItsMeasurement)
{
    threads.kernel = 100;
    threads.user = 1000;
    ThreadTimer timer;
    timer.Start();
    threads.kernel = 103;
    threads.user = 1020;
    timer.Stop();
    threads.kernel = 500;
    EXPECT_TRUE(timer.IsPaused());
    EXPECT_EQ(Elapsed(timer), Times(3, 20));
}

TEST_F(ThreadTimerTest, StartAfterAStopDeliberatelyBeginsAtZero)
{
    ThreadTimer timer;
    timer.Start();
    threads.user = 20;
    timer.Stop();
    timer.Start();
    EXPECT_EQ(Elapsed(timer), Times(0, 0));
    threads.user = 21;
    timer.Stop();
    EXPECT_EQ(Elapsed(timer), Times(0, 1));
}

TEST_F(ThreadTimerTest, SecondStopDeliberatelySubtractsTheResultOfTheFirst)
{
    threads.user = 1000;
    ThreadTimer timer;
    timer.Start();
    threads.user = 1020;
    timer.Stop();
    timer.Stop();
    EXPECT_EQ(Elapsed(timer), Times(0, 1000));
}

TEST_F(ThreadTimerTest, StopWithoutAThreadAsksForTheInvalidHandle)
{
    ThreadTimer timer;
    timer.Stop();
    EXPECT_EQ(threads.asked, std::vector<HANDLE>{INVALID_HANDLE_VALUE});
    EXPECT_EQ(Elapsed(timer), Times(0, 0));
}

TEST_F(ThreadTimerTest, ResetForgetsTheTimeAndKeepsTheThread)
{
    ThreadTimer timer;
    timer.Start();
    threads.user = 20;
    timer.Reset();
    EXPECT_TRUE(timer.IsPaused());
    EXPECT_EQ(Elapsed(timer), Times(0, 0));
    timer.Start();
    EXPECT_EQ(threads.opened, 1);
}

TEST_F(ThreadTimerTest, RunningTimerWithoutAThreadHasNoTime)
{
    threads.thread = INVALID_HANDLE_VALUE;
    ThreadTimer timer;
    timer.Start();
    threads.user = 20;
    EXPECT_FALSE(timer.IsPaused());
    EXPECT_EQ(Elapsed(timer), Times(0, 0));
}

TEST_F(ThreadTimerTest, HandleIsClosedAtTheEnd)
{
    {
        ThreadTimer timer;
        timer.Start();
    }
    EXPECT_EQ(handles.closed, std::vector<HANDLE>{threads.thread});
}

TEST_F(ThreadTimerTest, TimerThatWasNeverStartedDeliberatelyClosesTheInvalidHandle)
{
    {
        const ThreadTimer timer;
    }
    EXPECT_EQ(handles.closed, std::vector<HANDLE>{INVALID_HANDLE_VALUE});
}

TEST_F(ThreadTimerTest, NullHandleIsNotClosed)
{
    threads.thread = nullptr;
    {
        ThreadTimer timer;
        timer.Start();
    }
    EXPECT_TRUE(handles.closed.empty());
}

TEST_F(ThreadTimerTest, AssignmentDeliberatelyCopiesTheHandle)
{
    {
        ThreadTimer timer;
        timer.Start();
        threads.user = 20;
        timer.Stop();
        ThreadTimer copy;
        copy = timer;
        EXPECT_EQ(Elapsed(copy), Times(0, 20));
        EXPECT_TRUE(copy.IsPaused());
    }
    EXPECT_EQ(handles.closed, std::vector<HANDLE>(2, threads.thread));
}

TEST(SystemThreadTimerTest, TimeOfTheThreadThatStartedItFirstIsMeasuredWhoeverStartsItLater)
{
    ThreadTimer timer;
    timer.Start();
    timer.Stop();
    std::uint64_t measured = 0;
    std::thread(
        [&]
        {
            timer.Start();
            const ThreadTimer unused;
            ThreadTimer own;
            own.Start();
            volatile double sum = 0;
            while (own.ElapsedTime() < 500000)
                for (int i = 0; i < 10000; ++i)
                    sum = sum + i;
            timer.Stop();
            measured = timer.ElapsedTime();
        })
        .join();
    EXPECT_LT(measured, 400000u);
}
