#pragma once

namespace utility::platform::posix
{

/// Finds out where the program for reports is, ahead of the fault that ReportFromOutside needs it in.
void FindReportProgram() noexcept;

/// Has the report of this thread's fault end after a while, as if there had been a fault within it: what is broken may
/// keep a report that the process writes itself waiting for ever. Runs within a fault; without one it does nothing.
void LimitReport() noexcept;

}
