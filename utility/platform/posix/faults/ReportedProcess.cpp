#include "utility/platform/posix/faults/ReportedProcess.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <sys/uio.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

/// Zero for one of this process.
pid_t reportedThread = 0;
pid_t reportedThreadInProc = 0;

/// The calling thread's.
pid_t NumberInProc() noexcept
{
    char text[64];
    const ssize_t length = ::readlink("/proc/thread-self", text, sizeof(text)); // 1234/task/1235
    const std::string_view path(text, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    pid_t number = 0;
    std::from_chars(path.data() + path.rfind('/') + 1, path.data() + path.size(), number);
    return number != 0 ? number : ::gettid();
}

/// Where the system, or what it is run in, knows no better way.
std::size_t ReadFile(std::uint64_t address, void* bytes, std::size_t size) noexcept
{
    char path[32];
    std::snprintf(path, sizeof(path), "/proc/%d/mem", ReportedThreadInProc());
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return 0;
    const ssize_t read = ::pread(file, bytes, size, static_cast<off_t>(address));
    ::close(file);
    return static_cast<std::size_t>(std::max<ssize_t>(read, 0));
}

}

pid_t ReportedThread() noexcept { return reportedThread != 0 ? reportedThread : ::gettid(); }

pid_t ReportedThreadInProc() noexcept { return reportedThread != 0 ? reportedThreadInProc : NumberInProc(); }

void SetReportedThread(pid_t thread, pid_t inProc) noexcept
{
    reportedThread = thread;
    reportedThreadInProc = inProc;
}

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
