#include "utility/system/SerialPorts.h"

#include "tests/support/Substitute.h"
#include "utility/platform/SerialPorts.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace
{

using PortNames = std::optional<std::vector<std::wstring>>;

static_assert(!std::is_polymorphic_v<CSerialPortInfo>);
static_assert(std::is_nothrow_move_constructible_v<CSerialPortInfo>);

/// For its lifetime the machine has these ports.
class PortsOfMachine final : public utility::platform::SerialPortService
{
public:
    explicit PortsOfMachine(PortNames names) : m_names(std::move(names)) {}
    PortNames Names() override { return m_names; }

private:
    PortNames m_names;
    const support::Substitute<utility::platform::SerialPortService> m_scope{utility::platform::SerialPortsSlot(),
                                                                            *this};
};

std::vector<std::wstring> NamesOf(const std::list<CSerialPortInfo>& ports)
{
    std::vector<std::wstring> names;
    for (const CSerialPortInfo& port : ports)
    {
        names.push_back(port.PortName());
        EXPECT_EQ(port.FriendlyName().empty(), port.PortName() != L"Mine");
    }
    return names;
}

}

TEST(SerialPortInfoTest, NamesAreEmptyUnlessGiven)
{
    const CSerialPortInfo none;
    EXPECT_EQ(none.PortName(), L"");
    EXPECT_EQ(none.FriendlyName(), L"");
    const CSerialPortInfo port(L"COM3");
    EXPECT_EQ(port.PortName(), L"COM3");
    EXPECT_EQ(port.FriendlyName(), L"");
    const CSerialPortInfo unnamed(nullptr, L"Mill");
    EXPECT_EQ(unnamed.PortName(), L"");
    EXPECT_EQ(unnamed.FriendlyName(), L"Mill");
}

TEST(SerialPortInfoTest, CopiesAndMovesTakeBothNames)
{
    const auto isWhole = [](const CSerialPortInfo& port)
    { return port.PortName() == L"COM3" && port.FriendlyName() == L"Mill"; };
    CSerialPortInfo port(L"COM3", L"Mill");
    CSerialPortInfo copy(port);
    EXPECT_TRUE(isWhole(copy));
    CSerialPortInfo assigned;
    assigned = copy;
    EXPECT_TRUE(isWhole(assigned));
    EXPECT_TRUE(isWhole(copy));
    CSerialPortInfo moved(std::move(copy));
    EXPECT_TRUE(isWhole(moved));
    port = std::move(moved);
    EXPECT_TRUE(isWhole(port));
}

TEST(SerialPortsTest, AreAddedBehindWhatTheListHolds)
{
    const PortsOfMachine machine({{L"COM10", L"COM2", L""}});
    std::list<CSerialPortInfo> ports;
    ports.emplace_back(L"Mine", L"My port");
    EXPECT_TRUE(EnumerateSerialPorts(ports));
    EXPECT_EQ(NamesOf(ports), (std::vector<std::wstring>{L"Mine", L"COM10", L"COM2", L""}));
    EXPECT_TRUE(EnumerateSerialPorts(ports));
    EXPECT_EQ(ports.size(), 7u);
}

TEST(SerialPortsTest, WithoutAListOfTheSystemThereIsFalseAndTheListStays)
{
    const PortsOfMachine machine(std::nullopt);
    std::list<CSerialPortInfo> ports(1, CSerialPortInfo(L"Mine", L"My port"));
    EXPECT_FALSE(EnumerateSerialPorts(ports));
    EXPECT_EQ(NamesOf(ports), std::vector<std::wstring>{L"Mine"});
}

TEST(SerialPortsTest, ListOfTheSystemMayBeEmpty)
{
    const PortsOfMachine machine(std::vector<std::wstring>{});
    std::list<CSerialPortInfo> ports(1, CSerialPortInfo(L"Mine", L"My port"));
    EXPECT_TRUE(EnumerateSerialPorts(ports));
    EXPECT_EQ(NamesOf(ports), std::vector<std::wstring>{L"Mine"});
}

TEST(SerialPortsTest, OfThisMachineAreThoseThatTheSystemNames)
{
    const PortNames names = utility::platform::SerialPorts().Names();
    std::list<CSerialPortInfo> ports;
    EXPECT_EQ(EnumerateSerialPorts(ports), names.has_value());
    EXPECT_EQ(NamesOf(ports), names.value_or(std::vector<std::wstring>()));
}
