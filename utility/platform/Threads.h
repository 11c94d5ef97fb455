#pragma once

#include "utility/platform/Types.h"

#ifndef _WIN32

inline constexpr DWORD TLS_OUT_OF_INDEXES = 0xFFFFFFFF;

#endif

namespace utility::platform
{

/// A pointer for each thread, null until a thread stores one. Plain functions, because they are on hot paths.

/// A new slot, or TLS_OUT_OF_INDEXES when there is none left.
[[nodiscard]] DWORD AllocateThreadSlot() noexcept;
void FreeThreadSlot(DWORD slot) noexcept;
[[nodiscard]] void* ThreadSlotValue(DWORD slot) noexcept;
void SetThreadSlotValue(DWORD slot, void* value) noexcept;

/// The system's number of the calling thread, as debuggers show it.
[[nodiscard]] DWORD ThreadNumber() noexcept;

/// How many processors the machine has, those that are not this process's to use among them.
[[nodiscard]] DWORD ProcessorCount() noexcept;

/// A lock that a thread may take again while it holds it. A thread that has to wait first spins `spinCount` times
/// where there is more than one processor.
void InitialiseCriticalSection(_RTL_CRITICAL_SECTION& section, DWORD spinCount) noexcept;
void DeleteCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept;
void EnterCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept;
void LeaveCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept;

}
