#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <optional>

namespace utility::platform
{

/// Jobs: groups of processes that can be ended together. Any thread may call. Handles are ended by
/// Handles().CloseHandle. An operation that fails leaves its reason in LastError().
///
/// On Linux a job is a program, UtilityJobSupervisor beside the library, that the processes of the job are descendants
/// of, however they were started: it adopts those whose parents have ended. They are in a control group of their own
/// where the system lets this process make one.
class JobService
{
public:
    virtual ~JobService() = default;

    /// A job without a name that nothing is in. Null on failure.
    virtual HANDLE MakeJob() = 0;

    /// Has all processes of a job be killed when its last handle is closed, by the end of its owner at the latest. On
    /// Linux this is so for each job.
    virtual bool KillOnClose(HANDLE job) = 0;

    /// The handle of what ends, with exit code 0, when the job's last process has ended; with 1 when that cannot be
    /// told. Null on failure.
    virtual HANDLE Watch(HANDLE job) = 0;

    /// Starts a command in a job, and gives a handle of its process; null on failure. On Linux it gets the current
    /// folder, the environment and the standard streams that this process has now, and its command line is split by the
    /// rules of SplitCommandLine.
    virtual HANDLE StartIn(HANDLE job, const wchar_t* commandLine) = 0;

    /// Waits for the end of a process that was started, or of what watches a job, and gives its exit code. No value
    /// when the time is up, with the reason 0, and on failure; all ones are for ever. What a signal has ended on Linux
    /// has 128 and its number.
    virtual std::optional<DWORD> WaitForExitCode(HANDLE handle, DWORD milliseconds) = 0;
};

ServiceSlot<JobService>& JobsSlot() noexcept;
inline JobService& Jobs() noexcept { return JobsSlot().Get(); }

}
