#pragma once

#include "utility/logging/internal/KeptLog.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>

namespace utility::detail
{

/// Writes the messages of the block at this address beside a report. Nothing throws; what fails ends the log.
void WriteReportLog(std::uint64_t block, const ReadMemory& read, const boost::filesystem::path& report) noexcept;

/// The same of this process, if it keeps its log.
void WriteReportLog(const boost::filesystem::path& report) noexcept;

}
