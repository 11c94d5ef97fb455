#pragma once

// How much memory there is, and what the process's address space is made of.
//
//     std::size_t committed, reserved, free, largestFree;
//     GetVirtualAddressSpaceInformation(committed, reserved, free, largestFree);
//     dbg() << QLMMemoryLoad() << L" percent in use, " << committed << L" bytes committed\n";
//
// Any thread may call; a region may change while a walk passes it. A walk needs a little memory itself, and throws
// std::bad_alloc without; the others throw nothing. Where the system cannot be asked the figures are 0.
//
// On Linux the figures take the limits of the process into account, those of its control groups and that on its
// address space, and the page file is the swap space. A walk covers every address a process can have, so what it finds
// free may be more than such a limit leaves; GetAvailVirtualMemory tells that.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <cstddef>

/// The bytes of address space that the process can still get.
UTILITY_API std::size_t GetAvailVirtualMemory() noexcept;

/// Sends the regions of the address space to the debugger's output, a line each with first and last address, size and
/// state, and how much is free, in all and in one piece.
UTILITY_API void WalkAddressSpace();

/// The bytes of address space that are committed, reserved and free, and those of the largest free region. Off Windows
/// reserved is what the process has mapped but may not touch.
UTILITY_API void GetVirtualAddressSpaceInformation(std::size_t& committed, std::size_t& reserved, std::size_t& free,
                                                   std::size_t& largestFree);

/// The system's memory status. The caller sets dwLength to the record's size. False on failure, with the reason in
/// utility::platform::LastError().
UTILITY_API bool QLMMemoryStatus(MEMORYSTATUSEX* status) noexcept;

/// The share of memory that is in use, in percent, rounded up: physical memory and page file together, or the address
/// space where that is smaller.
UTILITY_API DWORD QLMMemoryLoad() noexcept;

/// Asks a heap of the system to fragment little. False, with the reason in utility::platform::LastError(), if it cannot
/// be had, as always on Linux, where the C library's heap has no such choice.
UTILITY_API bool UseLowFragmentationHeap(void* heap) noexcept;
