#include "utility/platform/Heap.h"

#include "tests/support/KeepNewHandler.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <vector>

using namespace utility::platform;

namespace
{

std::vector<std::size_t> asked;

int GiveUp(std::size_t size)
{
    asked.push_back(size);
    return 0;
}

int TryAgainTwice(std::size_t size)
{
    asked.push_back(size);
    return asked.size() <= 2;
}

int standardCalls;

void CountCall() { ++standardCalls; }

/// Without a handler, and in the end the one that was there before.
struct NewHandlerTest : ::testing::Test
{
    NewHandlerTest()
    {
        std::set_new_handler(nullptr);
        asked.clear();
        standardCalls = 0;
    }
    const support::KeepNewHandler keep;
};

}

TEST(HeapTest, BlockIsAlignedForAnyOrdinaryTypeAndCanBeWritten)
{
    void* const block = Heap().Allocate(100);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0u);
    std::memset(block, 1, 100);
    Heap().Free(block);
    Heap().Free(nullptr);
}

TEST_F(NewHandlerTest, ThereMayBeNone)
{
    EXPECT_EQ(QueryNewHandler(), nullptr);
    EXPECT_EQ(SetNewHandler(nullptr), nullptr);
}

TEST_F(NewHandlerTest, SettingOneReturnsThePreviousOne)
{
    EXPECT_EQ(SetNewHandler(&GiveUp), nullptr);
    EXPECT_EQ(QueryNewHandler(), &GiveUp);
    EXPECT_EQ(SetNewHandler(&TryAgainTwice), &GiveUp);
    EXPECT_EQ(QueryNewHandler(), &TryAgainTwice);
    EXPECT_EQ(SetNewHandler(nullptr), &TryAgainTwice);
    EXPECT_EQ(QueryNewHandler(), nullptr);
    EXPECT_EQ(std::get_new_handler(), nullptr);
    EXPECT_TRUE(asked.empty());
}

TEST_F(NewHandlerTest, PlainNewThatFailsCallsItWithoutASize)
{
    SetNewHandler(&TryAgainTwice);
    std::get_new_handler()();
    EXPECT_EQ(asked, std::vector<std::size_t>{0});
}

TEST_F(NewHandlerTest, PlainNewThrowsWhenItGivesUp)
{
    SetNewHandler(&GiveUp);
    EXPECT_THROW(std::get_new_handler()(), std::bad_alloc);
    EXPECT_EQ(asked, std::vector<std::size_t>{0});
}

// The sanitizers' own `new` ends the process instead.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(NewHandlerTest, PlainNewTriesAgainUntilItGivesUp)
{
    const volatile std::size_t tooMuch = std::numeric_limits<std::size_t>::max() / 2;
    SetNewHandler(&TryAgainTwice);
    EXPECT_THROW(::operator delete(::operator new(tooMuch)), std::bad_alloc);
    EXPECT_EQ(asked, (std::vector<std::size_t>{0, 0, 0}));
}
#endif

TEST_F(NewHandlerTest, StandardHandlerIsFoundAndIsWorthTryingAgain)
{
    std::set_new_handler(&CountCall);
    const NewHandler found = QueryNewHandler();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found(24), 1);
    EXPECT_EQ(standardCalls, 1);
}

TEST_F(NewHandlerTest, StandardHandlerCanBePutBack)
{
    std::set_new_handler(&CountCall);
    const NewHandler previous = SetNewHandler(&GiveUp);
    EXPECT_NE(std::get_new_handler(), &CountCall);
    EXPECT_EQ(SetNewHandler(previous), &GiveUp);
    EXPECT_EQ(std::get_new_handler(), &CountCall);
    EXPECT_EQ(QueryNewHandler(), previous);
}

TEST(ThrowBadAllocationTest, TextIsTheSameOnEverySystem)
{
    try
    {
        ThrowBadAllocation();
    }
    catch (const std::bad_alloc& failure)
    {
        EXPECT_EQ(failure.what(), std::string("bad allocation"));
    }
}
