#include "utility/memory/ThreadAllocator.h"

#include "tests/support/DeliberateLeak.h"
#include "tests/support/ForwardingHeap.h"
#include "tests/support/MissingAllocator.h"
#include "tests/support/WithoutThreadSlot.h"
#include "utility/platform/LoadOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

static_assert(sizeof(CThreadAllocatorManager) == sizeof(bool));
static_assert(!std::is_copy_constructible_v<CThreadAllocatorManager>);
static_assert(std::is_copy_assignable_v<CThreadAllocatorManager>);

namespace
{

/// Made right after what the library does at its load, and gone at the end of the process, at which nothing of that is.
struct EarlyObject
{
    EarlyObject() : allocator(GetThreadAllocator()), node(allocator->allocate(24)) {}
    EarlyObject(const EarlyObject&) = delete;
    EarlyObject& operator=(const EarlyObject&) = delete;
    ~EarlyObject() { GetThreadAllocator()->deallocate(node, 24); }

    CQLMNodeAllocator* allocator;
    void* node;
};
[[gnu::init_priority(utility::platform::restIsMade + 1)]] const EarlyObject earlyObject;

template <class Function>
void OnNewThread(Function function)
{
    std::thread(function).join();
}

bool HasAllocator()
{
    support::MissingAllocator assertion;
    return GetThreadAllocator() != nullptr;
}

using Texts = std::vector<std::string>;

struct MissingThreadAllocatorTest : ::testing::Test
{
    void Ask()
    {
        OnNewThread([] { EXPECT_EQ(GetThreadAllocator(), nullptr); });
    }
    support::MissingAllocator assertion;
};

struct Block
{
    unsigned char* bytes;
    std::size_t size;
    unsigned char content;
};

/// Has blocks of random sizes come and go, and says how many lost their content.
std::size_t Churn(CQLMNodeAllocator& allocator, unsigned int seed)
{
    std::mt19937 random(seed);
    std::vector<Block> blocks;
    std::size_t spoilt = 0;
    const auto release = [&](std::size_t index)
    {
        std::swap(blocks[index], blocks.back());
        const Block block = blocks.back();
        blocks.pop_back();
        spoilt +=
            static_cast<std::size_t>(std::count(block.bytes, block.bytes + block.size, block.content)) != block.size;
        allocator.deallocate(block.bytes, block.size);
    };
    for (int i = 0; i < 20'000; ++i)
    {
        if (blocks.size() > random() % 2000)
            release(random() % blocks.size());
        const std::size_t size = 1 + random() % 300;
        Block block{static_cast<unsigned char*>(allocator.allocate(size)), size, static_cast<unsigned char>(random())};
        std::fill_n(block.bytes, size, block.content);
        blocks.push_back(block);
    }
    while (!blocks.empty())
        release(blocks.size() - 1);
    return spoilt;
}

}

TEST(ThreadAllocatorTest, LoadingThreadHasAnAllocatorBeforeAnybodyElseIsInitialised)
{
    EXPECT_NE(earlyObject.allocator, nullptr);
    EXPECT_EQ(GetThreadAllocator(), earlyObject.allocator);
}

TEST_F(MissingThreadAllocatorTest, NewThreadHasNoneWhichIsAnAssertion)
{
    Ask();
    EXPECT_EQ(assertion.desktop.calls, (Texts{"take quit", "ask"}));
    ASSERT_EQ(assertion.desktop.boxes.size(), 1u);
    EXPECT_EQ(assertion.desktop.boxes[0], "Debug Assertion Failed!\n\nProgram: C:\\host.exe\nFile: QLMNodeAllocator\n"
                                          "Line: 381\nSeverity: 0\n\n(Press Retry to debug the application)");
    EXPECT_EQ(assertion.debugger.breaks, 0);
    Ask();
    EXPECT_EQ(assertion.desktop.boxes.size(), 2u);
}

TEST_F(MissingThreadAllocatorTest, RetryBreaksIntoTheDebuggerAndControlDoesNotCount)
{
    assertion.desktop.answer = utility::platform::BoxAnswer::retry;
    assertion.desktop.isControlKeyDown = true;
    Ask();
    EXPECT_EQ(assertion.debugger.breaks, 1);
    Ask();
    EXPECT_EQ(assertion.desktop.boxes.size(), 2u);
    EXPECT_EQ(assertion.debugger.breaks, 2);
}

TEST_F(MissingThreadAllocatorTest, ControlHeldAtIgnoreSilencesItForAllThreads)
{
    assertion.desktop.isControlKeyDown = true;
    Ask();
    assertion.desktop.isControlKeyDown = false;
    assertion.desktop.answer = utility::platform::BoxAnswer::retry;
    Ask();
    EXPECT_EQ(assertion.desktop.boxes.size(), 1u);
    EXPECT_EQ(assertion.debugger.breaks, 0);
    EXPECT_EQ(assertion.debugger.narrow, Texts{"QLMNodeAllocator(381) : Assertion failed!\n"});
}

TEST_F(MissingThreadAllocatorTest, PendingRequestToQuitSurvivesTheBox)
{
    assertion.desktop.quit = 7;
    std::optional<int> seen = 1;
    assertion.desktop.whileAsking = [&] { seen = assertion.desktop.quit; };
    Ask();
    EXPECT_EQ(seen, std::nullopt);
    EXPECT_EQ(assertion.desktop.quit, 7);
    EXPECT_EQ(assertion.desktop.calls, (Texts{"take quit", "ask", "post quit"}));
}

TEST_F(MissingThreadAllocatorTest, WithoutASlotNoThreadHasOne)
{
    const support::WithoutThreadSlot scope(utility::detail::threadAllocatorSlot);
    EXPECT_EQ(GetThreadAllocator(), nullptr);
    EXPECT_EQ(ResetThreadAllocator(false), nullptr);
    EXPECT_EQ(assertion.desktop.boxes.size(), 1u);
}

TEST(ThreadAllocatorManagerTest, OutermostOwnsTheAllocatorAndInnerOnesDoNothing)
{
    OnNewThread(
        []
        {
            {
                const CThreadAllocatorManager outer;
                CQLMNodeAllocator* const allocator = GetThreadAllocator();
                ASSERT_NE(allocator, nullptr);
                {
                    const CThreadAllocatorManager inner;
                    EXPECT_EQ(GetThreadAllocator(), allocator);
                }
                EXPECT_EQ(GetThreadAllocator(), allocator);
            }
            EXPECT_FALSE(HasAllocator());
        });
}

TEST(ThreadAllocatorManagerTest, AllocatorThatWasThereBeforeStays)
{
    OnNewThread(
        []
        {
            CQLMNodeAllocator* const allocator = ResetThreadAllocator(true);
            {
                const CThreadAllocatorManager manager;
                EXPECT_EQ(GetThreadAllocator(), allocator);
            }
            EXPECT_EQ(GetThreadAllocator(), allocator);
            ResetThreadAllocator(false);
        });
}

TEST(ThreadAllocatorManagerTest, ThreadsHaveAllocatorsOfTheirOwn)
{
    CQLMNodeAllocator* other = nullptr;
    OnNewThread(
        [&other]
        {
            const CThreadAllocatorManager manager;
            other = GetThreadAllocator();
        });
    EXPECT_NE(other, nullptr);
    EXPECT_NE(other, GetThreadAllocator());
}

TEST(ThreadAllocatorManagerTest, AssignmentDeliberatelyCopiesWhoDestroysTheAllocator)
{
    OnNewThread(
        []
        {
            {
                CThreadAllocatorManager owner;
                const CThreadAllocatorManager other;
                owner = other;
            }
            EXPECT_TRUE(HasAllocator());
            {
                CThreadAllocatorManager other;
                ResetThreadAllocator(false);
                {
                    const CThreadAllocatorManager owner;
                    other = owner;
                }
                EXPECT_FALSE(HasAllocator());
                ResetThreadAllocator(true);
            }
            EXPECT_FALSE(HasAllocator());
        });
}

TEST(ThreadAllocatorManagerTest, WithoutASlotItsAllocatorIsDeliberatelyLost)
{
    const support::DeliberateLeak leak;
    const support::WithoutThreadSlot scope(utility::detail::threadAllocatorSlot);
    support::ForwardingHeap heap;
    {
        const CThreadAllocatorManager manager;
        EXPECT_FALSE(HasAllocator());
    }
    EXPECT_EQ(heap.requests, std::vector<std::size_t>{256});
    EXPECT_EQ(heap.live.size(), 1u);
}

TEST(ThreadAllocatorManagerTest, ThreadThatEndsWithoutOneLeavesItsAllocatorBehind)
{
    CQLMNodeAllocator* allocator = nullptr;
    OnNewThread([&allocator] { allocator = ResetThreadAllocator(true); });
    const std::unique_ptr<CQLMNodeAllocator> owner(allocator);
    EXPECT_NE(owner->allocate(24), nullptr);
}

TEST(ResetThreadAllocatorTest, WithoutAnAllocatorThereIsNothingToDestroy)
{
    OnNewThread(
        []
        {
            support::ForwardingHeap heap;
            EXPECT_EQ(ResetThreadAllocator(false), nullptr);
            EXPECT_FALSE(HasAllocator());
            EXPECT_TRUE(heap.requests.empty() && heap.freed.empty());
        });
}

TEST(ResetThreadAllocatorTest, NewAllocatorTakesThePlaceOfTheEarlierOneWhoseNodesAreGone)
{
    OnNewThread(
        []
        {
            support::ForwardingHeap heap;
            CQLMNodeAllocator* allocator = ResetThreadAllocator(true);
            EXPECT_EQ(GetThreadAllocator(), allocator);
            allocator->allocate(24);
            allocator = ResetThreadAllocator(true);
            ASSERT_NE(allocator, nullptr);
            EXPECT_EQ(GetThreadAllocator(), allocator);
            EXPECT_EQ(heap.freed, (std::vector{heap.blocks[0], heap.blocks[1]}));
            EXPECT_EQ(heap.blocks.size(), 3u);
            EXPECT_EQ(ResetThreadAllocator(false), nullptr);
            EXPECT_FALSE(HasAllocator());
            EXPECT_TRUE(heap.live.empty());
        });
}

TEST(ResetThreadAllocatorTest, LargeBlockOutlivesTheAllocator)
{
    OnNewThread(
        []
        {
            const CThreadAllocatorManager manager;
            auto* const block = static_cast<unsigned char*>(GetThreadAllocator()->allocate(1000));
            std::fill_n(block, 1000, static_cast<unsigned char>(1));
            ResetThreadAllocator(true);
            EXPECT_EQ(std::count(block, block + 1000, 1), 1000);
            GetThreadAllocator()->deallocate(block, 1000);
        });
}

TEST(ResetThreadAllocatorTest, WhenThereIsNoMemoryTheThreadHasNone)
{
    OnNewThread(
        []
        {
            support::ForwardingHeap heap;
            ResetThreadAllocator(true);
            heap.failAt = 2;
            EXPECT_THROW(ResetThreadAllocator(true), std::bad_alloc);
            EXPECT_FALSE(HasAllocator());
            heap.failAt = 3;
            EXPECT_THROW(CThreadAllocatorManager(), std::bad_alloc);
            EXPECT_FALSE(HasAllocator());
            EXPECT_TRUE(heap.live.empty());
        });
}

TEST(ResetThreadAllocatorTest, WithoutASlotTheNewAllocatorIsTheCallersAlone)
{
    const support::WithoutThreadSlot scope(utility::detail::threadAllocatorSlot);
    const std::unique_ptr<CQLMNodeAllocator> allocator(ResetThreadAllocator(true));
    ASSERT_NE(allocator, nullptr);
    EXPECT_FALSE(HasAllocator());
}

TEST(ThreadAllocatorTest, ManyThreadsKeepTheirNodesApart)
{
    std::vector<std::size_t> spoilt(8, 1);
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < spoilt.size(); ++i)
        threads.emplace_back(
            [i, &spoilt]
            {
                const CThreadAllocatorManager manager;
                spoilt[i] = 0;
                for (unsigned int round = 0; round < 3; ++round)
                {
                    spoilt[i] += Churn(*GetThreadAllocator(), 10 * i + round);
                    ResetThreadAllocator(true);
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(spoilt, std::vector<std::size_t>(spoilt.size(), 0));
}
