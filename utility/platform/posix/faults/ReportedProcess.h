#pragma once

#include <cstddef>
#include <cstdint>
#include <sys/types.h>

namespace utility::platform::posix
{

/// A thread of the process that a report is of: the calling one, unless the program that writes reports of others has
/// said which. The system tells of a process by the number of any thread that lives, and the first need not.
pid_t ReportedThread() noexcept;
/// Its number in /proc: another one where processes are numbered anew, as in a container, and /proc is from outside.
/// May be called within a fault.
pid_t ReportedThreadInProc() noexcept;
void SetReportedThread(pid_t thread, pid_t inProc) noexcept;

/// Whether it is this process.
bool IsReportedHere() noexcept;

/// Copies memory of it. Gives how many of the bytes could be read, from the first on; what is not mapped does no harm.
std::size_t ReadReportedProcess(std::uint64_t address, void* bytes, std::size_t size) noexcept;

}
