#include "utility/platform/MovableMemory.h"

#include "utility/platform/Error.h"
#include "utility/platform/Heap.h"
#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

/// Memory does not move here.
class PosixMovableMemory final : public MovableMemoryService
{
public:
    HANDLE GlobalAlloc(std::size_t size) override
    {
        const HANDLE memory = Heap().Allocate(size);
        if (memory == nullptr)
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return memory;
    }

    void* GlobalLock(HANDLE memory) override { return memory; }
    void GlobalUnlock(HANDLE /*memory*/) override {}
    void GlobalFree(HANDLE memory) override { Heap().Free(memory); }
};

}

ServiceSlot<MovableMemoryService>& MovableMemorySlot() noexcept
{
    return SystemService<MovableMemoryService, PosixMovableMemory>::Slot();
}

}
