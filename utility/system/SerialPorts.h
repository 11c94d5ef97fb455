#pragma once

// The serial ports of the machine.
//
//     std::list<CSerialPortInfo> ports;
//     if (EnumerateSerialPorts(ports))
//         for (const CSerialPortInfo& port : ports)
//             Show(port.PortName());
//
// A port's name is what it is opened by: `COM3` on Windows, as the device map has it and in its order; on Linux a path
// such as `/dev/ttyUSB0`, of each port that a driver of the kernel has and that hardware is behind, sorted by name and
// number. It is not said whether the user may open it, nor whether something is plugged in.
//
// Any thread may call; a list belongs to one at a time.

#include "utility/platform/Export.h"

#include <list>
#include <string>

/// A port by its names.
class UTILITY_API CSerialPortInfo
{
public:
    /// Null is the empty text.
    CSerialPortInfo(const wchar_t* portName = nullptr, const wchar_t* friendlyName = nullptr);
    /// Both names are copied, or moved.
    CSerialPortInfo(const CSerialPortInfo& other);
    CSerialPortInfo(CSerialPortInfo&& other) noexcept;
    CSerialPortInfo& operator=(const CSerialPortInfo& other);
    CSerialPortInfo& operator=(CSerialPortInfo&& other) noexcept;
    ~CSerialPortInfo();

    const std::wstring& PortName() const;     ///< what it is opened by
    const std::wstring& FriendlyName() const; ///< for the user; empty in what EnumerateSerialPorts gives

private:
    std::wstring m_strPortName;
    std::wstring m_strFriendlyName;
};

/// Adds the ports at the end of the list. False, with the list as it was, if the system has no list of ports, or it
/// cannot be opened: on Windows it is absent on a machine without ports. What cannot be read of such a list is left
/// out. If memory runs out std::bad_alloc is thrown and the list is as it was.
UTILITY_API bool EnumerateSerialPorts(std::list<CSerialPortInfo>& ports);
