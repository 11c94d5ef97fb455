#include "utility/platform/Memory.h"

#include "utility/platform/SystemService.h"
namespace utility::platform
{

namespace
{

class WindowsAddressSpace final : public AddressSpace
{
public:
    bool RegionAt(std::uint64_t address, MemoryRegion& region) override
    {
        MEMORY_BASIC_INFORMATION information;
        if (::VirtualQueryEx(::GetCurrentProcess(), reinterpret_cast<const void*>(address), &information,
                             sizeof(information)) == 0)
            return false;
        region = {information.RegionSize, information.State};
        return true;
    }
};

class WindowsMemory final : public MemoryService
{
public:
    bool Status(MEMORYSTATUSEX& status) override { return ::GlobalMemoryStatusEx(&status); }

    std::unique_ptr<AddressSpace> OpenAddressSpace() override { return std::make_unique<WindowsAddressSpace>(); }

    bool UseLowFragmentation(HANDLE heap) override
    {
        ULONG lowFragmentation = 2;
        return ::HeapSetInformation(heap, HeapCompatibilityInformation, &lowFragmentation, sizeof(lowFragmentation));
    }
};

}

ServiceSlot<MemoryService>& MemorySlot() noexcept { return SystemService<MemoryService, WindowsMemory>::Slot(); }

}
