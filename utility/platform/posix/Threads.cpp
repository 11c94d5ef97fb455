#include "utility/platform/Threads.h"

#include <unistd.h>

namespace utility::platform
{

DWORD AllocateThreadSlot() noexcept
{
    pthread_key_t key;
    return ::pthread_key_create(&key, nullptr) == 0 ? key : TLS_OUT_OF_INDEXES;
}

void FreeThreadSlot(DWORD slot) noexcept { ::pthread_key_delete(slot); }

void* ThreadSlotValue(DWORD slot) noexcept { return ::pthread_getspecific(slot); }

void SetThreadSlotValue(DWORD slot, void* value) noexcept { ::pthread_setspecific(slot, value); }

void InitialiseCriticalSection(_RTL_CRITICAL_SECTION& section, DWORD spinCount) noexcept
{
    static const bool canSpin = ::sysconf(_SC_NPROCESSORS_ONLN) > 1;
    section.spinCount = canSpin ? spinCount : 0;
    pthread_mutexattr_t attributes;
    ::pthread_mutexattr_init(&attributes);
    ::pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    ::pthread_mutex_init(&section.mutex, &attributes);
    ::pthread_mutexattr_destroy(&attributes);
}

void DeleteCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept { ::pthread_mutex_destroy(&section.mutex); }

void EnterCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept
{
    for (std::uint32_t tries = section.spinCount; tries != 0; --tries)
    {
        if (::pthread_mutex_trylock(&section.mutex) == 0)
            return;
        __builtin_ia32_pause();
    }
    ::pthread_mutex_lock(&section.mutex);
}

void LeaveCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept { ::pthread_mutex_unlock(&section.mutex); }

}
