#pragma once

#include <cstddef>
#include <cstdint>
#include <sys/types.h>

namespace utility::platform::posix
{

/// The process that a report is of: this one, unless the program that writes reports of others has said which.
pid_t ReportedProcess() noexcept;
void SetReportedProcess(pid_t process) noexcept;

/// Copies memory of it. Gives how many of the bytes could be read, from the first on; what is not mapped does no harm.
std::size_t ReadReportedProcess(std::uint64_t address, void* bytes, std::size_t size) noexcept;

}
