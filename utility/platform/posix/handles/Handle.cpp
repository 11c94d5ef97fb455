#include "utility/platform/posix/handles/Handle.h"

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/jobs/ControlGroup.h"
#include "utility/platform/posix/threads/TimedThreads.h"

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

// The kind stands in the lowest bits, which are 0 in null and none of the kinds in the invalid handle; behind it the
// number, of 31 bits, and uppermost the process that made the handle.
constexpr int kindBits = 4;
constexpr int numberBits = 31;
constexpr std::intptr_t kindMask = (1 << kindBits) - 1;
constexpr std::intptr_t numberMask = (std::intptr_t{1} << numberBits) - 1;
constexpr int processAt = kindBits + numberBits;
constexpr std::intptr_t processMask = -(std::intptr_t{1} << processAt);

constexpr std::intptr_t CodeOf(HandleKind kind) { return static_cast<std::intptr_t>(kind) + 1; }

/// What stands uppermost in the handles that this process makes.
std::intptr_t OwnPlace() noexcept { return std::intptr_t{::getpid()} << processAt; }

bool CloseDescriptor(int descriptor) noexcept
{
    // A descriptor is gone when the call is interrupted as well: made anew it would close that of somebody else.
    return ::close(descriptor) == 0 || errno == EINTR || Fail();
}

}

HANDLE MakeHandle(HandleKind kind, int number) noexcept
{
    return reinterpret_cast<HANDLE>(OwnPlace() | std::intptr_t{number} << kindBits | CodeOf(kind));
}

int NumberOf(HandleKind kind, HANDLE handle) noexcept
{
    const auto value = reinterpret_cast<std::intptr_t>(handle);
    return (value & kindMask) == CodeOf(kind) ? static_cast<int>(value >> kindBits & numberMask) : -1;
}

bool IsOwn(HANDLE handle) noexcept { return (reinterpret_cast<std::intptr_t>(handle) & processMask) == OwnPlace(); }

bool CloseHandle(HANDLE handle) noexcept
{
    // A mapping stands on its file's descriptor.
    if (const int mapping = NumberOf(HandleKind::mapping, handle); mapping >= 0)
        return ::fcntl(mapping, F_GETFD) >= 0 || Fail();
    if (const int thread = NumberOf(HandleKind::thread, handle); thread >= 0)
    {
        errno = EBADF;
        return ForgetThread(thread) || Fail();
    }
    if (const int job = NumberOf(HandleKind::job, handle); job >= 0)
    {
        // A copy of its owner, made by fork, may have the socket as well.
        if (IsOwn(handle))
        {
            char nothing = 0;
            if (::recv(job, &nothing, sizeof(nothing), MSG_PEEK | MSG_DONTWAIT) == 0)
                ControlGroup::KillLost();
            ::shutdown(job, SHUT_RDWR);
        }
        return CloseDescriptor(job);
    }
    int descriptor = -1;
    for (const HandleKind kind : {HandleKind::file, HandleKind::ending, HandleKind::event})
        descriptor = std::max(descriptor, NumberOf(kind, handle));
    return CloseDescriptor(descriptor);
}

}
