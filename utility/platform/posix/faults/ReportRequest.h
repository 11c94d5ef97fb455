#pragma once

#include "utility/platform/ExceptionRecord.h"

#include <sys/types.h>

namespace utility::platform::posix
{

/// What a process tells the program that writes the report of its fault: one such record on the program's standard
/// input, once its memory may be read. The process waits for the program's end. A byte on the program's standard output
/// says that there is a report, if only its beginning.
struct ReportRequest
{
    pid_t thread;       ///< that faulted
    pid_t threadInProc; ///< its number in /proc
    _EXCEPTION_RECORD record;
    _CONTEXT context;
    const void* log; ///< in the memory of the process, null if none is wanted
};

/// For how many seconds a report is written before it is given up: it ends where it stands then.
inline constexpr unsigned reportSeconds = 10;

/// The program's name. It is beside the library, and beside the program that has the library in it.
inline constexpr char reportProgram[] = "UtilityCrashReport";

}
