#include "utility/platform/SerialPorts.h"

#include "utility/platform/posix/serialports/TerminalDevices.h"
#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

class PosixSerialPorts final : public SerialPortService
{
public:
    std::optional<std::vector<std::wstring>> Names() override
    {
        return posix::SerialPortsAmong("/sys/class/tty", "/dev");
    }
};

}

ServiceSlot<SerialPortService>& SerialPortsSlot() noexcept
{
    return SystemService<SerialPortService, PosixSerialPorts>::Slot();
}

}
