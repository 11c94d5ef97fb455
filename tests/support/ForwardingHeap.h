#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/Heap.h"

#include <cstddef>
#include <map>
#include <vector>

namespace support
{

/// For its lifetime the heap: the system's, with a record of what it was asked for and of what it has not got back, and
/// with nothing left at request number `failAt` (the first is 1).
class ForwardingHeap final : public utility::platform::HeapService
{
public:
    void* Allocate(std::size_t size) override
    {
        requests.push_back(size);
        if (requests.size() == failAt)
            return nullptr;
        void* const block = m_system.Allocate(size);
        blocks.push_back(block);
        live[block] = size;
        return block;
    }

    void Free(void* block) override
    {
        live.erase(block);
        freed.push_back(block);
        m_system.Free(block);
    }

    std::vector<std::size_t> requests;
    std::vector<void*> blocks; ///< all that were given, in order
    std::vector<void*> freed;
    std::map<void*, std::size_t> live;
    std::size_t failAt = 0;

private:
    utility::platform::HeapService& m_system = utility::platform::Heap();
    Substitute<utility::platform::HeapService> m_scope{utility::platform::HeapSlot(), *this};
};

}
