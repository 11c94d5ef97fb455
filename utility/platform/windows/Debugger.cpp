#include "utility/platform/Debugger.h"

#include "utility/platform/SystemService.h"
#include "utility/platform/Types.h"

#include <cstddef>

namespace utility::platform
{

namespace
{

constexpr DWORD threadNameException = 0x406D1388;

/// What a debugger reads while the exception is raised.
struct ThreadName
{
    DWORD type;
    const char* name;
    DWORD thread;
    DWORD reserved;
};
static_assert(offsetof(ThreadName, name) == 8 && offsetof(ThreadName, thread) == 16);
static_assert(offsetof(ThreadName, reserved) == 20 && sizeof(ThreadName) == 24);

LONG CALLBACK Swallow(EXCEPTION_POINTERS* exception)
{
    return exception->ExceptionRecord->ExceptionCode == threadNameException ? EXCEPTION_CONTINUE_EXECUTION
                                                                            : EXCEPTION_CONTINUE_SEARCH;
}

class WindowsDebugger final : public DebuggerService
{
public:
    bool IsPresent() override { return ::IsDebuggerPresent(); }

    void Break() override { ::DebugBreak(); }

    void NameThread(DWORD thread, const char* name) override
    {
        // The count is of words of 32 bits, deliberately also where an argument has 64: there are as many arguments as
        // it says, and those behind the record are 0.
        union
        {
            ULONG_PTR arguments[6] = {};
            ThreadName record;
        } sent;
        sent.record = {0x1000, name, thread, 0};
        void* const handler = ::AddVectoredExceptionHandler(1, &Swallow);
        ::RaiseException(threadNameException, 0, 6, sent.arguments);
        ::RemoveVectoredExceptionHandler(handler);
    }

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
