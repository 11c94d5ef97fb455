#include "utility/memory/NodeAllocator.h"

#include "tests/support/ForwardingHeap.h"
#include "tests/support/KeepNewHandler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

static_assert(!std::is_polymorphic_v<CQLMNodeAllocator>);
static_assert(!std::is_copy_constructible_v<CQLMNodeAllocator> && !std::is_copy_assignable_v<CQLMNodeAllocator>);

namespace
{

constexpr std::size_t listsSize = 256;
constexpr std::size_t chunkSize = 524256;
constexpr std::size_t carvedSize = 524224;

/// What an allocator and the end of a chunk are made of.
struct Fields
{
    std::int32_t shift;
    std::int32_t alignment;
    std::int32_t freelistCount;
    std::uint64_t maxNodeSize;
    std::uint64_t chunkSize;
    char* freelists;
    char* chunks;
};
static_assert(sizeof(Fields) == sizeof(CQLMNodeAllocator));

struct Footer
{
    char* start;
    char* free;
    char* end;
    char* next;
    bool operator==(const Footer&) const = default;
};

template <class Record>
Record Read(const void* bytes)
{
    Record record;
    std::memcpy(&record, bytes, sizeof record);
    return record;
}

/// All that may change in an allocator.
struct State
{
    std::array<char*, 32> lists;
    std::vector<Footer> chunks;
    bool operator==(const State&) const = default;
};

State StateOf(const CQLMNodeAllocator& allocator)
{
    const auto fields = Read<Fields>(&allocator);
    State state{Read<decltype(State::lists)>(fields.freelists), {}};
    for (const char* chunk = fields.chunks; chunk != nullptr; chunk = state.chunks.back().next)
        state.chunks.push_back(Read<Footer>(chunk));
    return state;
}

// The private functions are part of the class's shape. An explicit instantiation may name them.
std::size_t FreelistIndex(const CQLMNodeAllocator& allocator, std::size_t size);
std::size_t RoundUp(const CQLMNodeAllocator& allocator, std::size_t size);
bool FreelistAccountsForAll(CQLMNodeAllocator& allocator);
template <auto index, auto roundUp, auto check>
struct PrivateFunctions
{
    friend std::size_t FreelistIndex(const CQLMNodeAllocator& allocator, std::size_t size)
    {
        return (allocator.*index)(size);
    }
    friend std::size_t RoundUp(const CQLMNodeAllocator& allocator, std::size_t size)
    {
        return (allocator.*roundUp)(size);
    }
    friend bool FreelistAccountsForAll(CQLMNodeAllocator& allocator) { return (allocator.*check)(); }
};
template struct PrivateFunctions<&CQLMNodeAllocator::FREELIST_INDEX, &CQLMNodeAllocator::round_up,
                                 &CQLMNodeAllocator::CheckFreelistAccountsForAll>;

struct Place
{
    std::size_t chunk;
    std::size_t offset;
    bool operator==(const Place&) const = default;
};

struct NodeAllocatorTest : ::testing::Test
{
    /// Leaves `room` bytes in the newest chunk.
    void FillUpTo(std::size_t room)
    {
        const auto chunks = StateOf(allocator).chunks;
        auto left = chunks.empty() ? carvedSize : static_cast<std::size_t>(chunks[0].end - chunks[0].free);
        for (; left > room + 256; left -= 256)
            allocator.allocate(256);
        allocator.allocate(left - room);
    }
    char* Chunk(std::size_t number) const { return static_cast<char*>(heap.blocks.at(1 + number)); }
    /// Where a new node is, for a heap that was asked for nothing but chunks.
    Place Allocate(std::size_t size)
    {
        const char* const node = static_cast<char*>(allocator.allocate(size));
        std::size_t chunk = 0;
        while (node < Chunk(chunk) || node >= Chunk(chunk) + carvedSize)
            ++chunk;
        return {chunk, static_cast<std::size_t>(node - Chunk(chunk))};
    }

    support::ForwardingHeap heap;
    CQLMNodeAllocator allocator;
};

std::vector<std::size_t> asked;

int GiveUp(std::size_t size)
{
    asked.push_back(size);
    return 0;
}

int TryAgain(std::size_t size)
{
    asked.push_back(size);
    return 1;
}

int ThrowNumber(std::size_t) { throw 7; }

struct NodeAllocatorHandlerTest : NodeAllocatorTest
{
    NodeAllocatorHandlerTest()
    {
        utility::platform::SetNewHandler(nullptr);
        asked.clear();
        heap.failAt = 2;
    }
    const support::KeepNewHandler keep;
};

}

TEST_F(NodeAllocatorTest, HasTheFixedFieldsAndNoChunkAtFirst)
{
    const auto fields = Read<Fields>(&allocator);
    EXPECT_EQ(fields.shift, 3);
    EXPECT_EQ(fields.alignment, 8);
    EXPECT_EQ(fields.freelistCount, 32);
    EXPECT_EQ(fields.maxNodeSize, 256u);
    EXPECT_EQ(fields.chunkSize, chunkSize);
    EXPECT_EQ(fields.freelists, heap.blocks.at(0));
    EXPECT_EQ(fields.chunks, nullptr);
    EXPECT_EQ(heap.requests, std::vector<std::size_t>{listsSize});
    EXPECT_EQ(StateOf(allocator).lists, (std::array<char*, 32>{}));
}

TEST_F(NodeAllocatorTest, FirstNodesAreCarvedFromTheStartOfAChunkOneBehindTheOther)
{
    EXPECT_EQ(Allocate(8), (Place{0, 0}));
    EXPECT_EQ(Allocate(8), (Place{0, 8}));
    EXPECT_EQ(Allocate(250), (Place{0, 16}));
    EXPECT_EQ(Allocate(1), (Place{0, 16 + 256}));
    EXPECT_EQ(heap.requests, (std::vector<std::size_t>{listsSize, chunkSize}));
}

TEST_F(NodeAllocatorTest, FooterIsInTheLast32BytesOfTheChunk)
{
    allocator.allocate(24);
    char* const start = Chunk(0);
    char* const footer = Read<Fields>(&allocator).chunks;
    EXPECT_EQ(footer, start + chunkSize - 32);
    EXPECT_EQ(Read<Footer>(footer), (Footer{start, start + 24, footer, nullptr}));
    FillUpTo(0);
    EXPECT_EQ(Read<Footer>(footer), (Footer{start, footer, footer, nullptr}));
    allocator.allocate(16);
    EXPECT_EQ(Read<Footer>(Chunk(1) + chunkSize - 32),
              (Footer{Chunk(1), Chunk(1) + 16, Chunk(1) + chunkSize - 32, footer}));
}

TEST_F(NodeAllocatorTest, FullChunkHasNoByteToSpare)
{
    for (std::size_t offset = 0; offset < carvedSize; offset += 8)
        ASSERT_EQ(Allocate(8), (Place{0, offset}));
    EXPECT_EQ(Allocate(8), (Place{1, 0}));
}

TEST_F(NodeAllocatorTest, NodesOf256BytesArePooledAndLargerBlocksAreTheHeaps)
{
    void* const node = allocator.allocate(256);
    EXPECT_EQ(node, Chunk(0));
    void* const block = allocator.allocate(257);
    EXPECT_EQ(heap.requests, (std::vector<std::size_t>{listsSize, chunkSize, 257}));
    EXPECT_EQ(block, heap.blocks.back());
    allocator.deallocate(node, 256);
    EXPECT_TRUE(heap.freed.empty());
    EXPECT_EQ(StateOf(allocator).lists[31], node);
    const State before = StateOf(allocator);
    allocator.deallocate(block, 257);
    EXPECT_EQ(heap.freed, std::vector<void*>{block});
    EXPECT_EQ(StateOf(allocator), before);
}

TEST_F(NodeAllocatorTest, NodeIsReusedForAnyRequestOfItsClass)
{
    void* const node = allocator.allocate(20);
    for (const std::size_t size : {17u, 24u, 18u})
    {
        allocator.deallocate(node, 24);
        EXPECT_EQ(allocator.allocate(size), node) << size;
    }
    allocator.deallocate(node, 24);
    EXPECT_NE(allocator.allocate(16), node);
    EXPECT_NE(allocator.allocate(25), node);
}

TEST_F(NodeAllocatorTest, NodeReleasedLastIsReusedFirst)
{
    std::array<void*, 100> nodes;
    for (void*& node : nodes)
        node = allocator.allocate(48);
    for (void* const node : nodes)
        allocator.deallocate(node, 48);
    for (std::size_t i = nodes.size(); i-- > 0;)
        EXPECT_EQ(allocator.allocate(48), nodes[i]);
    EXPECT_EQ(allocator.allocate(48), Chunk(0) + 48 * nodes.size());
}

TEST_F(NodeAllocatorTest, FreeNodeHoldsALinkAndKeepsTheRest)
{
    void* const first = allocator.allocate(32);
    auto* const second = static_cast<unsigned char*>(allocator.allocate(32));
    std::iota(second, second + 32, static_cast<unsigned char>(0));
    allocator.deallocate(first, 32);
    allocator.deallocate(second, 32);
    EXPECT_EQ(Read<void*>(second), first);
    for (unsigned char i = 8; i < 32; ++i)
        EXPECT_EQ(second[i], i);
}

TEST_F(NodeAllocatorTest, TooLittleRoomMakesANewChunkThatServesFromThenOn)
{
    FillUpTo(104);
    EXPECT_EQ(Allocate(256), (Place{1, 0}));
    EXPECT_EQ(Allocate(8), (Place{1, 256}));
    EXPECT_EQ(Allocate(104), (Place{1, 264}));
}

TEST_F(NodeAllocatorTest, SecondNewestChunkIsReachedOnceTheNewestCannotServe)
{
    FillUpTo(104);
    EXPECT_EQ(Allocate(256), (Place{1, 0}));
    FillUpTo(8);
    EXPECT_EQ(Allocate(96), (Place{0, carvedSize - 104}));
    EXPECT_EQ(Allocate(8), (Place{1, carvedSize - 8}));
    EXPECT_EQ(Allocate(8), (Place{0, carvedSize - 8}));
    EXPECT_EQ(Allocate(8), (Place{2, 0}));
}

TEST_F(NodeAllocatorTest, OlderChunksAreDeliberatelyNeverLookedAtAgain)
{
    FillUpTo(104);
    EXPECT_EQ(Allocate(256), (Place{1, 0}));
    FillUpTo(0);
    EXPECT_EQ(Allocate(256), (Place{2, 0}));
    FillUpTo(0);
    EXPECT_EQ(Allocate(104), (Place{3, 0}));
}

TEST_F(NodeAllocatorTest, SmallerSizeAtReleaseFilesTheNodeUnderASmallerClass)
{
    void* const node = allocator.allocate(64);
    allocator.deallocate(node, 24);
    EXPECT_NE(allocator.allocate(64), node);
    EXPECT_EQ(allocator.allocate(24), node);
}

TEST_F(NodeAllocatorTest, LargerSizeAtReleaseHandsOutTheNextNodesMemory)
{
    char* const node = static_cast<char*>(allocator.allocate(8));
    EXPECT_EQ(allocator.allocate(8), node + 8);
    allocator.deallocate(node, 16);
    EXPECT_EQ(allocator.allocate(16), node);
}

TEST_F(NodeAllocatorTest, SizeZeroIsOutsideTheContractAsItsClassDoesNotExist)
{
    EXPECT_EQ(FreelistIndex(allocator, 0), 0x1FFF'FFFF'FFFF'FFFFu);
}

TEST_F(NodeAllocatorTest, CheckOfTheListsDeliberatelyChecksNothing)
{
    EXPECT_TRUE(FreelistAccountsForAll(allocator));
    void* const node = allocator.allocate(8);
    allocator.deallocate(node, 8);
    std::memset(heap.blocks.at(0), 0, listsSize);
    EXPECT_TRUE(FreelistAccountsForAll(allocator));
}

TEST(NodeAllocatorLifeTest, EndGivesBackTheListsAndThenTheChunksFromTheNewest)
{
    support::ForwardingHeap heap;
    {
        CQLMNodeAllocator allocator;
        for (std::size_t i = 0; i < 2 * carvedSize / 256 + 1; ++i)
            allocator.allocate(256);
        ASSERT_EQ(heap.blocks.size(), 4u);
        EXPECT_TRUE(heap.freed.empty());
    }
    EXPECT_EQ(heap.freed, (std::vector{heap.blocks[0], heap.blocks[3], heap.blocks[2], heap.blocks[1]}));
}

TEST(NodeAllocatorLifeTest, LargeBlockThatWasNotReleasedOutlivesTheAllocator)
{
    support::ForwardingHeap heap;
    void* block = nullptr;
    {
        CQLMNodeAllocator allocator;
        block = allocator.allocate(300);
        allocator.allocate(30);
    }
    EXPECT_EQ(heap.live, (std::map<void*, std::size_t>{{block, 300}}));
    CQLMNodeAllocator().deallocate(block, 300);
    EXPECT_TRUE(heap.live.empty());
}

TEST(NodeAllocatorLifeTest, AMillionNodesOf24BytesNeedLittleMoreThan24Megabytes)
{
    support::ForwardingHeap heap;
    CQLMNodeAllocator allocator;
    for (int i = 0; i < 1'000'000; ++i)
        allocator.allocate(24);
    const std::size_t chunks = heap.requests.size() - 1;
    EXPECT_EQ(heap.requests.front(), listsSize);
    EXPECT_EQ(std::vector(heap.requests.begin() + 1, heap.requests.end()), std::vector(chunks, chunkSize));
    EXPECT_GE(chunks * chunkSize, 24'000'000u);
    EXPECT_LE(chunks * chunkSize, 24'480'000u);
}

struct SizeClass
{
    std::size_t smallest;
    std::size_t largest;
    std::size_t index;
    std::size_t rounded;
};

struct NodeAllocatorClassTest : NodeAllocatorTest, ::testing::WithParamInterface<SizeClass>
{
};

TEST_P(NodeAllocatorClassTest, HoldsTheSizesUpToAMultipleOf8)
{
    const auto [smallest, largest, index, rounded] = GetParam();
    for (std::size_t size = smallest; size <= largest; ++size)
    {
        EXPECT_EQ(FreelistIndex(allocator, size), index);
        EXPECT_EQ(RoundUp(allocator, size), rounded);
        CQLMNodeAllocator fresh;
        char* const node = static_cast<char*>(fresh.allocate(size));
        State expected = StateOf(fresh);
        EXPECT_EQ(expected.chunks.at(0).free, node + rounded);
        fresh.deallocate(node, size);
        expected.lists[index] = node;
        EXPECT_EQ(StateOf(fresh), expected) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(Classes, NodeAllocatorClassTest,
                         ::testing::Values(SizeClass{1, 8, 0, 8}, SizeClass{9, 16, 1, 16}, SizeClass{17, 24, 2, 24},
                                           SizeClass{121, 128, 15, 128}, SizeClass{249, 256, 31, 256}),
                         [](const auto& test) { return "Of" + std::to_string(test.param.rounded); });

TEST_F(NodeAllocatorHandlerTest, WithoutAHandlerExhaustionIsABadAllocation)
{
    try
    {
        allocator.allocate(24);
        FAIL();
    }
    catch (const std::bad_alloc& failure)
    {
        EXPECT_EQ(failure.what(), std::string("bad allocation"));
    }
}

TEST_F(NodeAllocatorHandlerTest, HandlerThatGivesUpIsAskedOnceWithTheSizeOfTheRequest)
{
    utility::platform::SetNewHandler(&GiveUp);
    EXPECT_THROW(allocator.allocate(1000), std::bad_alloc);
    EXPECT_EQ(asked, std::vector<std::size_t>{1000});
    heap.failAt = 3;
    EXPECT_THROW(allocator.allocate(24), std::bad_alloc);
    EXPECT_EQ(asked, (std::vector<std::size_t>{1000, chunkSize}));
}

TEST_F(NodeAllocatorHandlerTest, RequestIsTriedAgainWhenTheHandlerSaysSo)
{
    utility::platform::SetNewHandler(&TryAgain);
    EXPECT_NE(allocator.allocate(1000), nullptr);
    EXPECT_EQ(asked, std::vector<std::size_t>{1000});
    EXPECT_EQ(heap.requests, (std::vector<std::size_t>{listsSize, 1000, 1000}));
    heap.Free(heap.blocks.back());
}

TEST_F(NodeAllocatorHandlerTest, HandlerOfTheHostIsAskedAsPlainNewAsksIt)
{
    static int calls = 0;
    std::set_new_handler([] { ++calls; });
    EXPECT_EQ(Allocate(24), (Place{0, 0}));
    EXPECT_EQ(calls, 1);
}

TEST_F(NodeAllocatorHandlerTest, WhatTheHandlerThrowsPasses)
{
    utility::platform::SetNewHandler(&ThrowNumber);
    const State before = StateOf(allocator);
    EXPECT_THROW(allocator.allocate(24), int);
    EXPECT_EQ(StateOf(allocator), before);
}

TEST(NodeAllocatorExhaustionTest, AtEveryRequestTheAllocatorStaysAsItWasAndNothingIsLost)
{
    const support::KeepNewHandler keep;
    utility::platform::SetNewHandler(nullptr);
    std::size_t failures = 0;
    for (bool failed = true; failed; failures += failed)
    {
        support::ForwardingHeap heap;
        heap.failAt = failures + 1;
        failed = false;
        // Whatever fails succeeds when it is tried again.
        const auto make = [&failed](auto request, auto state)
        {
            const auto before = state();
            try
            {
                return request();
            }
            catch (const std::bad_alloc&)
            {
                failed = true;
                EXPECT_EQ(state(), before);
                return request();
            }
        };
        auto allocator =
            make([] { return std::make_unique<CQLMNodeAllocator>(); }, [&heap] { return heap.live.size(); });
        const auto allocate = [&](std::size_t size)
        { return make([&] { return allocator->allocate(size); }, [&] { return StateOf(*allocator); }); };
        void* const large = allocate(300);
        allocator->deallocate(allocate(24), 24);
        for (std::size_t i = 0; i < 2 * carvedSize / 256; ++i)
            allocate(256);
        void* const larger = allocate(5000);
        allocator->deallocate(large, 300);
        allocator->deallocate(larger, 5000);
        allocator.reset();
        EXPECT_TRUE(heap.live.empty());
    }
    // The lists, two large blocks and three chunks.
    EXPECT_EQ(failures, 6u);
}
