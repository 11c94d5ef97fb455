#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <cstddef>

namespace utility::platform
{

/// Memory that is had by a handle, under the names that the system has for its operations. Any thread may call. An
/// operation that fails leaves its reason in LastError().
class MovableMemoryService
{
public:
    virtual ~MovableMemoryService() = default;

    /// Memory aligned for any type; null if there is none left.
    [[nodiscard]] virtual HANDLE GlobalAlloc(std::size_t size) = 0;

    /// The memory's address until it is unlocked; null on failure.
    [[nodiscard]] virtual void* GlobalLock(HANDLE memory) = 0;
    virtual void GlobalUnlock(HANDLE memory) = 0;
    virtual void GlobalFree(HANDLE memory) = 0;
};

ServiceSlot<MovableMemoryService>& MovableMemorySlot() noexcept;
inline MovableMemoryService& MovableMemory() noexcept { return MovableMemorySlot().Get(); }

}
