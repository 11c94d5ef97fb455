#include "utility/platform/Debugger.h"

#include "utility/platform/Types.h"

namespace utility::platform
{

namespace
{

class WindowsDebugger final : public DebuggerService
{
public:
    void Output(const wchar_t* text) override { ::OutputDebugStringW(text); }
};

}

ServiceSlot<DebuggerService>& DebuggerSlot() noexcept
{
    static WindowsDebugger system;
    static ServiceSlot<DebuggerService> slot(system);
    return slot;
}

}
