#pragma once

#include "utility/platform/Service.h"

#include <utility>

namespace support
{

/// Puts a substitute for a platform service in place for a scope.
///
///     const Substitute<platform::FileService> scope(platform::FilesSlot(), files);
template <class Service>
class Substitute
{
public:
    Substitute(utility::platform::ServiceSlot<Service>& slot, Service& substitute)
        : m_slot(slot), m_earlier(slot.Exchange(substitute))
    {
    }
    Substitute(const Substitute&) = delete;
    Substitute& operator=(const Substitute&) = delete;
    ~Substitute() { m_slot.Exchange(m_earlier); }

private:
    utility::platform::ServiceSlot<Service>& m_slot;
    Service& m_earlier;
};

}
