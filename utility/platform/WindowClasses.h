#pragma once

#include "utility/platform/Service.h"

#include <cstdint>

namespace utility::platform
{

/// The classes of windows. A window is made on the calling thread.
class WindowClassService
{
public:
    virtual ~WindowClassService() = default;

    /// The number of a class, for which one of its windows is made and destroyed. 0 if there is none, which is always
    /// so on Linux.
    virtual std::uint16_t Atom(const wchar_t* className) = 0;
};

ServiceSlot<WindowClassService>& WindowClassesSlot() noexcept;
inline WindowClassService& WindowClasses() noexcept { return WindowClassesSlot().Get(); }

}
