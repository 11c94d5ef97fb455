#pragma once

namespace utility::platform::posix
{

/// Finds out where the program for reports is, ahead of the fault that ReportFromOutside needs it in.
void FindReportProgram() noexcept;

}
