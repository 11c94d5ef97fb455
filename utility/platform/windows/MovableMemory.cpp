#include "utility/platform/MovableMemory.h"

#include "utility/platform/SystemService.h"
namespace utility::platform
{

namespace
{

class WindowsMovableMemory final : public MovableMemoryService
{
public:
    HANDLE GlobalAlloc(std::size_t size) override { return ::GlobalAlloc(GMEM_MOVEABLE, size); }
    void* GlobalLock(HANDLE memory) override { return ::GlobalLock(memory); }
    void GlobalUnlock(HANDLE memory) override { ::GlobalUnlock(memory); }
    void GlobalFree(HANDLE memory) override { ::GlobalFree(memory); }
};

}

ServiceSlot<MovableMemoryService>& MovableMemorySlot() noexcept
{
    return SystemService<MovableMemoryService, WindowsMovableMemory>::Slot();
}

}
