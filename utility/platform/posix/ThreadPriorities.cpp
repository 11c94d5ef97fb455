#include "utility/platform/ThreadPriorities.h"

#include "utility/platform/ErrorCodes.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/SystemService.h"

#include <cerrno>
#include <cstdint>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace utility::platform
{

namespace
{

struct Step
{
    int priority;
    int nice;
};

constexpr Step steps[] = {{0, 0}, {1, -5}, {2, -10}, {15, -20}, {-1, 5}, {-2, 10}, {-15, 19}};

/// A nice value that is no step is this number and it.
constexpr int between = 1000;

/// What Windows gives for a priority that it cannot tell.
constexpr int noPriority = 0x7FFFFFFF;

bool MayRaise(int nice)
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
    if (::syscall(SYS_capget, &header, sets) == 0 && (sets[0].effective & 1U << CAP_SYS_NICE) != 0)
        return true;
    rlimit limit;
    return ::getrlimit(RLIMIT_NICE, &limit) == 0 && nice >= 20 - static_cast<int>(limit.rlim_cur);
}

class PosixThreadPriorities final : public ThreadPriorityService
{
public:
    HANDLE CallingThread() override { return reinterpret_cast<HANDLE>(std::intptr_t{-2}); }

    int Priority(HANDLE thread) override
    {
        int nice = 0;
        if (!IsCalling(thread) || !GetNice(nice))
            return noPriority;
        for (const Step& step : steps)
        {
            if (step.nice == nice)
                return step.priority;
        }
        return between + nice;
    }

    bool SetPriority(HANDLE thread, int priority) override
    {
        int before = 0;
        if (!IsCalling(thread) || !GetNice(before))
            return false;
        int nice = priority - between;
        for (const Step& step : steps)
        {
            if (step.priority == priority)
                nice = step.nice;
        }
        if (nice < -20 || nice > 19)
        {
            SetLastError(ERROR_INVALID_PARAMETER);
            return false;
        }
        if (nice > before && !MayRaise(before))
        {
            SetLastError(ERROR_ACCESS_DENIED);
            return false;
        }
        return ::setpriority(PRIO_PROCESS, 0, nice) == 0 || posix::Fail();
    }

private:
    bool IsCalling(HANDLE thread)
    {
        if (thread == CallingThread())
            return true;
        SetLastError(ERROR_INVALID_HANDLE);
        return false;
    }

    /// On Linux it is of the thread, whatever the call is named.
    static bool GetNice(int& nice)
    {
        errno = 0;
        nice = ::getpriority(PRIO_PROCESS, 0);
        return errno == 0 || posix::Fail();
    }
};

}

ServiceSlot<ThreadPriorityService>& ThreadPrioritiesSlot() noexcept
{
    return SystemService<ThreadPriorityService, PosixThreadPriorities>::Slot();
}

}
