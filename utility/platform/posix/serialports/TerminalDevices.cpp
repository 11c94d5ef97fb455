#include "utility/platform/posix/serialports/TerminalDevices.h"

#include "utility/platform/Paths.h"
#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/files/KernelFile.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <fcntl.h>
#include <linux/serial.h>
#include <string_view>
#include <sys/ioctl.h>
#include <tuple>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

using boost::filesystem::path;

/// Whether the driver says that there is a chip behind a device.
bool HasChip(const path& device)
{
    const int file = AboveStandardStreams(::open(device.c_str(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file < 0)
        return false;
    serial_struct settings{};
    const bool hasChip = ::ioctl(file, TIOCGSERIAL, &settings) == 0 && settings.type != PORT_UNKNOWN;
    ::close(file);
    return hasChip;
}

bool IsSerialPort(const path& terminal, const path& device)
{
    boost::system::error_code failure;
    const path driver = boost::filesystem::read_symlink(terminal / "device" / "driver", failure);
    if (failure)
        return false;
    if (const path typeFile = terminal / "type"; exists(typeFile, failure))
    {
        int type = PORT_UNKNOWN;
        KernelFile(typeFile.native()) >> type;
        return type != PORT_UNKNOWN;
    }
    return driver.filename() != "serial8250" || HasChip(device);
}

/// What names are sorted by: the text ahead of the number at the end, and the number, which begins with no 0.
auto Rank(const path& name)
{
    const std::string_view text = name.native();
    const std::string_view stem = text.substr(0, text.find_last_not_of("0123456789") + 1);
    return std::tuple(stem, text.size(), text);
}

}

std::optional<std::vector<std::wstring>> SerialPortsAmong(const path& terminals, const path& devices)
{
    boost::system::error_code failure;
    boost::filesystem::directory_iterator terminal(terminals, failure);
    if (failure)
        return std::nullopt;
    std::vector<path> names;
    for (; terminal != boost::filesystem::directory_iterator(); terminal.increment(failure))
    {
        const path name = terminal->path().filename();
        if (IsSerialPort(terminal->path(), devices / name))
            names.push_back(name);
    }
    std::ranges::sort(names, {}, Rank);

    std::vector<std::wstring> ports;
    ports.reserve(names.size());
    for (const path& name : names)
        ports.push_back(WideFromPath(devices / name));
    return ports;
}

}
