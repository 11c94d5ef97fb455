// Small objects: a pair of allocation and release, a batch released in random order, sizes that come and go, and two
// containers filled and emptied. All memory is warm: the same work was done before, and each node is written to.
//
// The general allocators are loaded so that they serve nobody but their benchmarks, and it is checked that they do.
// They keep the sizes of their blocks and serve all threads, which the pools do not. Boost.Pool has nodes of one size:
// there is a pool for each multiple of 8, and larger blocks are the heap's, as in the library. The containers of the
// library have its adaptor, those of std::pmr the standard's, the others the one below.

#include "utility/memory/ThreadNodeAllocator.h"

#include <benchmark/benchmark.h>
#include <boost/pool/pool.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <list>
#include <malloc.h>
#include <map>
#include <memory_resource>
#include <numeric>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

constexpr std::size_t pairSize = 24;
constexpr std::size_t batchSize = 48;
constexpr std::size_t largestSize = 256;
constexpr int elementCount = 1000;

class Utility
{
public:
    void* Allocate(std::size_t size) { return m_pool->allocate(size); }
    void Release(void* node, std::size_t size) { m_pool->deallocate(node, size); }

private:
    // A new one, as the other pools are.
    CQLMNodeAllocator* m_pool = ResetThreadAllocator(true);
};

class CLibrary
{
public:
    void* Allocate(std::size_t size) { return std::malloc(size); }
    void Release(void* node, std::size_t) { std::free(node); }
};

/// Null, or what is wrong if it takes its memory from the C library's heap, or does not.
template <class Memory>
const char* WrongHeap(Memory& memory, bool isTheCLibrarys)
{
    const auto inUse = []
    {
        const struct mallinfo2 information = ::mallinfo2();
        return information.uordblks + information.hblkhd;
    };
    const std::size_t before = inUse();
    void* const block = memory.Allocate(100'000);
    benchmark::DoNotOptimize(block);
    const bool isTaken = inUse() != before;
    memory.Release(block, 100'000);
    return isTaken == isTheCLibrarys ? nullptr : "serves from another heap";
}

template <const char* file>
class Loaded
{
public:
    Loaded()
    {
        void* const library = ::dlopen(file, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
        {
            error = ::dlerror();
            return;
        }
        m_allocate = reinterpret_cast<decltype(m_allocate)>(::dlsym(library, "malloc"));
        m_release = reinterpret_cast<decltype(m_release)>(::dlsym(library, "free"));
        error = WrongHeap(*this, false);
        for (void* const function : {reinterpret_cast<void*>(m_allocate), reinterpret_cast<void*>(m_release)})
            if (Dl_info place{}; ::dladdr(function, &place) == 0 || std::strstr(place.dli_fname, file) == nullptr)
                error = "has the functions of another library";
    }

    void* Allocate(std::size_t size) { return m_allocate(size); }
    void Release(void* node, std::size_t) { m_release(node); }

    const char* error = nullptr;

private:
    void* (*m_allocate)(std::size_t) = nullptr;
    void (*m_release)(void*) = nullptr;
};

constexpr char mimallocFile[] = "libmimalloc.so.2.0";
constexpr char jemallocFile[] = "libjemalloc.so.2";
constexpr char tcmallocFile[] = "libtcmalloc_minimal.so.4";

class PmrPool
{
public:
    void* Allocate(std::size_t size) { return resource.allocate(size, 8); }
    void Release(void* node, std::size_t size) { resource.deallocate(node, size, 8); }

    std::pmr::unsynchronized_pool_resource resource;
};

class BoostPools
{
public:
    void* Allocate(std::size_t size) { return size > largestSize ? std::malloc(size) : Pool(size).malloc(); }
    void Release(void* node, std::size_t size) { size > largestSize ? std::free(node) : Pool(size).free(node); }

private:
    boost::pool<>& Pool(std::size_t size) { return m_pools[(size - 1) / 8]; }

    template <std::size_t... indices>
    static std::array<boost::pool<>, sizeof...(indices)> Pools(std::index_sequence<indices...>)
    {
        return {boost::pool<>(8 * (indices + 1))...};
    }
    std::array<boost::pool<>, largestSize / 8> m_pools = Pools(std::make_index_sequence<largestSize / 8>());
};

template <class T, class Memory>
class Adaptor
{
public:
    using value_type = T;

    explicit Adaptor(Memory& m) : memory(&m) {}
    template <class Other>
    Adaptor(const Adaptor<Other, Memory>& other) : memory(other.memory)
    {
    }

    T* allocate(std::size_t count) { return static_cast<T*>(memory->Allocate(count * sizeof(T))); }
    void deallocate(T* objects, std::size_t count) { memory->Release(objects, count * sizeof(T)); }
    template <class Other>
    bool operator==(const Adaptor<Other, Memory>& other) const
    {
        return memory == other.memory;
    }

    Memory* memory;
};

template <class T, class Memory>
Adaptor<T, Memory> AllocatorOf(Memory& memory)
{
    return Adaptor<T, Memory>(memory);
}

template <class T>
CThreadNodeAllocator<T> AllocatorOf(Utility&)
{
    return {};
}

template <class T>
std::pmr::polymorphic_allocator<T> AllocatorOf(PmrPool& memory)
{
    return &memory.resource;
}

template <class Memory>
const char* Problem(Memory&)
{
    return nullptr;
}

const char* Problem(CLibrary& memory) { return WrongHeap(memory, true); }

template <const char* file>
const char* Problem(Loaded<file>& memory)
{
    return memory.error;
}

/// Measures `work(memory)`, which was done once before.
template <class Memory, class Work>
void Measure(benchmark::State& state, Work work)
{
    Memory memory;
    if (const char* const problem = Problem(memory))
        return state.SkipWithError(problem);
    work(memory);
    for (auto _ : state)
        work(memory);
}

/// The node, which the compiler has to have and to write to. It may keep in registers what else it knows.
void* Written(void* node)
{
    auto& content = *static_cast<std::uint64_t*>(node);
    content = 1;
    asm volatile("" : "+m"(content));
    return node;
}

template <class Memory>
void Pair(benchmark::State& state)
{
    std::size_t size = pairSize;
    Measure<Memory>(state,
                    [&size](Memory& memory)
                    {
                        benchmark::DoNotOptimize(size);
                        memory.Release(Written(memory.Allocate(size)), size);
                    });
}

template <class Memory, std::size_t batchCount>
void Batch(benchmark::State& state)
{
    std::vector<std::uint32_t> order(batchCount);
    std::iota(order.begin(), order.end(), 0);
    std::ranges::shuffle(order, std::mt19937(1));
    std::vector<void*> nodes(batchCount);
    Measure<Memory>(state,
                    [&](Memory& memory)
                    {
                        for (void*& node : nodes)
                            node = Written(memory.Allocate(batchSize));
                        for (const std::uint32_t index : order)
                            memory.Release(nodes[index], batchSize);
                    });
}

/// A thousand nodes; again and again one of them is released and one of another size allocated.
template <class Memory>
void MixedSizes(benchmark::State& state)
{
    struct Node
    {
        void* place;
        std::size_t size;
    };
    struct Step
    {
        std::size_t index;
        std::size_t size;
    };
    std::mt19937 random(1);
    std::vector<Step> steps(100'000);
    for (Step& step : steps)
        step = {random() % 1000, 1 + random() % largestSize};
    Measure<Memory>(state,
                    [&steps](Memory& memory)
                    {
                        std::array<Node, 1000> nodes;
                        for (std::size_t i = 0; i < nodes.size(); ++i)
                            nodes[i] = {Written(memory.Allocate(steps[i].size)), steps[i].size};
                        for (const Step& step : steps)
                        {
                            Node& node = nodes[step.index];
                            memory.Release(node.place, node.size);
                            node = {Written(memory.Allocate(step.size)), step.size};
                        }
                        for (const Node& node : nodes)
                            memory.Release(node.place, node.size);
                    });
}

template <class Memory>
void List(benchmark::State& state)
{
    Measure<Memory>(state,
                    [](Memory& memory)
                    {
                        const auto allocator = AllocatorOf<int>(memory);
                        std::list<int, std::remove_const_t<decltype(allocator)>> list(allocator);
                        for (int i = 0; i < elementCount; ++i)
                            list.push_back(i);
                        benchmark::DoNotOptimize(list.front());
                    });
}

template <class Memory>
void Map(benchmark::State& state)
{
    std::vector<int> keys(elementCount);
    std::iota(keys.begin(), keys.end(), 0);
    std::ranges::shuffle(keys, std::mt19937(1));
    Measure<Memory>(state,
                    [&keys](Memory& memory)
                    {
                        const auto allocator = AllocatorOf<std::pair<const int, int>>(memory);
                        std::map<int, int, std::less<>, std::remove_const_t<decltype(allocator)>> map(allocator);
                        for (const int key : keys)
                            map.emplace(key, key);
                        benchmark::DoNotOptimize(map.begin()->second);
                    });
}

template <class Memory>
bool Register(const std::string& who)
{
    const auto add = [&who](const char* what, void (*function)(benchmark::State&))
    { benchmark::RegisterBenchmark((std::string(what) + '/' + who).c_str(), function); };
    add("small objects, pairs", &Pair<Memory>);
    add("small objects, batch of 1000", &Batch<Memory, 1000>);
    add("small objects, batch of 10000", &Batch<Memory, 10'000>);
    add("small objects, mixed sizes", &MixedSizes<Memory>);
    add("std::list", &List<Memory>);
    add("std::map", &Map<Memory>);
    return true;
}

const bool areRegistered = Register<Utility>("Utility") && Register<CLibrary>("C library") &&
                           Register<Loaded<mimallocFile>>("mimalloc") && Register<Loaded<jemallocFile>>("jemalloc") &&
                           Register<Loaded<tcmallocFile>>("tcmalloc") && Register<PmrPool>("std::pmr pool") &&
                           Register<BoostPools>("Boost.Pool");

}
