#include "utility/platform/posix/faults/ReportedProcess.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

/// Zero for one of this process.
pid_t reportedThread = 0;

/// Where the system, or what it is run in, knows no better way.
std::size_t ReadFile(std::uint64_t address, void* bytes, std::size_t size) noexcept
{
    char path[32];
    std::snprintf(path, sizeof(path), "/proc/%d/mem", ReportedThread());
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return 0;
    const ssize_t read = ::pread(file, bytes, size, static_cast<off_t>(address));
    ::close(file);
    return static_cast<std::size_t>(std::max<ssize_t>(read, 0));
}

}

pid_t ReportedThread() noexcept { return reportedThread != 0 ? reportedThread : ::gettid(); }

void SetReportedThread(pid_t thread) noexcept { reportedThread = thread; }

bool IsReportedHere() noexcept { return reportedThread == 0; }

std::size_t ReadReportedProcess(std::uint64_t address, void* bytes, std::size_t size) noexcept
{
    const iovec here = {bytes, size};
    const iovec there = {reinterpret_cast<void*>(address), size};
    const ssize_t read = ::process_vm_readv(ReportedThread(), &here, 1, &there, 1, 0);
    if (read < 0 && errno != EFAULT)
        return ReadFile(address, bytes, size);
    return static_cast<std::size_t>(std::max<ssize_t>(read, 0));
}

}
