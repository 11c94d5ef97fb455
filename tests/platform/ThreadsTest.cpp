#include "utility/platform/Threads.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace utility::platform;

namespace
{

class ThreadSlotFunctionsTest : public ::testing::Test
{
protected:
    ThreadSlotFunctionsTest() : m_slot(AllocateThreadSlot()) {}
    ~ThreadSlotFunctionsTest() override { FreeThreadSlot(m_slot); }

    DWORD m_slot;
};

/// A critical section for the length of a test.
class CriticalSectionThreadTest : public ::testing::TestWithParam<DWORD>
{
protected:
    CriticalSectionThreadTest() { InitialiseCriticalSection(m_section, GetParam()); }
    ~CriticalSectionThreadTest() override { DeleteCriticalSection(m_section); }

    _RTL_CRITICAL_SECTION m_section;
};

}

TEST_F(ThreadSlotFunctionsTest, IsNullUntilAPointerIsStored)
{
    int value = 0;
    ASSERT_NE(m_slot, TLS_OUT_OF_INDEXES);
    EXPECT_EQ(ThreadSlotValue(m_slot), nullptr);
    SetThreadSlotValue(m_slot, &value);
    EXPECT_EQ(ThreadSlotValue(m_slot), &value);
}

TEST_F(ThreadSlotFunctionsTest, NewThreadInheritsNothing)
{
    int value = 0;
    int other = 0;
    SetThreadSlotValue(m_slot, &value);
    void* atStart = &other;
    std::thread(
        [&]
        {
            atStart = ThreadSlotValue(m_slot);
            SetThreadSlotValue(m_slot, &other);
        })
        .join();
    EXPECT_EQ(atStart, nullptr);
    EXPECT_EQ(ThreadSlotValue(m_slot), &value);
}

TEST_F(ThreadSlotFunctionsTest, SlotsAreApart)
{
    int value = 0;
    const DWORD other = AllocateThreadSlot();
    EXPECT_NE(other, m_slot);
    SetThreadSlotValue(m_slot, &value);
    EXPECT_EQ(ThreadSlotValue(other), nullptr);
    FreeThreadSlot(other);
}

TEST_F(ThreadSlotFunctionsTest, SlotAllocatedAgainIsNull)
{
    int value = 0;
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(ThreadSlotValue(m_slot), nullptr);
        SetThreadSlotValue(m_slot, &value);
        FreeThreadSlot(m_slot);
        m_slot = AllocateThreadSlot();
    }
}

TEST_F(ThreadSlotFunctionsTest, RunsOutAndRecovers)
{
    std::vector<DWORD> slots;
    while (slots.size() < 100000)
    {
        const DWORD slot = AllocateThreadSlot();
        if (slot == TLS_OUT_OF_INDEXES)
            break;
        slots.push_back(slot);
    }
    for (const DWORD slot : slots)
        FreeThreadSlot(slot);
    EXPECT_LT(slots.size(), 100000u);
    const DWORD again = AllocateThreadSlot();
    EXPECT_NE(again, TLS_OUT_OF_INDEXES);
    FreeThreadSlot(again);
}

TEST_F(ThreadSlotFunctionsTest, SlotThatCouldNotBeAllocatedReadsNull)
{
    int value = 0;
    SetThreadSlotValue(TLS_OUT_OF_INDEXES, &value);
    EXPECT_EQ(ThreadSlotValue(TLS_OUT_OF_INDEXES), nullptr);
}

TEST_P(CriticalSectionThreadTest, KeepsThreadsApart)
{
    constexpr int rounds = 20000;
    int count = 0;
    const auto work = [&]
    {
        for (int i = 0; i < rounds; ++i)
        {
            EnterCriticalSection(m_section);
            ++count;
            LeaveCriticalSection(m_section);
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(count, 2 * rounds);
}

TEST_P(CriticalSectionThreadTest, HolderMayEnterAgainAndLeavesAsOften)
{
    EnterCriticalSection(m_section);
    EnterCriticalSection(m_section);
    LeaveCriticalSection(m_section);
    // Still held once: the other thread gets in only after the last leave.
    int seen = 0;
    int value = 1;
    std::thread other(
        [&]
        {
            EnterCriticalSection(m_section);
            seen = value;
            LeaveCriticalSection(m_section);
        });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    value = 2;
    LeaveCriticalSection(m_section);
    other.join();
    EXPECT_EQ(seen, 2);
}

INSTANTIATE_TEST_SUITE_P(SpinCounts, CriticalSectionThreadTest, ::testing::Values(0, 4000),
                         ::testing::PrintToStringParamName());
