#pragma once

// Jobs: groups of processes of which nothing outlives the one that has the job. Whatever a process in it starts is in
// it too, on Linux also what goes into the background as daemons do.
//
//     std::unique_ptr<void, int (*)(void*)> job(nullptr, nullptr), thread(nullptr, nullptr), process(nullptr, nullptr);
//     if (CreateJob(job, thread) && StartInJob(job.get(), L"mill \"part 7.igs\"", process))
//     {
//         Show(*WaitForExitCode(process.get()));
//         job.reset();                   // kills what the command left behind,
//         WaitForExitCode(thread.get()); // of which nothing is there any more
//     }
//
// Any thread may call. A refused operation has its reason in utility::platform::LastError(); only a lack of memory is
// thrown.
//
// On Windows a job is the system's own, and a process can also be put into it by AssignProcessToJobObject. On Linux,
// where no process can be put into anything, StartInJob is the one way in, and a job is a program,
// UtilityJobSupervisor, which is installed beside the library. It is two processes: when one of them is killed, the
// other kills the job, of which the watch may then end with 1. What another user's rights protect from signals they can
// only wait for, and when both are killed at once, what was started in the job goes with them, and what that has
// started goes on. Both is better where the system lends this process a control group of version 2, as systemd does for
// the programs of a desktop: the job has a group of its own then, which is killed as a whole, be it by WaitForExitCode,
// the job's end or the next job.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <memory>
#include <optional>

/// A job, all processes of which are killed when it is closed, or this process ends, however it ends. The second
/// pointer gets a handle of what ends when the job's last process has ended, with exit code 0; 1 says that it cannot
/// tell. What the pointers had is closed by its own deleter. False if it fails: the first pointer is empty then.
///
/// A job that nothing was ever in keeps who waits for its end waiting, deliberately so also when it is closed. On
/// Windows the watch begins some time after the return: it misses what has ended till then, and a job that is closed
/// till then is an end with exit code 1.
UTILITY_API bool CreateJob(std::unique_ptr<void, int (*)(void*)>& job, std::unique_ptr<void, int (*)(void*)>& thread);

/// Starts a command in a job. On Linux it gets the current folder, the environment and the standard streams that this
/// process has now, and the line is split as programs on Windows split it (see platform/formats/CommandLine.h). The
/// last pointer gets a handle of the process. False if it cannot be started; the pointer is as before then.
UTILITY_API bool StartInJob(void* job, const wchar_t* commandLine, std::unique_ptr<void, int (*)(void*)>& process);

/// Waits for the end of what a handle of CreateJob or StartInJob stands for, and gives its exit code, as often as it is
/// asked. No value when the time is up, with 0 for a reason, and on failure. What a signal has ended on Linux has 128
/// and the signal's number.
UTILITY_API std::optional<DWORD> WaitForExitCode(void* handle, DWORD milliseconds = 0xFFFFFFFF);
