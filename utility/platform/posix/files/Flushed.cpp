#include "utility/platform/posix/files/Flushed.h"

#include <sys/stat.h>

namespace utility::platform::posix
{

namespace
{

/// All zero, which no file is, until there was a flush.
thread_local struct stat flushed;

}

void NoteFlushed(int descriptor) noexcept
{
    if (::fstat(descriptor, &flushed) != 0)
        flushed = {};
}

bool IsFlushed(int descriptor) noexcept
{
    struct stat now;
    return ::fstat(descriptor, &now) == 0 && now.st_ino == flushed.st_ino && now.st_dev == flushed.st_dev &&
           now.st_size == flushed.st_size && now.st_ctim.tv_sec == flushed.st_ctim.tv_sec &&
           now.st_ctim.tv_nsec == flushed.st_ctim.tv_nsec;
}

}
