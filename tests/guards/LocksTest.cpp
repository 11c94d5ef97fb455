#include "utility/guards/Locks.h"

#include "utility/guards/internal/LockGuard.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <type_traits>
#include <vector>

using utility::LockGuard;

TEST(LockTest, NewLockIsHeldForWritingOnPurpose)
{
    const CLock lock;
    EXPECT_EQ(lock.LockCount(), -1);
    EXPECT_TRUE(lock.IsWriteLocked());
    EXPECT_FALSE(lock.IsLocked());
}

TEST(LockTest, InitialUnlockFreesIt)
{
    CLock lock;
    lock.InitialUnlock();
    EXPECT_EQ(lock.LockCount(), 0);
    EXPECT_FALSE(lock.IsWriteLocked());
    EXPECT_FALSE(lock.IsLocked());
}

TEST(LockTest, FirstReadLockOfANewLockIsFalseAndTheSecondTrue)
{
    CLock lock;
    EXPECT_FALSE(lock.ReadLock());
    EXPECT_EQ(lock.LockCount(), 0);
    EXPECT_TRUE(lock.IsWriteLocked());
    EXPECT_TRUE(lock.ReadLock());
    EXPECT_EQ(lock.LockCount(), 1);
    EXPECT_TRUE(lock.IsWriteLocked());
}

TEST(LockTest, TwoReadersComeAndGo)
{
    CLock lock;
    lock.InitialUnlock();
    EXPECT_TRUE(lock.ReadLock());
    EXPECT_TRUE(lock.IsLocked());
    EXPECT_TRUE(lock.ReadLock());
    EXPECT_EQ(lock.LockCount(), 2);
    EXPECT_FALSE(lock.IsWriteLocked());
    lock.Unlock();
    EXPECT_TRUE(lock.IsLocked());
    lock.Unlock();
    EXPECT_EQ(lock.LockCount(), 0);
    EXPECT_FALSE(lock.IsLocked());
}

TEST(LockTest, WriteLockNeverRefuses)
{
    CLock lock;
    EXPECT_TRUE(lock.WriteLock());
    lock.InitialUnlock();
    lock.ReadLock();
    EXPECT_TRUE(lock.WriteLock());
    EXPECT_TRUE(lock.WriteLock());
    EXPECT_EQ(lock.LockCount(), 3);
    EXPECT_TRUE(lock.IsWriteLocked());
}

TEST(LockTest, UnlockEndsAWriteLockEvenIfReadersAreLeft)
{
    CLock lock;
    lock.InitialUnlock();
    lock.ReadLock();
    lock.WriteLock();
    lock.Unlock();
    EXPECT_FALSE(lock.IsWriteLocked());
    EXPECT_TRUE(lock.IsLocked());
}

TEST(LockTest, UnlockOfAFreeLockGoesBelowZero)
{
    CLock lock;
    lock.InitialUnlock();
    lock.Unlock();
    EXPECT_EQ(lock.LockCount(), -1);
    EXPECT_FALSE(lock.IsWriteLocked());
    EXPECT_FALSE(lock.ReadLock());
}

TEST(LockTest, AssignmentCopiesBothFields)
{
    CLock lock;
    lock.InitialUnlock();
    lock.WriteLock();
    lock.ReadLock();
    CLock other;
    EXPECT_EQ(&(other = lock), &other);
    EXPECT_EQ(other.LockCount(), 2);
    EXPECT_TRUE(other.IsWriteLocked());
    EXPECT_FALSE(std::is_polymorphic_v<CLock>);
}

TEST(CriticalSectionTest, YieldsTheAddressOfItsSection)
{
    CCriticalSectionSpinCount section;
    _RTL_CRITICAL_SECTION* const address = section;
    EXPECT_EQ(static_cast<void*>(address), static_cast<void*>(&section));
    EXPECT_EQ(sizeof(section), sizeof(*address));
}

TEST(CriticalSectionThreadTest, OneThreadAtATimeIsInside)
{
    for (const DWORD spinCount : {DWORD{0}, DWORD{1}, DWORD{100}, DWORD{4000}})
    {
        CCriticalSectionSpinCount section(spinCount);
        constexpr int rounds = 5000;
        int counter = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back(
                [&]
                {
                    for (int round = 0; round < rounds; ++round)
                    {
                        section.Lock();
                        ++counter;
                        section.Unlock();
                    }
                });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(counter, 4 * rounds);
    }
}

TEST(CriticalSectionThreadTest, ThreadComesInThoughAnotherTakesItAgainAndAgain)
{
    CCriticalSectionSpinCount section;
    std::atomic<bool> isRunning = true;
    std::thread other(
        [&]
        {
            while (isRunning)
            {
                section.Lock();
                section.Unlock();
            }
        });
    for (int round = 0; round < 10'000; ++round)
    {
        section.Lock();
        section.Unlock();
    }
    isRunning = false;
    other.join();
}

TEST(CriticalSectionThreadTest, ThreadMayTakeItAgainAndOthersWaitForTheLastUnlock)
{
    CCriticalSectionSpinCount section(0);
    section.Lock();
    section.Lock();
    section.Lock();
    std::atomic<bool> isAlmostThere = false;
    std::atomic<bool> isInside = false;
    std::thread other(
        [&]
        {
            isAlmostThere = true;
            section.Lock();
            isInside = true;
            section.Unlock();
        });
    while (!isAlmostThere)
        std::this_thread::yield();
    section.Unlock();
    section.Unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(isInside);
    section.Unlock();
    other.join();
    EXPECT_TRUE(isInside);
    section.Lock();
    section.Unlock();
}

TEST(LockGuardTest, NeitherItNorItsLockIsCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<LockGuard> || std::is_copy_assignable_v<LockGuard>);
    EXPECT_FALSE(std::is_copy_constructible_v<CCriticalSectionSpinCount>);
    EXPECT_FALSE(std::is_copy_assignable_v<CCriticalSectionSpinCount>);
}

TEST(LockGuardThreadTest, HoldsItsLockWhileItLives)
{
    CCriticalSectionSpinCount section;
    std::atomic<bool> isInside = false;
    std::thread other;
    {
        const LockGuard guard(section);
        other = std::thread(
            [&]
            {
                const LockGuard own(section);
                isInside = true;
            });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_FALSE(isInside);
    }
    other.join();
    EXPECT_TRUE(isInside);
}
