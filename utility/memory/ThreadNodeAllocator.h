#pragma once

// Puts the nodes of a standard container into the pool of the thread that makes the container.
//
//     std::map<int, Tool, std::less<>, CThreadNodeAllocator<std::pair<const int, Tool>>> tools;
//
// A container keeps the allocator of the thread that made it. It is used and destroyed on that thread, before the
// allocator is. So within a thread these containers are like any others, and between threads:
//   - A copy belongs to the thread that makes it, with the containers inside it.
//   - Assignment, by copy or by move, leaves each container its allocator: the elements move to nodes of its own, one
//     by one. The other thread must leave its container alone meanwhile.
//   - A container that is itself moved, alone or as an element, keeps the other thread's allocator: copy it instead.
//   - Swapping and splicing is undefined.
//
// Making one in a thread without an allocator fails the assertion of GetThreadAllocator, and then throws
// std::bad_alloc, as a container does when there is no memory. 0 objects may be allocated; a count whose bytes no
// address could hold throws std::bad_array_new_length.

#include "utility/memory/ThreadAllocator.h"

#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

/// An allocator of objects of type T. A pool's nodes are aligned to 8: for types that need more it goes to the heap.
/// Two are equal if they have the same thread's allocator.
template <class T>
class CThreadNodeAllocator
{
public:
    /// What it allocates.
    using value_type = T;
    /// Those of two threads differ.
    using is_always_equal = std::false_type;

    /// That of the calling thread. Throws std::bad_alloc if it has none.
    CThreadNodeAllocator() : m_allocator(GetThreadAllocator())
    {
        if (m_allocator == nullptr)
            throw std::bad_alloc();
    }
    /// The same thread's, for other objects.
    template <class Other>
    CThreadNodeAllocator(const CThreadNodeAllocator<Other>& other) noexcept : m_allocator(other.m_allocator)
    {
    }

    /// Room for `count` objects, which are not made. Never null.
    [[nodiscard]] T* allocate(std::size_t count)
    {
        if constexpr (isPooled)
        {
            if (count > std::numeric_limits<std::size_t>::max() / objectSize)
                throw std::bad_array_new_length();
            return static_cast<T*>(m_allocator->allocate(Size(count)));
        }
        else
            return std::allocator<T>().allocate(count);
    }

    /// Releases the room of `count` objects, the very count that was asked for.
    void deallocate(T* objects, std::size_t count) noexcept
    {
        if constexpr (isPooled)
            m_allocator->deallocate(objects, Size(count));
        else
            std::allocator<T>().deallocate(objects, count);
    }

    /// For a copy of a container.
    CThreadNodeAllocator select_on_container_copy_construction() const { return {}; }

    /// Whether both are of one thread, so that one may release what the other has allocated.
    template <class Other>
    bool operator==(const CThreadNodeAllocator<Other>& other) const noexcept
    {
        return m_allocator == other.m_allocator;
    }

private:
    template <class Other>
    friend class CThreadNodeAllocator;

    static constexpr bool isPooled = alignof(T) <= 8;
    static constexpr std::size_t objectSize = sizeof(T); // NOLINT(bugprone-sizeof-expression): T may be a pointer

    static std::size_t Size(std::size_t count) { return (count == 0 ? 1 : count) * objectSize; }

    CQLMNodeAllocator* m_allocator;
};
