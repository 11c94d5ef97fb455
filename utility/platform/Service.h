#pragma once

// How a service of the system is found, and replaced in tests.

#include <utility>

namespace utility::platform
{

/// The one place where a service of this process is kept: the system's own unless a substitute stands in for it.
/// Substitutes are put in place while no other thread uses the service.
template <class Service>
class ServiceSlot
{
public:
    /// `system` is the system's own, and outlives the slot.
    explicit ServiceSlot(Service& system) noexcept : m_service(&system) {}

    /// The service that is in place.
    Service& Get() const noexcept { return *m_service; }
    /// Puts another one in place, which outlives its use, and gives the one there was.
    Service& Exchange(Service& substitute) noexcept { return *std::exchange(m_service, &substitute); }

private:
    Service* m_service;
};

}
