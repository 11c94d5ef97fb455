#include "utility/platform/posix/files/FileTimes.h"

#include <cstdint>
#include <fcntl.h>

namespace utility::platform::posix
{

namespace
{

FILETIME FileTimeOf(std::int64_t seconds, std::int64_t nanoseconds)
{
    constexpr std::int64_t secondsFrom1601To1970 = 11644473600;
    const auto ticks = static_cast<std::uint64_t>((seconds + secondsFrom1601To1970) * 10000000 + nanoseconds / 100);
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

}

FILETIME FileTimeOf(const timespec& time) { return FileTimeOf(time.tv_sec, time.tv_nsec); }

FILETIME CreationTime(int descriptor, const struct stat& status)
{
    struct statx record;
    if (::statx(descriptor, "", AT_EMPTY_PATH, STATX_BTIME, &record) == 0 && (record.stx_mask & STATX_BTIME) != 0)
        return FileTimeOf(record.stx_btime.tv_sec, record.stx_btime.tv_nsec);
    return FileTimeOf(status.st_ctim);
}

}
