#pragma once

#include <boost/filesystem/path.hpp>

#include <optional>
#include <string>
#include <vector>

namespace utility::platform::posix
{

/// The serial ports among the terminals of the kernel's folder of them, as paths in the folder of the devices; none at
/// all if there is no such folder. They are sorted: by what is ahead of a number at the end, then by the number.
///
/// A terminal is a port if a driver has it. Drivers of the standard chips announce more ports than there are: one of an
/// unknown type has no hardware. Where the kernel does not tell the type, only a port of these drivers is opened to be
/// asked, and is left out if it cannot be: opening one that a USB device is behind may well reset that.
std::optional<std::vector<std::wstring>> SerialPortsAmong(const boost::filesystem::path& terminals,
                                                          const boost::filesystem::path& devices);

}
