#include "utility/memory/ThreadNodeAllocator.h"

#include "tests/support/ForwardingHeap.h"
#include "tests/support/MissingAllocator.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <deque>
#include <forward_list>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <new>
#include <thread>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace
{

template <class T>
using Traits = std::allocator_traits<CThreadNodeAllocator<T>>;
static_assert(std::is_same_v<Traits<int>::rebind_alloc<char>, CThreadNodeAllocator<char>>);
static_assert(!Traits<int>::is_always_equal::value);
static_assert(!Traits<int>::propagate_on_container_copy_assignment::value);
static_assert(!Traits<int>::propagate_on_container_move_assignment::value);
static_assert(!Traits<int>::propagate_on_container_swap::value);

using List = std::list<int, CThreadNodeAllocator<int>>;
using Numbers = std::vector<int>;

// Of the host: gone before the allocator of the thread that loaded the library.
const List listUntilExit{1, 2, 3};

template <std::size_t alignment>
struct alignas(alignment) Aligned
{
    std::array<unsigned char, alignment> bytes;
};

struct CThreadNodeAllocatorTest : ::testing::Test
{
    /// With an allocator for that thread.
    template <class Function>
    void OnNewThread(Function function)
    {
        std::thread(
            [&function]
            {
                const CThreadAllocatorManager manager;
                function();
            })
            .join();
    }
};

template <class Container>
struct NodeContainerThreadTest : CThreadNodeAllocatorTest
{
};

template <class T>
T Value(int number)
{
    if constexpr (std::is_same_v<T, int>)
        return number;
    else
        return {number, Numbers(30, number)};
}

using Entry = std::pair<const int, Numbers>;
using Containers =
    ::testing::Types<List, std::map<int, Numbers, std::less<>, CThreadNodeAllocator<Entry>>,
                     std::unordered_map<int, Numbers, std::hash<int>, std::equal_to<>, CThreadNodeAllocator<Entry>>,
                     std::deque<int, CThreadNodeAllocator<int>>, std::vector<int, CThreadNodeAllocator<int>>>;
TYPED_TEST_SUITE(NodeContainerThreadTest, Containers);

template <class Container>
Container Filled(int count)
{
    Container container;
    for (int i = 0; i < count; ++i)
        container.insert(container.end(), Value<typename Container::value_type>(i));
    return container;
}

}

TYPED_TEST(NodeContainerThreadTest, IsFilledCopiedMovedSwappedAndEmptied)
{
    this->OnNewThread(
        []
        {
            auto container = Filled<TypeParam>(1000);
            auto copy = container;
            EXPECT_EQ(copy, container);
            EXPECT_EQ(copy.get_allocator(), container.get_allocator());
            TypeParam empty;
            std::swap(copy, empty);
            EXPECT_TRUE(copy.empty());
            EXPECT_EQ(empty, container);
            copy = std::move(empty);
            EXPECT_EQ(copy, container);
            copy = TypeParam();
            EXPECT_TRUE(copy.empty());
            container.clear();
            EXPECT_EQ(container, copy);
        });
}

TYPED_TEST(NodeContainerThreadTest, OfAnotherThreadIsCopiedAndMovedIntoOwnNodes)
{
    const auto expected = Filled<TypeParam>(1000);
    auto theirs = expected;
    TypeParam filledHere;
    this->OnNewThread(
        [&]
        {
            TypeParam assigned;
            assigned = theirs;
            EXPECT_EQ(assigned, expected);
            const TypeParam copy(theirs);
            EXPECT_EQ(copy, expected);
            TypeParam moved;
            moved = std::move(theirs);
            EXPECT_EQ(moved, expected);
            for (const TypeParam* const ours : {&std::as_const(assigned), &copy, &std::as_const(moved)})
                EXPECT_EQ(ours->get_allocator(), CThreadNodeAllocator<int>());
        });
    EXPECT_EQ(theirs.get_allocator(), CThreadNodeAllocator<int>());
}

TEST_F(CThreadNodeAllocatorTest, ContainerInACopiedContainerBelongsToTheCopyingThreadToo)
{
    const std::list<List, CThreadNodeAllocator<List>> theirs{{1, 2}, {3}};
    OnNewThread(
        [&theirs]
        {
            const auto copy = theirs; // NOLINT(performance-unnecessary-copy-initialization): what this is about
            EXPECT_EQ(copy, theirs);
            EXPECT_EQ(copy.front().get_allocator(), CThreadNodeAllocator<int>());
        });
}

TEST_F(CThreadNodeAllocatorTest, NodesAreThoseOfTheThreadsAllocator)
{
    OnNewThread(
        []
        {
            support::ForwardingHeap heap;
            const auto list = Filled<List>(10'000);
            EXPECT_EQ(heap.requests, std::vector<std::size_t>{524256});
            const auto* const start = static_cast<const char*>(heap.blocks.at(0));
            for (const int& element : list)
            {
                const auto* const place = reinterpret_cast<const char*>(&element);
                ASSERT_TRUE(start < place && place < start + 524224);
            }
        });
}

TEST_F(CThreadNodeAllocatorTest, ReleasedNodeIsReused)
{
    OnNewThread(
        []
        {
            List list{1, 2};
            const int* const place = &list.back();
            list.pop_back();
            list.push_back(3);
            EXPECT_EQ(&list.back(), place);
        });
}

TEST_F(CThreadNodeAllocatorTest, ArraysOfMoreThan256BytesAreTheHeaps)
{
    OnNewThread(
        []
        {
            support::ForwardingHeap heap;
            CThreadNodeAllocator<int> allocator;
            int* const pooled = allocator.allocate(64);
            int* const large = allocator.allocate(65);
            EXPECT_EQ(heap.requests, (std::vector<std::size_t>{524256, 260}));
            allocator.deallocate(large, 65);
            allocator.deallocate(pooled, 64);
            EXPECT_EQ(heap.live.size(), 1u);
        });
}

TEST_F(CThreadNodeAllocatorTest, ZeroObjectsAreAllocatedAndReleased)
{
    CThreadNodeAllocator<int> allocator;
    int* const none = allocator.allocate(0);
    allocator.deallocate(none, 0);
    int* const one = allocator.allocate(1);
    EXPECT_EQ(one, none);
    allocator.deallocate(one, 1);
}

TEST_F(CThreadNodeAllocatorTest, MoreObjectsThanMemoryCanHoldAreRefused)
{
    const std::size_t tooMany = std::numeric_limits<std::size_t>::max() / 4 + 1;
    EXPECT_THROW(static_cast<void>(CThreadNodeAllocator<int>().allocate(tooMany)), std::bad_array_new_length);
    EXPECT_THROW(static_cast<void>(CThreadNodeAllocator<Aligned<64>>().allocate(tooMany)), std::bad_array_new_length);
}

template <class T>
struct NodeAlignmentTest : CThreadNodeAllocatorTest
{
};
using AlignedTypes = ::testing::Types<Aligned<1>, Aligned<8>, Aligned<16>, Aligned<64>, Aligned<4096>>;
TYPED_TEST_SUITE(NodeAlignmentTest, AlignedTypes);

TYPED_TEST(NodeAlignmentTest, OfTheTypeIsKept)
{
    std::map<int, TypeParam, std::less<>, CThreadNodeAllocator<std::pair<const int, TypeParam>>> map;
    for (int i = 0; i < 100; ++i)
    {
        TypeParam& element = map[i];
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&element) % alignof(TypeParam), 0u);
        element.bytes.fill(static_cast<unsigned char>(i));
    }
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(map[i].bytes.front() + map[i].bytes.back(), 2 * i);
}

TEST_F(CThreadNodeAllocatorTest, IsEqualToThatOfTheSameThreadWhateverTheType)
{
    const CThreadNodeAllocator<int> here;
    EXPECT_EQ(here, CThreadNodeAllocator<int>());
    EXPECT_EQ(here, CThreadNodeAllocator<char>(here));
    OnNewThread(
        [&here]
        {
            EXPECT_NE(here, CThreadNodeAllocator<int>());
            EXPECT_NE(here, CThreadNodeAllocator<char>());
            EXPECT_EQ(Traits<int>::select_on_container_copy_construction(here), CThreadNodeAllocator<int>());
        });
}

TEST_F(CThreadNodeAllocatorTest, WithoutAThreadAllocatorMakingOneFailsAfterTheAssertion)
{
    const List theirs{1};
    support::MissingAllocator assertion;
    std::thread(
        [&theirs]
        {
            EXPECT_THROW(List(), std::bad_alloc);
            EXPECT_THROW(List{theirs}, std::bad_alloc);
        })
        .join();
    EXPECT_EQ(assertion.desktop.boxes.size(), 2u);
}

TEST_F(CThreadNodeAllocatorTest, ContainerStaysAsItWasWhenThereIsNoMemory)
{
    OnNewThread(
        []
        {
            support::ForwardingHeap heap;
            auto list = Filled<List>(1000);
            heap.failAt = 2;
            int count = 1000;
            EXPECT_THROW(for (;; ++count) list.push_back(count), std::bad_alloc);
            EXPECT_EQ(list, Filled<List>(count));
        });
}

TEST_F(CThreadNodeAllocatorTest, StaticContainerOfTheLoadingThreadLastsUntilExit)
{
    EXPECT_EQ(listUntilExit, (List{1, 2, 3}));
}
