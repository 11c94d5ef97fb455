#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

/// The debugger of this process. Any thread may call.
class DebuggerService
{
public:
    virtual ~DebuggerService() = default;

    /// Whether a debugger is attached: on Linux, whether some process traces this one.
    virtual bool IsPresent() = 0;

    /// Stops in the debugger. Without one it is a fault, which ends the process unless somebody handles it: an
    /// exception 0x80000003 on Windows, the signal SIGTRAP on Linux.
    virtual void Break() = 0;

    /// Tells the debugger, which is there, the name of a thread by its number: by an exception 0x406D1388 on Windows,
    /// which goes no further than to it; on Linux by the name that the system keeps, of up to 15 bytes.
    virtual void NameThread(DWORD thread, const char* name) = 0;

    /// Sends a null-terminated text to the debugger's output: to the process's sink if it has one (see
    /// DebuggerSink.h), on Linux otherwise by one write to the standard error stream, as UTF-8.
    virtual void Output(const wchar_t* text) = 0;
    /// The same for text in the system's narrow encoding, which on Linux goes out as it is.
    virtual void Output(const char* text) = 0;
};

ServiceSlot<DebuggerService>& DebuggerSlot() noexcept;
inline DebuggerService& Debugger() noexcept { return DebuggerSlot().Get(); }

/// Hands a text to the process's sink. False if it has none: then the text is for the system.
bool SendToDebuggerSink(const wchar_t* text);
bool SendToDebuggerSink(const char* text);

}
