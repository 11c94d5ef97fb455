#include "utility/platform/posix/serialports/TerminalDevices.h"

#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Paths.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <linux/serial.h>
#include <optional>
#include <string>
#include <vector>

using boost::filesystem::path;
using utility::platform::posix::SerialPortsAmong;

namespace
{

/// A folder of terminals as the kernel shows them, links and all, and one of devices.
class TerminalDevicesTest : public testing::Test
{
protected:
    TerminalDevicesTest()
    {
        create_directory(m_terminals);
        create_directory(m_devices);
    }

    /// One that no driver has unless it is named; without a type unless it is given.
    void AddTerminal(const std::string& name, const std::string& driver = "", const std::string& type = "") const
    {
        const path device = m_folder.Path() / "machine" / name;
        const path terminal = device / "tty" / name;
        create_directories(terminal);
        create_directory_symlink("../../../" + name, terminal / "device");
        create_directory_symlink("../machine/" + name + "/tty/" + name, m_terminals / name);
        if (!driver.empty())
        {
            create_directories(m_folder.Path() / "drivers" / driver);
            create_directory_symlink("../../drivers/" + driver, device / "driver");
        }
        if (!type.empty())
            std::ofstream((terminal / "type").native()) << type << '\n';
    }

    using Names = std::vector<std::wstring>;

    /// The names of the ports, which are paths of devices, without their folder.
    Names Ports() const
    {
        const std::optional<Names> ports = SerialPortsAmong(m_terminals, m_devices);
        Names names;
        for (const std::wstring& port : ports.value())
        {
            const path device = utility::platform::PathFromWide(port);
            EXPECT_EQ(device.parent_path(), m_devices);
            names.push_back(utility::platform::WideFromPath(device.filename()));
        }
        return names;
    }

    const support::TemporaryFolder m_folder;
    const path m_terminals = m_folder / "class";
    const path m_devices = m_folder / "dev";
};

}

TEST_F(TerminalDevicesTest, TerminalThatADriverHasIsAPort)
{
    AddTerminal("ttyUSB0", "ftdi_sio");
    AddTerminal("ttyACM0", "cdc_acm");
    AddTerminal("ttyS0", "serial", "4");
    AddTerminal("console");
    AddTerminal("tty1");
    EXPECT_EQ(Ports(), (Names{L"ttyACM0", L"ttyS0", L"ttyUSB0"}));
}

TEST_F(TerminalDevicesTest, TerminalWithoutADeviceIsNone)
{
    create_directory(m_terminals / "ptmx");
    EXPECT_EQ(Ports(), Names());
}

TEST_F(TerminalDevicesTest, PortThatADriverAnnouncesAndNoHardwareBacksIsNone)
{
    AddTerminal("ttyS0", "serial8250", "4");
    AddTerminal("ttyS1", "serial8250", "0");
    AddTerminal("ttyS2", "port", "0");
    AddTerminal("ttyS3", "port", "1");
    EXPECT_EQ(Ports(), (Names{L"ttyS0", L"ttyS3"}));
}

TEST_F(TerminalDevicesTest, PortWhoseTypeCannotBeReadIsLeftOut)
{
    AddTerminal("ttyS0", "port", "4");
    AddTerminal("ttyS1", "port", "none");
    EXPECT_EQ(Ports(), Names{L"ttyS0"});
    remove(m_terminals / "ttyS0" / "type");
    create_directory(m_terminals / "ttyS0" / "type");
    EXPECT_EQ(Ports(), Names());
}

TEST_F(TerminalDevicesTest, DeviceOfAPortWhoseTypeTheKernelTellsIsNotOpened)
{
    AddTerminal("ttyS0", "serial8250", "4");
    AddTerminal("ttyUSB0", "ftdi_sio");
    const support::FailingCall failing("open", EACCES, support::FailingCall::always);
    EXPECT_EQ(Ports(), (Names{L"ttyS0", L"ttyUSB0"}));
    EXPECT_FALSE(failing.HasFailed());
}

TEST_F(TerminalDevicesTest, PortOfUnknownTypeIsAskedForIt)
{
    AddTerminal("ttyS0", "serial8250");
    EXPECT_EQ(Ports(), Names()); // there is no such device
    std::ofstream((m_devices / "ttyS0").native()) << "no port";
    EXPECT_EQ(Ports(), Names());
}

TEST_F(TerminalDevicesTest, PortThatIsAskedAndHasAChipIsOne)
{
    AddTerminal("ttyS0", "serial8250");
    std::ofstream((m_devices / "ttyS0").native()) << "a port, by what it answers";
    {
        const support::SerialPortOfType none(PORT_UNKNOWN);
        EXPECT_EQ(Ports(), Names());
    }
    const support::SerialPortOfType known(PORT_16550A);
    EXPECT_EQ(Ports(), Names{L"ttyS0"});
    const support::FailingCall failing("open", EACCES);
    EXPECT_EQ(Ports(), Names());
    EXPECT_TRUE(failing.HasFailed());
}

TEST_F(TerminalDevicesTest, DeviceThatIsAskedIsClosed)
{
    AddTerminal("ttyS0", "serial8250");
    std::ofstream((m_devices / "ttyS0").native()) << "no port";
    const std::ptrdiff_t before = support::OpenDescriptors();
    EXPECT_EQ(Ports(), Names());
    EXPECT_EQ(support::OpenDescriptors(), before);
}

TEST_F(TerminalDevicesTest, AreSortedByNameAndNumber)
{
    for (const char* const name : {"ttyS10", "ttyS2", "ttyS1", "ttyUSB1", "ttyACM3", "tty", "ttyS"})
        AddTerminal(name, "driver");
    EXPECT_EQ(Ports(), (Names{L"tty", L"ttyACM3", L"ttyS", L"ttyS1", L"ttyS2", L"ttyS10", L"ttyUSB1"}));
}

TEST_F(TerminalDevicesTest, NameMayBeAnyBytes)
{
    AddTerminal("tty\xFF\xC3\xB6 0", "driver");
    EXPECT_EQ(Ports(), (Names{L"tty\xDCFFö 0"}));
}

TEST_F(TerminalDevicesTest, EmptyFolderHasNoPorts) { EXPECT_EQ(Ports(), Names()); }

TEST_F(TerminalDevicesTest, MissingFolderAndOneThatIsNoneHaveNoListAtAll)
{
    EXPECT_EQ(SerialPortsAmong(m_folder / "absent", m_devices), std::nullopt);
    EXPECT_EQ(SerialPortsAmong(m_folder.File("file", ""), m_devices), std::nullopt);
}
