#include "utility/platform/Threads.h"

#include <algorithm>
#include <atomic>
#include <unistd.h>

namespace utility::platform
{

namespace
{

constexpr int stateFree = 0;
constexpr int stateHeld = 1;
constexpr int stateAwaited = 2; // held, and whoever leaves has somebody to wake

std::atomic_ref<int> StateOf(_RTL_CRITICAL_SECTION& section) noexcept { return std::atomic_ref(section.state); }
std::atomic_ref<pthread_t> OwnerOf(_RTL_CRITICAL_SECTION& section) noexcept { return std::atomic_ref(section.owner); }

const bool canSpin = ProcessorCount() > 1;

bool Take(_RTL_CRITICAL_SECTION& section) noexcept
{
    int expected = stateFree;
    return StateOf(section).compare_exchange_strong(expected, stateHeld, std::memory_order_acquire,
                                                    std::memory_order_relaxed);
}

void WaitAndTake(_RTL_CRITICAL_SECTION& section) noexcept
{
    // Looks less and less often: each look takes memory from the processor that works with it. One that is left alone
    // may take the lock many times in the time that memory takes from one processor to another and back.
    constexpr std::uint32_t longestPause = 64;
    std::uint32_t pause = 1;
    for (std::uint32_t left = canSpin ? section.spinCount : 0; left != 0; pause = std::min(2 * pause, longestPause))
    {
        pause = std::min(pause, left);
        left -= pause;
        for (std::uint32_t i = 0; i != pause; ++i)
            __builtin_ia32_pause();
        if (StateOf(section).load(std::memory_order_relaxed) == stateFree && Take(section))
            return;
    }
    while (StateOf(section).exchange(stateAwaited, std::memory_order_acquire) != stateFree)
        StateOf(section).wait(stateAwaited, std::memory_order_relaxed);
}

}

DWORD AllocateThreadSlot() noexcept
{
    pthread_key_t key = 0;
    return ::pthread_key_create(&key, nullptr) == 0 ? key : TLS_OUT_OF_INDEXES;
}

void FreeThreadSlot(DWORD slot) noexcept { ::pthread_key_delete(slot); }

void* ThreadSlotValue(DWORD slot) noexcept { return ::pthread_getspecific(slot); }

void SetThreadSlotValue(DWORD slot, void* value) noexcept { ::pthread_setspecific(slot, value); }

DWORD ThreadNumber() noexcept { return static_cast<DWORD>(::gettid()); }

DWORD ProcessorCount() noexcept { return static_cast<DWORD>(::sysconf(_SC_NPROCESSORS_ONLN)); }

void InitialiseCriticalSection(_RTL_CRITICAL_SECTION& section, DWORD spinCount) noexcept
{
    section.spinCount = spinCount;
}

void DeleteCriticalSection(_RTL_CRITICAL_SECTION&) noexcept {}

void EnterCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept
{
    const pthread_t self = ::pthread_self();
    // No order is needed: nobody but this thread writes its identity there.
    if (OwnerOf(section).load(std::memory_order_relaxed) == self)
    {
        ++section.takenAgain;
        return;
    }
    if (!Take(section))
        WaitAndTake(section);
    OwnerOf(section).store(self, std::memory_order_relaxed);
}

void LeaveCriticalSection(_RTL_CRITICAL_SECTION& section) noexcept
{
    if (section.takenAgain != 0)
    {
        --section.takenAgain;
        return;
    }
    OwnerOf(section).store(0, std::memory_order_relaxed);
    if (StateOf(section).exchange(stateFree, std::memory_order_release) == stateAwaited)
        StateOf(section).notify_one();
}

}
