#include "utility/platform/posix/faults/FaultStack.h"

#include "utility/platform/Faults.h"

#include <csignal>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace utility::platform
{

namespace
{

// What a thread is given besides its own stack. Nothing of it takes memory before it is used.
constexpr std::size_t guardSize = 4096;
constexpr std::size_t stackSize = 256 * 1024; ///< a report that is written from inside needs the most
constexpr std::size_t roomOfMain = 256 * 1024;
/// A thread cannot grow: what it has for destructors after an overflow is kept from it until then.
constexpr std::size_t roomOfThread = 64 * 1024;
constexpr std::size_t smallestWithRoom = 8 * roomOfThread;

struct FaultStack
{
    unsigned entered;
    char* stack; ///< with its guard in front; null if the thread has one of its own
    char* room;  ///< at the end of a thread's stack, null if it has none
    bool isRoomMade;
    rlim_t limit; ///< of the main thread's stack, before room was made
};

/// A handler must not wait for the allocator: this is made with the thread.
[[gnu::tls_model("initial-exec")]] constinit thread_local FaultStack thread = {};

bool IsMainThread() { return ::getpid() == ::gettid(); }

char* MakeStack()
{
    stack_t own;
    if (::sigaltstack(nullptr, &own) != 0 || (own.ss_flags & SS_DISABLE) == 0)
        return nullptr;
    void* const memory = ::mmap(nullptr, guardSize + stackSize, PROT_READ | PROT_WRITE,
                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    auto* const stack = static_cast<char*>(memory);
    const stack_t alternate{stack + guardSize, 0, stackSize};
    if (::mprotect(stack, guardSize, PROT_NONE) == 0 && ::sigaltstack(&alternate, nullptr) == 0)
        return stack;
    ::munmap(memory, guardSize + stackSize);
    return nullptr;
}

/// Where somebody has put another one in its place, he may have kept it to put it back: it stays.
void FreeStack(char* stack)
{
    stack_t present;
    if (::sigaltstack(nullptr, &present) != 0 || present.ss_sp != stack + guardSize ||
        (present.ss_flags & SS_ONSTACK) != 0)
        return;
    const stack_t none{nullptr, SS_DISABLE, 0};
    ::sigaltstack(&none, nullptr);
    ::munmap(stack, guardSize + stackSize);
}

/// Whether the calls of this thread have left a stack's room, and more.
[[gnu::noinline]] bool IsFarAbove(const void* room)
{
    return static_cast<char*>(__builtin_frame_address(0)) > static_cast<const char*>(room) + 2 * roomOfThread;
}

char* ReserveRoom()
{
    pthread_attr_t attributes;
    if (IsMainThread() || ::pthread_getattr_np(::pthread_self(), &attributes) != 0)
        return nullptr;
    void* lowest = nullptr;
    std::size_t size = 0;
    const bool isKnown = ::pthread_attr_getstack(&attributes, &lowest, &size) == 0;
    ::pthread_attr_destroy(&attributes);
    const bool isOnPage = reinterpret_cast<std::uintptr_t>(lowest) % guardSize == 0;
    if (!isKnown || !isOnPage || size < smallestWithRoom || !IsFarAbove(lowest) ||
        ::mprotect(lowest, roomOfThread, PROT_NONE) != 0)
        return nullptr;
    return static_cast<char*>(lowest);
}

}

void EnterFaultStack() noexcept
{
    if (thread.entered++ != 0)
        return;
    thread.stack = MakeStack();
    thread.room = ReserveRoom();
}

void LeaveFaultStack() noexcept
{
    if (thread.entered == 0 || --thread.entered != 0)
        return;
    if (char* const stack = std::exchange(thread.stack, nullptr))
        FreeStack(stack);
    if (char* const room = std::exchange(thread.room, nullptr))
        ::mprotect(room, roomOfThread, PROT_READ | PROT_WRITE);
}

bool posix::MakeRoomOnStack(std::uint64_t address) noexcept
{
    if (thread.isRoomMade)
        return false;
    if (thread.room != nullptr)
    {
        const std::uint64_t above = address - reinterpret_cast<std::uintptr_t>(thread.room);
        thread.isRoomMade = above < roomOfThread && ::mprotect(thread.room, roomOfThread, PROT_READ | PROT_WRITE) == 0;
    }
    else if (rlimit limit{}; IsMainThread() && ::getrlimit(RLIMIT_STACK, &limit) == 0 &&
                             limit.rlim_cur != RLIM_INFINITY && limit.rlim_max - limit.rlim_cur >= roomOfMain)
    {
        thread.limit = std::exchange(limit.rlim_cur, limit.rlim_cur + roomOfMain);
        thread.isRoomMade = ::setrlimit(RLIMIT_STACK, &limit) == 0;
    }
    return thread.isRoomMade;
}

void RestoreStackGuard() noexcept
{
    if (!thread.isRoomMade)
        return;
    if (thread.room != nullptr)
    {
        thread.isRoomMade = !IsFarAbove(thread.room) || ::mprotect(thread.room, roomOfThread, PROT_NONE) != 0;
        return;
    }
    rlimit limit{};
    ::getrlimit(RLIMIT_STACK, &limit);
    limit.rlim_cur = thread.limit;
    thread.isRoomMade = ::setrlimit(RLIMIT_STACK, &limit) != 0;
}

}
