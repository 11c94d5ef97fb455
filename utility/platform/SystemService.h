#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/UntilUnload.h"

namespace utility::platform
{

/// The slot of a service whose body for this system is the class `System`. It is there for whoever asks first, and in
/// any case when the library is loaded.
template <class Service, class System>
class SystemService
{
public:
    static ServiceSlot<Service>& Slot() noexcept
    {
        static UntilUnload<System> system;
        static ServiceSlot<Service> slot(*system);
        static_cast<void>(isMade);
        return slot;
    }

private:
    /// So that no fork finds another thread making it: the child would wait for that thread.
    static inline const bool isMade = (Slot(), true);
};

}
