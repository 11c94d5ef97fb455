#pragma once

#include "utility/platform/Service.h"

#include <optional>
#include <string>
#include <vector>

namespace utility::platform
{

/// The serial ports of the machine. Any thread may call.
class SerialPortService
{
public:
    virtual ~SerialPortService() = default;

    /// The names by which the ports are opened; none at all where the system keeps no list of them. On Windows these
    /// are the texts of the device map, in its order, up to the first that cannot be read. On Linux they are the ports
    /// that the kernel names and hardware backs, sorted, ttyS2 ahead of ttyS10.
    virtual std::optional<std::vector<std::wstring>> Names() = 0;
};

ServiceSlot<SerialPortService>& SerialPortsSlot() noexcept;
inline SerialPortService& SerialPorts() noexcept { return SerialPortsSlot().Get(); }

}
