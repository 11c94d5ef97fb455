#include "bench/AllocationCount.h"

#include <cstddef>
#include <cstdlib>
#include <new>

static thread_local std::uint64_t allocations = 0;

std::uint64_t AllocationCount() { return allocations; }

// Visible, so that the libraries take these too.
__attribute__((visibility("default"))) void* operator new(std::size_t size)
{
    ++allocations;
    if (void* const memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

__attribute__((visibility("default"))) void operator delete(void* memory) noexcept { std::free(memory); }

__attribute__((visibility("default"))) void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
