#include "utility/platform/ThreadTimes.h"

#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

class WindowsThreadTimes final : public ThreadTimeService
{
public:
    HANDLE OpenCallingThread() override
    {
        HANDLE thread = INVALID_HANDLE_VALUE;
        ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(), &thread, 0, FALSE,
                          DUPLICATE_SAME_ACCESS);
        return thread;
    }

    bool Times(HANDLE thread, FILETIME& kernel, FILETIME& user) override
    {
        FILETIME creation;
        FILETIME exit;
        return ::GetThreadTimes(thread, &creation, &exit, &kernel, &user) != FALSE;
    }
};

}

ServiceSlot<ThreadTimeService>& ThreadTimesSlot() noexcept
{
    return SystemService<ThreadTimeService, WindowsThreadTimes>::Slot();
}

}
