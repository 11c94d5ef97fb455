#pragma once

// The name of a thread, as a debugger shows it.
//
//     SetThreadName(threadId, "tool paths");
//
// Any thread may call. Nothing is thrown. Without a debugger nothing happens at all: it leaves no trace. On Linux,
// where a debugger asks the system for it, a name has at most 15 bytes, and the rest is cut off.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

/// The thread by the number that the system has for it, this process's own; on Windows all ones are the calling thread.
UTILITY_API void SetThreadName(DWORD threadId, const char* name);
