#pragma once

// Whatever leaves a scope sets an event: a return, or an exception.
//
//     const resource_ptr<HANDLE> done(utility::platform::Events().MakeEvent());
//     {
//         const CEventSetter setter(done.get());
//         Show(utility::platform::Events().Wait(done.get(), 0));
//     }
//     assert(utility::platform::Events().Wait(done.get(), 0));
//
// An object belongs to one thread at a time; any thread may wait for the event. Nothing here throws. The event is not
// owned, and stays set. On Windows it may be any event of the system.

#include "utility/platform/Export.h"

/// Sets an event when it dies. Each copy sets the event as well, deliberately one that was assigned too: what it was
/// for before is not set.
class UTILITY_API CEventSetter
{
public:
    /// The event outlives the object.
    explicit CEventSetter(void* event) noexcept;
    CEventSetter(const CEventSetter&) = default;
    CEventSetter& operator=(const CEventSetter&) = default;
    /// Sets the event.
    ~CEventSetter();

private:
    void* m_hEvent;
};
