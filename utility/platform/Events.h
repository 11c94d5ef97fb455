#pragma once

// What one thread sets and others wait for; guards/EventSetter.h sets one at the end of a scope.

#include "utility/platform/Export.h"
#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

/// Events: what one thread sets, and others wait for. Any thread may call. A handle is ended by Handles().CloseHandle,
/// or a resource_ptr. An operation that fails leaves its reason in LastError().
class EventService
{
public:
    virtual ~EventService() = default;

    /// An event that is not set; once it is, it stays so. Null on failure.
    [[nodiscard]] virtual HANDLE MakeEvent() = 0;

    /// Lets all go on who wait for it, now or later.
    virtual bool Set(HANDLE event) = 0;

    /// Whether it is set before the time is up; all ones are for ever.
    virtual bool Wait(HANDLE event, DWORD milliseconds) = 0;
};

/// Where a test puts a substitute in place.
UTILITY_API ServiceSlot<EventService>& EventsSlot() noexcept;
/// The events of this process.
inline EventService& Events() noexcept { return EventsSlot().Get(); }

}
