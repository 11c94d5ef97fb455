#pragma once

#include "utility/platform/ExceptionRecord.h"

#include <csignal>
#include <ucontext.h>

namespace utility::platform::posix
{

// What is here runs within a fault: it takes no lock, allocates nothing and leaves errno to its caller.

inline constexpr DWORD codeOfAbort = 0x40000015;
inline constexpr DWORD codeOfBreakpoint = 0x80000003;
inline constexpr DWORD codeOfStackOverflow = 0xC00000FD;

/// Whether the processor raised a signal, and not a call of some program.
inline bool IsOfProcessor(const siginfo_t& info) { return info.si_code > 0; }

/// Says in the records what a signal's handler was told.
void FillRecords(int signal, const siginfo_t& info, const ucontext_t& interrupted, _EXCEPTION_RECORD& record,
                 _CONTEXT& registers);

}
