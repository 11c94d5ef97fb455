#include "utility/platform/Error.h"

#include "utility/platform/posix/error/Errno.h"

namespace utility::platform
{

namespace
{

thread_local DWORD lastError = ERROR_SUCCESS;
thread_local int errnoThen = 0; // when that was set

}

DWORD LastError() noexcept { return lastError; }

DWORD LatestError() noexcept
{
    const bool isOfAnother = errno != 0 && (errno != errnoThen || lastError == ERROR_SUCCESS);
    return isOfAnother ? posix::ErrorOfErrno(errno) : lastError;
}

void SetLastError(DWORD error) noexcept
{
    lastError = error;
    errnoThen = errno;
}

}
