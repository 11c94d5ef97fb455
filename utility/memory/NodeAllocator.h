#pragma once

// A pool for small objects. A block of up to 256 bytes is carved from a large chunk and, once released, waits in a list of
// its size for the next request of that size: both cost a few instructions and no lock. Larger blocks go to the heap.
//
//     CQLMNodeAllocator pool;
//     void* const node = pool.allocate(24);
//     pool.deallocate(node, 24);
//
// Only one thread at a time may use an allocator; each thread can have its own, see memory/ThreadAllocator.h, and containers
// take theirs through memory/ThreadNodeAllocator.h. Nodes have no header: whoever releases one says how large it is. All
// nodes end with their allocator, released or not, and nothing goes back to the heap before; blocks of more than 256 bytes
// are the heap's and outlive it.
//
// The constructor and allocate throw std::bad_alloc, with the text "bad allocation", when the heap has nothing left and the
// process's new-handler gave up. The allocator is then as it was.

#include "utility/platform/Export.h"

#include <cstddef>
#include <cstdint>
#include <new>

class UTILITY_API CQLMNodeAllocator
{
public:
    /// Empty: a first chunk is taken when it is needed.
    CQLMNodeAllocator();
    CQLMNodeAllocator(const CQLMNodeAllocator&) = delete;
    CQLMNodeAllocator& operator=(const CQLMNodeAllocator&) = delete;
    ~CQLMNodeAllocator();

    /// At least `size` bytes, which must not be 0, not cleared; aligned to 8 up to 256 bytes, beyond as the heap does.
    /// Never null.
    void* allocate(std::size_t size);

    /// Releases a block of this allocator, not null, with the very size that was asked for. It is not tested: a smaller
    /// one wastes memory, a larger one destroys it.
    void deallocate(void* block, std::size_t size);

private:
    struct FreeNode
    {
        FreeNode* next;
    };

    /// Stands at the end of each chunk.
    struct QLMChunkFooter
    {
        char* m_start;
        char* m_free; ///< what is before it has been handed out at least once
        char* m_end;  ///< this footer's own address
        QLMChunkFooter* m_next;
    };

    std::size_t FREELIST_INDEX(std::size_t size) const { return (size - 1) >> m_shift; }
    std::size_t round_up(std::size_t size) const
    {
        const auto alignment = static_cast<std::size_t>(m_alignment);
        return (size - 1 + alignment) & ~(alignment - 1);
    }

    /// Tells the compiler what the fields hold for good, so that the hot paths need not look.
    void AssumeFixedFields() const
    {
        if (m_shift != 3 || m_maxNodeSize != 256)
            __builtin_unreachable();
    }

    QLMChunkFooter* FindChunk(std::size_t size);
    void* DoHeapAlloc(std::size_t size);
    void DoHeapFree(void* block, std::size_t size);
    /// Deliberately checks nothing and is always true.
    bool CheckFreelistAccountsForAll();

    const std::int32_t m_shift = 3; ///< log2 of the alignment
    const std::int32_t m_alignment = 8;
    const std::int32_t m_freelistCount = 32;
    const std::uint64_t m_maxNodeSize = 256;
    const std::uint64_t m_chunkSize = 0x7FFE0; ///< with the footer
    FreeNode** const m_freelists;              ///< list i has the nodes of (i + 1) * 8 bytes
    QLMChunkFooter* m_chunks = nullptr;        ///< the newest one
};

inline void* CQLMNodeAllocator::allocate(std::size_t size)
{
    AssumeFixedFields();
    if (size > m_maxNodeSize)
        return DoHeapAlloc(size);
    FreeNode*& list = m_freelists[FREELIST_INDEX(size)];
    if (FreeNode* const node = list; node != nullptr) [[likely]]
    {
        list = node->next;
        return node;
    }
    size = round_up(size);
    QLMChunkFooter* const chunk = FindChunk(size);
    void* const node = chunk->m_free;
    chunk->m_free += size;
    return node;
}

inline void CQLMNodeAllocator::deallocate(void* block, std::size_t size)
{
    AssumeFixedFields();
    if (size > m_maxNodeSize)
        return DoHeapFree(block, size);
    FreeNode*& list = m_freelists[FREELIST_INDEX(size)];
    list = ::new (block) FreeNode{list};
}
