#include "utility/platform/ThreadSlot.h"

#include <gtest/gtest.h>

#include <thread>

using utility::platform::ThreadSlot;

TEST(ThreadSlotThreadTest, EachThreadHasItsOwnValueAndBeginsWithNull)
{
    ThreadSlot slot;
    const ThreadSlot::Lifetime lifetime(slot);
    ASSERT_TRUE(slot.IsAllocated());
    EXPECT_EQ(slot.Value(), nullptr);
    slot.SetValue(&slot);
    std::thread(
        [&slot]
        {
            EXPECT_EQ(slot.Value(), nullptr);
            int other = 0;
            slot.SetValue(&other);
            EXPECT_EQ(slot.Value(), &other);
        })
        .join();
    EXPECT_EQ(slot.Value(), &slot);
}

TEST(ThreadSlotTest, WithoutASlotStoringDoesNothingAndEverythingReadsNull)
{
    const ThreadSlot slot;
    EXPECT_FALSE(slot.IsAllocated());
    int value = 0;
    slot.SetValue(&value);
    EXPECT_EQ(slot.Value(), nullptr);
}

TEST(ThreadSlotTest, NullIsReadAgainAfterItsLifetime)
{
    ThreadSlot slot;
    int value = 0;
    {
        const ThreadSlot::Lifetime lifetime(slot);
        slot.SetValue(&value);
        EXPECT_EQ(slot.Value(), &value);
    }
    EXPECT_FALSE(slot.IsAllocated());
    EXPECT_EQ(slot.Value(), nullptr);
}
