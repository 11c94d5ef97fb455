#pragma once

// A pool for small objects. A block of up to 256 bytes is carved from a large chunk and, once released, waits in a list
// of its size for the next request of that size: both cost a few instructions and no lock. Larger blocks go to the
// heap.
//
//     CQLMNodeAllocator pool;
//     void* const node = pool.allocate(24);
//     pool.deallocate(node, 24);
//
// Only one thread at a time may use an allocator; each thread can have its own, see memory/ThreadAllocator.h, and
// containers take theirs through memory/ThreadNodeAllocator.h. Nodes have no header: whoever releases one says how
// large it is. All nodes end with their allocator, released or not, and nothing goes back to the heap before; blocks of
// more than 256 bytes are the heap's and outlive it.
//
// The constructor and allocate throw std::bad_alloc, with the text "bad allocation", when the heap has nothing left and
// the process's new-handler gave up. The allocator is then as it was.

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
    /// Ends all nodes, released or not.
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

    // Two of the fields for the hot paths, which need not read what the compiler knows.
    static constexpr std::int32_t shift = 3;
    static constexpr std::uint64_t maxNodeSize = 256;

    std::size_t FREELIST_INDEX(std::size_t size) const { return (size - 1) >> shift; }
    std::size_t round_up(std::size_t size) const
    {
        const auto alignment = static_cast<std::size_t>(m_alignment);
        return (size - 1 + alignment) & ~(alignment - 1);
    }

    QLMChunkFooter* FindChunk(std::size_t size);
    void* CarveNode(std::size_t size);
    void* DoHeapAlloc(std::size_t size);
    void DoHeapFree(void* block, std::size_t size);
    /// Deliberately checks nothing and is always true.
    bool CheckFreelistAccountsForAll();

    [[maybe_unused]] const std::int32_t m_shift = shift; ///< log2 of the alignment
    const std::int32_t m_alignment = 8;
    const std::int32_t m_freelistCount = 32;
    [[maybe_unused]] const std::uint64_t m_maxNodeSize = maxNodeSize;
    const std::uint64_t m_chunkSize = 0x7FFE0; ///< with the footer
    FreeNode** const m_freelists;              ///< list i has the nodes of (i + 1) * 8 bytes
    QLMChunkFooter* m_chunks = nullptr;        ///< the newest one
};

inline void* CQLMNodeAllocator::allocate(std::size_t size)
{
    if (size > maxNodeSize)
        return DoHeapAlloc(size);
    FreeNode*& list = m_freelists[FREELIST_INDEX(size)];
    FreeNode* const node = list;
    if (node == nullptr) [[unlikely]]
        return CarveNode(round_up(size));
    list = node->next;
    return node;
}

inline void CQLMNodeAllocator::deallocate(void* block, std::size_t size)
{
    if (size > maxNodeSize)
        return DoHeapFree(block, size);
    FreeNode*& list = m_freelists[FREELIST_INDEX(size)];
    list = ::new (block) FreeNode{list};
}
