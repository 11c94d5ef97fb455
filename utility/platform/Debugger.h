#pragma once

#include "utility/platform/Service.h"

namespace utility::platform
{

/// The debugger's output. Any thread may call.
class DebuggerService
{
public:
    virtual ~DebuggerService() = default;

    /// Sends a null-terminated text to the debugger's output: on Linux to the standard error stream, as UTF-8.
    virtual void Output(const wchar_t* text) = 0;
};

ServiceSlot<DebuggerService>& DebuggerSlot() noexcept;
inline DebuggerService& Debugger() noexcept { return DebuggerSlot().Get(); }

}
