#pragma once

// Faults of the processor and what becomes of them. Plain functions, since they are called within a fault.

#include "utility/platform/ExceptionRecord.h"

namespace utility::platform
{

/// Makes `filter` the one of the process, and gives the earlier one, null if there was none.
///
/// On Linux the first filter takes over the signals of faults and of abort, and what is given for "earlier" calls the
/// action that each signal had; given back, or null, it restores them, save those that somebody else has taken since.
FaultFilter SetFaultFilter(FaultFilter filter) noexcept;

/// Makes `translator` the one of the calling thread and gives the earlier one, null if there was none.
FaultTranslator SetFaultTranslator(FaultTranslator translator) noexcept;

/// Sees to it that a fault on this thread finds a stack even where its own is exhausted. Counted: each Enter has its
/// Leave, on the same thread. Without memory for it nothing is done. On Windows the system keeps a part of the thread's
/// own stack back for that, for good.
void EnterFaultStack() noexcept;
void LeaveFaultStack() noexcept;

/// After a stack overflow that was caught on this thread: takes back the room that was made on its stack for what was
/// thrown, so that the next one is found again. To be called where the stack is no longer deep.
void RestoreStackGuard() noexcept;

/// Has another program write the report of a fault of this process, and waits for it. False if it could not be started:
/// then the process has to do it itself. On Windows always false. Nothing is allocated, and no lock is taken.
///
/// `log` is what of the log is to stand beside the report, null if nothing.
bool ReportFromOutside(const _EXCEPTION_POINTERS& fault, const void* log) noexcept;

}
