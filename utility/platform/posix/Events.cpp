#include "utility/platform/Events.h"

#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/descriptors/Readable.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/handles/Handle.h"
#include "utility/platform/SystemService.h"

#include <sys/eventfd.h>

namespace utility::platform
{

namespace
{

class PosixEvents final : public EventService
{
public:
    HANDLE MakeEvent() override
    {
        const int event = posix::AboveStandardStreams(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
        if (event >= 0)
            return posix::MakeHandle(posix::HandleKind::event, event);
        posix::Fail();
        return nullptr;
    }

    bool Set(HANDLE event) override
    {
        // It counts up to a number that is never reached by anyone; full it is as good as set.
        return ::eventfd_write(posix::NumberOf(posix::HandleKind::event, event), 1) == 0 || errno == EAGAIN ||
               posix::Fail();
    }

    bool Wait(HANDLE event, DWORD milliseconds) override
    {
        const int number = posix::NumberOf(posix::HandleKind::event, event);
        if (number < 0)
            errno = EBADF;
        const std::optional<bool> isSet = number < 0 ? std::nullopt : posix::WaitUntilReadable(number, milliseconds);
        return isSet ? *isSet : posix::Fail();
    }
};

}

ServiceSlot<EventService>& EventsSlot() noexcept { return SystemService<EventService, PosixEvents>::Slot(); }

}
