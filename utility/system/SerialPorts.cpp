#include "utility/system/SerialPorts.h"

#include "utility/platform/SerialPorts.h"

#include <optional>
#include <vector>

namespace
{

std::wstring TextOf(const wchar_t* text) { return text != nullptr ? text : std::wstring(); }

}

CSerialPortInfo::CSerialPortInfo(const wchar_t* portName, const wchar_t* friendlyName)
    : m_strPortName(TextOf(portName)), m_strFriendlyName(TextOf(friendlyName))
{
}

CSerialPortInfo::CSerialPortInfo(const CSerialPortInfo& other) = default;
CSerialPortInfo::CSerialPortInfo(CSerialPortInfo&& other) noexcept = default;
CSerialPortInfo& CSerialPortInfo::operator=(const CSerialPortInfo& other) = default;
CSerialPortInfo& CSerialPortInfo::operator=(CSerialPortInfo&& other) noexcept = default;
CSerialPortInfo::~CSerialPortInfo() = default;

const std::wstring& CSerialPortInfo::PortName() const { return m_strPortName; }

const std::wstring& CSerialPortInfo::FriendlyName() const { return m_strFriendlyName; }

bool EnumerateSerialPorts(std::list<CSerialPortInfo>& ports)
{
    const std::optional<std::vector<std::wstring>> names = utility::platform::SerialPorts().Names();
    if (!names)
        return false;
    std::list<CSerialPortInfo> found;
    for (const std::wstring& name : *names)
        found.emplace_back(name.c_str());
    ports.splice(ports.end(), found);
    return true;
}
