#include "utility/platform/posix/handles/Handle.h"

#include "utility/platform/posix/error/Errno.h"

#include <cstdint>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

// The kind stands in the lowest bits, which are 0 in null and none of the kinds in the invalid handle.
constexpr int kindBits = 4;
constexpr std::intptr_t kindMask = (1 << kindBits) - 1;

constexpr std::intptr_t CodeOf(HandleKind kind) { return static_cast<std::intptr_t>(kind) + 1; }

}

HANDLE MakeHandle(HandleKind kind, int number) noexcept
{
    return reinterpret_cast<HANDLE>(std::intptr_t{number} << kindBits | CodeOf(kind));
}

int NumberOf(HandleKind kind, HANDLE handle) noexcept
{
    const auto value = reinterpret_cast<std::intptr_t>(handle);
    return (value & kindMask) == CodeOf(kind) ? static_cast<int>(value >> kindBits) : -1;
}

bool CloseHandle(HANDLE handle) noexcept
{
    const int file = NumberOf(HandleKind::file, handle);
    const int descriptor = file >= 0 ? file : NumberOf(HandleKind::mapping, handle);
    // A descriptor is gone when the call is interrupted as well: made anew it would close that of somebody else.
    return ::close(descriptor) == 0 || errno == EINTR || Fail();
}

}
