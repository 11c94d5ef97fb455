#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/Error.h"
#include "utility/platform/Memory.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>

namespace support
{

/// Stands in for the system's memory while it lives: a status and a small address space of its own.
class TableMemory : public utility::platform::MemoryService
{
public:
    using Region = utility::platform::MemoryRegion;

    bool Status(MEMORYSTATUSEX& filled) override
    {
        askedLength = filled.dwLength;
        ++statusQueries;
        if (statusFails)
        {
            utility::platform::SetLastError(ERROR_GEN_FAILURE);
            return false;
        }
        filled = status;
        return true;
    }

    std::unique_ptr<utility::platform::AddressSpace> OpenAddressSpace() override
    {
        return std::make_unique<Space>(*this);
    }

    bool UseLowFragmentation(HANDLE heap) override
    {
        askedHeap = heap;
        return lowFragmentation;
    }

    /// The next region upwards. The status grows with it.
    void Add(std::uint64_t size, DWORD state)
    {
        regions[status.ullTotalVirtual] = {size, state};
        status.ullTotalVirtual += size;
    }

    MEMORYSTATUSEX status{};
    bool statusFails = false;
    int statusQueries = 0;
    DWORD askedLength = 0;
    HANDLE askedHeap = nullptr;
    bool lowFragmentation = false;
    std::map<std::uint64_t, Region> regions;
    std::set<std::uint64_t> failing; ///< addresses that cannot be asked for

private:
    class Space : public utility::platform::AddressSpace
    {
    public:
        explicit Space(const TableMemory& memory) : m_memory(memory) {}

        bool RegionAt(std::uint64_t address, Region& region) override
        {
            if (m_memory.failing.contains(address))
                return false;
            region = m_memory.regions.at(address);
            return true;
        }

    private:
        const TableMemory& m_memory;
    };

    Substitute<utility::platform::MemoryService> m_scope{utility::platform::MemorySlot(), *this};
};

}
