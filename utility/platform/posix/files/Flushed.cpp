#include "utility/platform/posix/files/Flushed.h"

#include <ctime>
#include <sys/stat.h>

namespace utility::platform::posix
{

namespace
{

/// All zero, which no file is, where there is none.
thread_local struct stat flushed;

bool AreEqual(const timespec& one, const timespec& other)
{
    return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

}

void NoteFlushed(int descriptor) noexcept
{
    timespec tick;
    if (::fstat(descriptor, &flushed) != 0 || ::clock_gettime(CLOCK_REALTIME_COARSE, &tick) != 0 ||
        AreEqual(tick, flushed.st_ctim))
        flushed = {};
}

bool IsFlushed(int descriptor) noexcept
{
    struct stat now;
    return ::fstat(descriptor, &now) == 0 && now.st_ino == flushed.st_ino && now.st_dev == flushed.st_dev &&
           AreEqual(now.st_ctim, flushed.st_ctim);
}

}
