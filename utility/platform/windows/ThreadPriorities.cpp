#include "utility/platform/ThreadPriorities.h"

#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

class WindowsThreadPriorities final : public ThreadPriorityService
{
public:
    HANDLE CallingThread() override { return ::GetCurrentThread(); }

    int Priority(HANDLE thread) override { return ::GetThreadPriority(thread); }

    bool SetPriority(HANDLE thread, int priority) override { return ::SetThreadPriority(thread, priority) != FALSE; }
};

}

ServiceSlot<ThreadPriorityService>& ThreadPrioritiesSlot() noexcept
{
    return SystemService<ThreadPriorityService, WindowsThreadPriorities>::Slot();
}

}
