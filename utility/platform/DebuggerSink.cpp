#include "utility/platform/DebuggerSink.h"

#include "utility/platform/Debugger.h"
#include "utility/platform/Text.h"

#include <atomic>
#include <string>

namespace utility::platform
{

namespace
{

std::atomic<DebuggerSink> debuggerSink;

std::wstring Widen(const char* text)
{
    // Both lengths count the null, which the string brings along by itself.
    const int length = Text().FromCodePage(CP_ACP, text, -1, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    Text().FromCodePage(CP_ACP, text, -1, wide.data(), length);
    return wide;
}

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
    return debuggerSink != nullptr && SendToDebuggerSink(Widen(text).c_str());
}

}
