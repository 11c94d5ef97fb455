#include "utility/memory/MemoryReport.h"

#include "utility/platform/Debugger.h"
#include "utility/platform/Memory.h"

#include <boost/format.hpp>

#include <algorithm>
#include <cstdint>
#include <locale>
#include <map>
#include <string>

using utility::platform::Debugger;
using utility::platform::Memory;
using utility::platform::MemoryRegion;

namespace
{

/// Whatever it holds is used: that the system could not fill it is deliberately not told.
MEMORYSTATUSEX Status()
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    Memory().Status(status);
    return status;
}

/// Calls `visit` with the address of each region, and the region, from address 0 up.
template <class Visit>
void ForEachRegion(Visit visit)
{
    const std::uint64_t end = Status().ullTotalVirtual;
    const auto space = Memory().OpenAddressSpace();
    MemoryRegion region{end, 0};
    for (std::uint64_t address = 0; address < end; address += region.size)
    {
        // Deliberately not tested: a region that the system does not tell of counts as one more like the last.
        space->RegionAt(address, region);
        visit(address, region);
    }
}

/// The free regions of a walk.
struct FreeMemory
{
    std::uint64_t total = 0;
    std::uint64_t largest = 0;

    void Add(const MemoryRegion& region)
    {
        if (region.state != MEM_FREE)
            return;
        total += region.size;
        largest = std::max(largest, region.size);
    }
};

/// Whatever the host's global locale, which may group digits.
boost::format Text(const char* format) { return boost::format(format, std::locale::classic()); }

void Send(const boost::format& text) { Debugger().Output(text.str().c_str()); }

}

std::size_t GetAvailVirtualMemory() noexcept { return Status().ullAvailVirtual; }

void WalkAddressSpace()
{
    std::map<DWORD, std::string> names{
        {MEM_COMMIT, "MEM_COMMIT"}, {MEM_RESERVE, "MEM_RESERVE"}, {MEM_FREE, "MEM_FREE"}};
    Debugger().Output(L"Start      End        Size       State\n--------------------------------------\n");
    FreeMemory free;
    boost::format row = Text("0x%08x 0x%08x 0x%08x %s\n");
    ForEachRegion(
        [&](std::uint64_t address, const MemoryRegion& region)
        {
            Send(row % address % (address + region.size - 1) % region.size % names[region.state]);
            free.Add(region);
        });
    Send(Text("Total free memory: 0x%x [%u] bytes\n") % free.total % free.total);
    Send(Text("Largest free block: 0x%x [%u] bytes\n") % free.largest % free.largest);
}

void GetVirtualAddressSpaceInformation(std::size_t& committed, std::size_t& reserved, std::size_t& free,
                                       std::size_t& largestFree)
{
    committed = 0;
    reserved = 0;
    FreeMemory freeMemory;
    ForEachRegion(
        [&](std::uint64_t, const MemoryRegion& region)
        {
            if (region.state == MEM_COMMIT)
                committed += region.size;
            else if (region.state == MEM_RESERVE)
                reserved += region.size;
            freeMemory.Add(region);
        });
    free = freeMemory.total;
    largestFree = freeMemory.largest;
}

bool QLMMemoryStatus(MEMORYSTATUSEX* status) noexcept { return Memory().Status(*status); }

DWORD QLMMemoryLoad() noexcept
{
    const MEMORYSTATUSEX status = Status();
    const auto total = static_cast<double>(
        std::min<std::uint64_t>(status.ullTotalPageFile + status.ullTotalPhys, status.ullTotalVirtual));
    const auto available = static_cast<double>(
        std::min<std::uint64_t>(status.ullAvailPageFile + status.ullAvailPhys, status.ullAvailVirtual));
    // Nothing of nothing is all of it.
    return total == 0.0 ? 0 : 100 - static_cast<DWORD>(available / total * 100.0);
}

bool UseLowFragmentationHeap(void* heap) noexcept { return Memory().UseLowFragmentation(heap); }
