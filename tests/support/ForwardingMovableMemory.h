#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/MovableMemory.h"

#include <vector>

namespace support
{

/// For its lifetime the movable memory: the system's, with a record of its life, except where a test says otherwise.
class ForwardingMovableMemory : public utility::platform::MovableMemoryService
{
public:
    HANDLE GlobalAlloc(std::size_t size) override
    {
        allocated.push_back(m_system.GlobalAlloc(size));
        return allocated.back();
    }
    void* GlobalLock(HANDLE memory) override { return m_system.GlobalLock(memory); }
    void GlobalUnlock(HANDLE memory) override
    {
        unlocked.push_back(memory);
        m_system.GlobalUnlock(memory);
    }
    void GlobalFree(HANDLE memory) override
    {
        freed.push_back(memory);
        m_system.GlobalFree(memory);
    }

    std::vector<HANDLE> allocated;
    std::vector<HANDLE> unlocked;
    std::vector<HANDLE> freed;

protected:
    utility::platform::MovableMemoryService& m_system = utility::platform::MovableMemory();

private:
    Substitute<utility::platform::MovableMemoryService> m_scope{utility::platform::MovableMemorySlot(), *this};
};

}
