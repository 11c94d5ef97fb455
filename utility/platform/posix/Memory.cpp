#include "utility/platform/Memory.h"

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/files/KernelFile.h"
#include "utility/platform/posix/memory/MemoryFigures.h"
#include "utility/platform/SystemService.h"

#include <algorithm>
#include <new>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace utility::platform
{

namespace
{

/// Where the addresses end that a process can have: the kernel keeps the last page of 47 bits.
constexpr std::uint64_t addressEnd = (std::uint64_t{1} << 47) - 4096;

std::uint64_t AddressesInUse()
{
    std::uint64_t pages = 0;
    posix::KernelFile("/proc/thread-self/statm") >> pages;
    return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

/// Reads the kernel's list of mappings as far as it is asked for.
class PosixAddressSpace final : public AddressSpace
{
public:
    bool RegionAt(std::uint64_t address, MemoryRegion& region) override
    {
        if (!m_mappings.is_open() || address >= addressEnd)
        {
            SetLastError(ERROR_INVALID_PARAMETER);
            return false;
        }
        while (m_end <= address)
            ReadMapping();
        if (address < m_begin)
            region = {m_begin - address, MEM_FREE};
        else
            region = {m_end - address, m_isReserved ? MEM_RESERVE : MEM_COMMIT};
        return true;
    }

private:
    void ReadMapping()
    {
        char dash = 0;
        std::string access;
        std::string rest;
        if (m_mappings >> std::hex >> m_begin >> dash >> m_end >> access && m_begin < addressEnd)
            std::getline(m_mappings, rest);
        else
            m_begin = m_end = addressEnd;
        m_isReserved = access.starts_with("---");
    }

    posix::KernelFile m_mappings{"/proc/thread-self/maps"};
    std::uint64_t m_begin = 0;
    std::uint64_t m_end = 0;
    bool m_isReserved = false;
};

class PosixMemory final : public MemoryService
{
public:
    bool Status(MEMORYSTATUSEX& status) override
    {
        try
        {
            return Fill(status);
        }
        catch (const std::bad_alloc&) // to read the system's files takes some
        {
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return false;
        }
    }

    std::unique_ptr<AddressSpace> OpenAddressSpace() override { return std::make_unique<PosixAddressSpace>(); }

    bool UseLowFragmentation(HANDLE) override
    {
        SetLastError(ERROR_NOT_SUPPORTED);
        return false;
    }

private:
    static bool Fill(MEMORYSTATUSEX& status)
    {
        const posix::MachineMemory machine = posix::ReadMachineMemory();
        if (status.dwLength != sizeof(status) || machine.physical.total == 0)
        {
            SetLastError(ERROR_INVALID_PARAMETER);
            return false;
        }
        rlimit limit{};
        ::getrlimit(RLIMIT_AS, &limit);
        const std::uint64_t total = std::min<std::uint64_t>(addressEnd, limit.rlim_cur);
        const std::uint64_t available = total - std::min(total, AddressesInUse());
        status.ullTotalPhys = std::min(machine.physical.total, total);
        status.ullAvailPhys = std::min(machine.physical.available, available);
        status.ullTotalPageFile = std::min(machine.swap.total, total - status.ullTotalPhys);
        status.ullAvailPageFile =
            std::min({machine.swap.available, available - status.ullAvailPhys, status.ullTotalPageFile});
        status.ullTotalVirtual = addressEnd;
        status.ullAvailVirtual = available;
        status.ullAvailExtendedVirtual = 0;
        status.dwMemoryLoad =
            status.ullTotalPhys == 0 ? 100 : static_cast<DWORD>(100 - status.ullAvailPhys * 100 / status.ullTotalPhys);
        return true;
    }
};

}

ServiceSlot<MemoryService>& MemorySlot() noexcept { return SystemService<MemoryService, PosixMemory>::Slot(); }

}
