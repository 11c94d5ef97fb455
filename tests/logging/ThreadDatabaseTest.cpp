#include "utility/logging/ThreadDatabase.h"

#include "utility/platform/ThreadSlot.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>

namespace utility::detail
{
extern platform::ThreadSlot threadDatabaseSlot;
}

namespace
{

int one;
int two;
CEntityDatabase* const firstDatabase = reinterpret_cast<CEntityDatabase*>(&one);
CEntityDatabase* const secondDatabase = reinterpret_cast<CEntityDatabase*>(&two);

}

TEST(ThreadDatabaseThreadTest, ThreadThatStoredNothingReadsNull)
{
    CEntityDatabase* seen = firstDatabase;
    std::thread([&seen] { seen = GetThreadDatabase(); }).join();
    EXPECT_EQ(seen, nullptr);
}

TEST(ThreadDatabaseThreadTest, ValueOfOneThreadIsNotSeenOnAnother)
{
    SetThreadDatabase(firstDatabase);
    CEntityDatabase* before = secondDatabase;
    CEntityDatabase* after = nullptr;
    std::thread(
        [&]
        {
            before = GetThreadDatabase();
            SetThreadDatabase(secondDatabase);
            after = GetThreadDatabase();
        })
        .join();
    EXPECT_EQ(before, nullptr);
    EXPECT_EQ(after, secondDatabase);
    EXPECT_EQ(GetThreadDatabase(), firstDatabase);
    SetThreadDatabase(nullptr);
    EXPECT_EQ(GetThreadDatabase(), nullptr);
}

TEST(ThreadDatabaseTest, WithoutASlotNothingIsStoredAndNullIsRead)
{
    using utility::detail::threadDatabaseSlot;
    ASSERT_TRUE(threadDatabaseSlot.IsAllocated());
    SetThreadDatabase(firstDatabase);
    const auto slot = std::exchange(threadDatabaseSlot, utility::platform::ThreadSlot());
    EXPECT_EQ(GetThreadDatabase(), nullptr);
    SetThreadDatabase(secondDatabase);
    EXPECT_EQ(GetThreadDatabase(), nullptr);
    threadDatabaseSlot = slot;
    EXPECT_EQ(GetThreadDatabase(), firstDatabase);
    SetThreadDatabase(nullptr);
}
