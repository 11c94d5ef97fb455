#pragma once

// The node allocator of the calling thread, and the object that gives a thread one.
//
//     void Work()
//     {
//         const CThreadAllocatorManager manager;
//         std::list<int, CThreadNodeAllocator<int>> nodes; // memory/ThreadNodeAllocator.h
//         nodes.push_back(1);
//     }
//
// A thread starts without an allocator, except the one that loads the library. It allocates from its own allocator
// only, and a block of up to 256 bytes is released to the allocator that it came from, on that allocator's thread:
// nothing checks this. When the allocator ends, so do all its nodes. Nothing ends it with the thread: without a manager
// it stays behind.
//
// Any thread may call; each acts on its own allocator. What makes an allocator throws std::bad_alloc when there is no
// memory for it, and the thread is without one then. If the system had no thread slot left when the library was loaded,
// no thread has an allocator, and what is made for one is lost.

#include "utility/memory/NodeAllocator.h"
#include "utility/platform/Export.h"

/// The calling thread's allocator. To have none is a programming error: an assertion (see diagnostics/Assertions.h),
/// and null.
UTILITY_API CQLMNodeAllocator* GetThreadAllocator();

/// Destroys the calling thread's allocator, if it has one, with all its nodes. With `create` the thread gets a new one.
/// The result is what it has now.
UTILITY_API CQLMNodeAllocator* ResetThreadAllocator(bool create);

/// Sees to it that the thread has an allocator for as long as this object lives. Of several in a thread the outermost
/// makes it and destroys it; the others do nothing.
class UTILITY_API CThreadAllocatorManager
{
public:
    /// Makes an allocator for the calling thread if it has none. Throws std::bad_alloc.
    CThreadAllocatorManager();
    CThreadAllocatorManager(const CThreadAllocatorManager&) = delete;
    /// Takes over whether the other one is to destroy the allocator, and deliberately leaves the other one as it is.
    CThreadAllocatorManager& operator=(const CThreadAllocatorManager&) = default;
    /// Destroys the allocator with all its nodes if this object made it; to be called on the same thread.
    ~CThreadAllocatorManager();

private:
    bool m_owner;
};
