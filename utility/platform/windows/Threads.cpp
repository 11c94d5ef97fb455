#include "utility/platform/Threads.h"

namespace utility::platform
{

DWORD AllocateThreadSlot() noexcept { return ::TlsAlloc(); }

void FreeThreadSlot(DWORD slot) noexcept { ::TlsFree(slot); }

void* ThreadSlotValue(DWORD slot) noexcept { return ::TlsGetValue(slot); }

void SetThreadSlotValue(DWORD slot, void* value) noexcept { ::TlsSetValue(slot, value); }

DWORD ThreadNumber() noexcept { return ::GetCurrentThreadId(); }

DWORD ProcessorCount() noexcept
{
    SYSTEM_INFO info;
    ::GetSystemInfo(&info);
    return info.dwNumberOfProcessors;
}

void InitialiseCriticalSection(_RTL_CRITICAL_SECTION& section, DWORD spinCount) noexcept
{
    ::InitializeCriticalSectionAndSpinCount(&section, spinCount);
}

void DeleteCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept { ::DeleteCriticalSection(&section); }

void EnterCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept { ::EnterCriticalSection(&section); }

void LeaveCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept { ::LeaveCriticalSection(&section); }

}
