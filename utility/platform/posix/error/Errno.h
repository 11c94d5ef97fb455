#pragma once

#include "utility/platform/Error.h"

#include <cerrno>
#include <string>

namespace utility::platform::posix
{

/// The Windows number for an errno value; 31 (general failure) for one that has none.
DWORD ErrorOfErrno(int value) noexcept;

/// The result of a call that is made anew for as long as signals interrupt it.
template <class Call>
auto Uninterrupted(Call&& call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// Leaves the reason of the failed call just made in LastError(). Always false, for use as a result.
inline bool Fail() noexcept
{
    SetLastError(ErrorOfErrno(errno));
    return false;
}

/// Fail for a call on a path: a file that is missing (2) is told from a folder on the way to it (3).
bool FailOn(const std::string& path);

}
