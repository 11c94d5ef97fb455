#include "utility/memory/NodeAllocator.h"

#include "utility/platform/Heap.h"

#include <algorithm>
#include <utility>

using utility::platform::Heap;

CQLMNodeAllocator::CQLMNodeAllocator()
    // NOLINTNEXTLINE(bugprone-sizeof-expression): pointers are what it holds
    : m_freelists(static_cast<FreeNode**>(DoHeapAlloc(static_cast<std::size_t>(m_freelistCount) * sizeof(FreeNode*))))
{
    static_assert(sizeof(CQLMNodeAllocator) == 48 && offsetof(CQLMNodeAllocator, m_maxNodeSize) == 16);
    static_assert(sizeof(QLMChunkFooter) == 32 && offsetof(QLMChunkFooter, m_next) == 24);
    std::fill_n(m_freelists, m_freelistCount, nullptr);
}

CQLMNodeAllocator::~CQLMNodeAllocator()
{
    Heap().Free(m_freelists);
    while (m_chunks != nullptr)
        Heap().Free(std::exchange(m_chunks, m_chunks->m_next)->m_start);
}

/// Looks at the two newest chunks and at no other: deliberately, so that it costs the same however many there are. The
/// second one is a chance to use up what was left there when it was too little for a large node.
CQLMNodeAllocator::QLMChunkFooter* CQLMNodeAllocator::FindChunk(std::size_t size)
{
    QLMChunkFooter* chunk = m_chunks;
    for (int examined = 0; examined < 2 && chunk != nullptr; ++examined, chunk = chunk->m_next)
        if (static_cast<std::size_t>(chunk->m_end - chunk->m_free) >= size)
            return chunk;
    char* const start = static_cast<char*>(DoHeapAlloc(m_chunkSize));
    char* const end = start + m_chunkSize - sizeof(QLMChunkFooter);
    return m_chunks = ::new (end) QLMChunkFooter{start, start, end, m_chunks};
}

void* CQLMNodeAllocator::CarveNode(std::size_t size)
{
    QLMChunkFooter* const chunk = FindChunk(size);
    return std::exchange(chunk->m_free, chunk->m_free + size);
}

void* CQLMNodeAllocator::DoHeapAlloc(std::size_t size)
{
    for (;;)
    {
        if (void* const block = Heap().Allocate(size); block != nullptr)
            return block;
        const auto handler = utility::platform::QueryNewHandler();
        if (handler == nullptr || handler(size) == 0)
            utility::platform::ThrowBadAllocation();
    }
}

void CQLMNodeAllocator::DoHeapFree(void* block, std::size_t) { Heap().Free(block); }

bool CQLMNodeAllocator::CheckFreelistAccountsForAll() { return true; }
