#include "utility/platform/DebuggerSink.h"

#include "utility/platform/Debugger.h"
#include "utility/platform/Text.h"

#include <atomic>

namespace utility::platform
{

namespace
{

std::atomic<DebuggerSink> debuggerSink;

}

DebuggerSink SetDebuggerSink(DebuggerSink sink) noexcept { return debuggerSink.exchange(sink); }

bool SendToDebuggerSink(const wchar_t* text)
{
    const DebuggerSink sink = debuggerSink;
    if (sink != nullptr)
        sink(text);
    return sink != nullptr;
}

bool SendToDebuggerSink(const char* text)
{
    // The conversion is for a sink alone.
    return debuggerSink != nullptr && SendToDebuggerSink(WideFromCodePage(CP_ACP, text).c_str());
}

}
