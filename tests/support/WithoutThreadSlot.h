#pragma once

#include "utility/platform/ThreadSlot.h"

#include <utility>

namespace utility::detail
{
extern platform::ThreadSlot reportingSlot;
extern platform::ThreadSlot threadAllocatorSlot;
extern platform::ThreadSlot threadDatabaseSlot;
}

namespace support
{

/// For a scope a slot is one that the system could not give.
class WithoutThreadSlot
{
public:
    explicit WithoutThreadSlot(utility::platform::ThreadSlot& slot)
        : m_slot(slot), m_earlier(std::exchange(slot, utility::platform::ThreadSlot()))
    {
    }
    WithoutThreadSlot(const WithoutThreadSlot&) = delete;
    WithoutThreadSlot& operator=(const WithoutThreadSlot&) = delete;
    ~WithoutThreadSlot() { m_slot = m_earlier; }

private:
    utility::platform::ThreadSlot& m_slot;
    utility::platform::ThreadSlot m_earlier;
};

}
