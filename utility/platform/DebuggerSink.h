#pragma once

// Where the debugger's output goes: dbg(), reports of assertions that show no box, the table of the address space.
//
//     utility::platform::SetDebuggerSink([](const wchar_t* text) { console += text; });
//     dbg() << L"Hello"; // logging/DebugStream.h
//     assert(console == L"Hello");
//
// With no sink it goes to the debugger on Windows, and on Linux to the standard error stream. Nothing here throws.

#include "utility/platform/Export.h"

namespace utility::platform
{

/// Takes one null-terminated text, on the thread that sends it. Several threads may send at once. What is sent from
/// within the sink comes back to it.
using DebuggerSink = void (*)(const wchar_t* text);

/// Has `sink` take the debugger's output in place of the system; null gives it back to the system. Returns the sink
/// there was. Any thread may call.
UTILITY_API DebuggerSink SetDebuggerSink(DebuggerSink sink) noexcept;

}
