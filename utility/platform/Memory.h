#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <cstdint>
#include <memory>

#ifndef _WIN32

inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RESERVE = 0x2000;
inline constexpr DWORD MEM_FREE = 0x10000;

#endif

namespace utility::platform
{

struct MemoryRegion
{
    std::uint64_t size;
    DWORD state; ///< MEM_COMMIT, MEM_RESERVE or MEM_FREE
};

/// The regions of the process's address space, for one walk upwards: addresses are asked for in rising order. It
/// belongs to one thread at a time.
class AddressSpace
{
public:
    virtual ~AddressSpace() = default;

    /// What there is from this address on, up to where that changes. False, with `region` as it was, on failure.
    virtual bool RegionAt(std::uint64_t address, MemoryRegion& region) = 0;
};

/// The memory of the machine and of the process. Any thread may call. An operation that fails leaves its reason in
/// LastError().
class MemoryService
{
public:
    virtual ~MemoryService() = default;

    /// Fills `status`, whose dwLength the caller has set to its size.
    ///
    /// Linux: what limits the process counts as if the machine had no more. Physical memory is that of the machine, or
    /// what the control groups of the process allow; the page file is the swap space, likewise; together they are no
    /// more than the limit on the process's address space. Memory that holds nothing but file contents is available.
    /// Virtual is the whole range of addresses, available of it what is not mapped, within the limit on the address
    /// space.
    virtual bool Status(MEMORYSTATUSEX& status) = 0;

    /// Linux: a region is reserved if the process may neither read nor write nor execute it, and committed otherwise.
    [[nodiscard]] virtual std::unique_ptr<AddressSpace> OpenAddressSpace() = 0;

    /// Asks for the heap that fragments little. Linux has no choice of heaps: false with 50 (not supported).
    virtual bool UseLowFragmentation(HANDLE heap) = 0;
};

ServiceSlot<MemoryService>& MemorySlot() noexcept;
inline MemoryService& Memory() noexcept { return MemorySlot().Get(); }

}
