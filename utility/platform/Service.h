#pragma once

#include <utility>

namespace utility::platform
{

/// The one place where a service of this process is kept: the system's own unless a substitute stands in for it.
/// Substitutes are put in place while no other thread uses the service.
template <class Service>
class ServiceSlot
{
public:
    explicit ServiceSlot(Service& system) noexcept : m_service(&system) {}

    Service& Get() const noexcept { return *m_service; }
    Service& Exchange(Service& substitute) noexcept { return *std::exchange(m_service, &substitute); }

private:
    Service* m_service;
};

}
