#pragma once

#include "utility/platform/FloatingPoint.h"
#include "utility/platform/Types.h"

namespace support
{

/// Puts the thread's floating-point masks and rounding direction back as they were.
class KeepFloatingControl
{
public:
    KeepFloatingControl() : m_control(utility::platform::FloatingControl(0, 0)) {}
    KeepFloatingControl(const KeepFloatingControl&) = delete;
    KeepFloatingControl& operator=(const KeepFloatingControl&) = delete;
    ~KeepFloatingControl()
    {
        utility::platform::ClearFloatingStatus();
        utility::platform::FloatingControl(m_control, _MCW_EM | _MCW_RC);
    }

private:
    unsigned int m_control;
};

}
