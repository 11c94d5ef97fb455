#include "utility/platform/ThreadTimes.h"

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/handles/Handle.h"
#include "utility/platform/posix/threads/TimedThreads.h"
#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

FILETIME FileTimeOf(std::uint64_t ticks) { return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)}; }

class PosixThreadTimes final : public ThreadTimeService
{
public:
    HANDLE OpenCallingThread() override
    {
        const int number = posix::RememberCallingThread();
        if (number >= 0)
            return posix::MakeHandle(posix::HandleKind::thread, number);
        posix::Fail();
        return INVALID_HANDLE_VALUE;
    }

    bool Times(HANDLE thread, FILETIME& kernel, FILETIME& user) override
    {
        posix::ProcessorTime time;
        if (!posix::TimeOf(posix::NumberOf(posix::HandleKind::thread, thread), time))
        {
            SetLastError(ERROR_INVALID_HANDLE);
            return false;
        }
        kernel = FileTimeOf(time.kernel);
        user = FileTimeOf(time.user);
        return true;
    }
};

}

ServiceSlot<ThreadTimeService>& ThreadTimesSlot() noexcept
{
    return SystemService<ThreadTimeService, PosixThreadTimes>::Slot();
}

}
