#include "utility/platform/Debugger.h"

#include "utility/platform/SystemService.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

namespace
{

class WindowsDebugger final : public DebuggerService
{
public:
    bool IsPresent() override { return ::IsDebuggerPresent(); }

    void Break() override { ::DebugBreak(); }

    void Output(const wchar_t* text) override
    {
        if (!SendToDebuggerSink(text))
            ::OutputDebugStringW(text);
    }

    void Output(const char* text) override
    {
        if (!SendToDebuggerSink(text))
            ::OutputDebugStringA(text);
    }
};

}

ServiceSlot<DebuggerService>& DebuggerSlot() noexcept
{
    return SystemService<DebuggerService, WindowsDebugger>::Slot();
}

}
