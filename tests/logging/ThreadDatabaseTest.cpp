#include "utility/logging/ThreadDatabase.h"

#include "tests/support/WithoutThreadSlot.h"

#include <gtest/gtest.h>

#include <thread>

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
    {
        const support::WithoutThreadSlot scope(threadDatabaseSlot);
        EXPECT_EQ(GetThreadDatabase(), nullptr);
        SetThreadDatabase(secondDatabase);
        EXPECT_EQ(GetThreadDatabase(), nullptr);
    }
    EXPECT_EQ(GetThreadDatabase(), firstDatabase);
    SetThreadDatabase(nullptr);
}
