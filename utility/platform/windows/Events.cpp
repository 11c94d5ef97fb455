#include "utility/platform/Events.h"

#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

class WindowsEvents final : public EventService
{
public:
    HANDLE MakeEvent() override { return ::CreateEventW(nullptr, TRUE, FALSE, nullptr); }

    bool Set(HANDLE event) override { return ::SetEvent(event) != FALSE; }

    bool Wait(HANDLE event, DWORD milliseconds) override
    {
        return ::WaitForSingleObject(event, milliseconds) == WAIT_OBJECT_0;
    }
};

}

ServiceSlot<EventService>& EventsSlot() noexcept { return SystemService<EventService, WindowsEvents>::Slot(); }

}
