#include "utility/platform/SerialPorts.h"

#include "tests/support/ScratchHives.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

using utility::platform::SerialPorts;

namespace
{

using PortNames = std::optional<std::vector<std::wstring>>;

/// Has a device map of its own.
class DeviceMapTest : public testing::Test
{
protected:
    ~DeviceMapTest() override { m_hives.RegCloseKey(m_map); }

    void MakeMap()
    {
        ASSERT_EQ(m_hives.RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DEVICEMAP\\SERIALCOMM", KEY_READ | KEY_WRITE,
                                          m_map),
                  0);
    }

    void Add(const wchar_t* device, DWORD type, const std::wstring& units, DWORD bytesMore = 0)
    {
        EXPECT_EQ(m_hives.RegSetValueExW(m_map, device, type, units.data(),
                                         static_cast<DWORD>(units.size() * sizeof(wchar_t)) + bytesMore),
                  0);
    }

    struct Hives : support::ScratchHives
    {
        LSTATUS RegQueryInfoKeyW(HKEY key, utility::platform::RegistryKeyInfo& info) override
        {
            return isInfoRefused ? ERROR_ACCESS_DENIED : ScratchHives::RegQueryInfoKeyW(key, info);
        }
        LSTATUS RegEnumValueW(HKEY key, DWORD index, wchar_t* name, DWORD& length, DWORD* type, void* data,
                              DWORD* size) override
        {
            return index >= refusedFrom ? ERROR_MORE_DATA
                                        : ScratchHives::RegEnumValueW(key, index, name, length, type, data, size);
        }
        LSTATUS RegCloseKey(HKEY key) override
        {
            ++closed;
            return ScratchHives::RegCloseKey(key);
        }

        bool isInfoRefused = false;
        DWORD refusedFrom = 1000;
        int closed = 0;
    };

    Hives m_hives;
    HKEY m_map = nullptr;
};

}

TEST_F(DeviceMapTest, MachineWithoutOneHasNoListOfPorts)
{
    EXPECT_EQ(SerialPorts().Names(), std::nullopt);
    EXPECT_EQ(m_hives.closed, 0);
}

TEST_F(DeviceMapTest, PortsAreItsTextsInItsOrder)
{
    MakeMap();
    Add(L"\\Device\\Serial10", REG_SZ, std::wstring(L"COM10\0", 6));
    Add(L"\\Device\\Serial0", REG_SZ, std::wstring(L"COM1\0", 5));
    Add(L"\\Device\\VeryLongNameOfADeviceForAShortPort", REG_SZ, std::wstring(L"C\0", 2));

    std::vector<std::wstring> inOrder;
    wchar_t device[100];
    wchar_t port[100];
    for (DWORD index = 0; index < 3; ++index)
    {
        DWORD length = 100;
        DWORD size = sizeof(port);
        ASSERT_EQ(m_hives.RegEnumValueW(m_map, index, device, length, nullptr, port, &size), 0);
        inOrder.emplace_back(port);
    }
    EXPECT_EQ(SerialPorts().Names(), inOrder);
    EXPECT_EQ(m_hives.closed, 1);
}

TEST_F(DeviceMapTest, ValueThatIsNoTextIsSkipped)
{
    MakeMap();
    Add(L"a", REG_BINARY, L"COM1");
    Add(L"b", REG_SZ, std::wstring(L"COM2\0", 5));
    Add(L"c", REG_EXPAND_SZ, std::wstring(L"COM3\0", 5));
    Add(L"d", REG_DWORD, L"34");
    Add(L"e", REG_MULTI_SZ, std::wstring(L"COM5\0\0", 6));
    Add(L"f", REG_SZ, std::wstring(L"COM6\0", 5));
    const PortNames names = SerialPorts().Names();
    ASSERT_TRUE(names.has_value());
    EXPECT_EQ(*names, (std::vector<std::wstring>{L"COM2", L"COM6"}));
}

TEST_F(DeviceMapTest, TextEndsAtItsNullOrWithItsBytes)
{
    MakeMap();
    Add(L"a", REG_SZ, std::wstring(L"COM7\0more\0", 10));
    Add(L"b", REG_SZ, L"COM8");
    Add(L"c", REG_SZ, std::wstring(L"COM9\0", 5), 1 - static_cast<DWORD>(sizeof(wchar_t)));
    Add(L"d", REG_SZ, L"");
    const PortNames names = SerialPorts().Names();
    ASSERT_TRUE(names.has_value());
    EXPECT_EQ(*names, (std::vector<std::wstring>{L"COM7", L"COM8", L"COM9", L""}));
}

TEST_F(DeviceMapTest, PortsAreReadUpToTheFirstThatCannotBe)
{
    MakeMap();
    Add(L"a", REG_SZ, std::wstring(L"COM1\0", 5));
    Add(L"b", REG_SZ, std::wstring(L"COM2\0", 5));
    Add(L"c", REG_SZ, std::wstring(L"COM3\0", 5));
    for (m_hives.refusedFrom = 0; m_hives.refusedFrom < 3; ++m_hives.refusedFrom)
    {
        const PortNames names = SerialPorts().Names();
        ASSERT_TRUE(names.has_value());
        EXPECT_EQ(names->size(), m_hives.refusedFrom);
    }
    EXPECT_EQ(m_hives.closed, 3);
}

TEST_F(DeviceMapTest, EmptyOneAndOneThatTellsNothingOfItselfHaveNoPorts)
{
    MakeMap();
    EXPECT_EQ(SerialPorts().Names(), std::vector<std::wstring>());
    Add(L"a", REG_SZ, std::wstring(L"COM1\0", 5));
    m_hives.isInfoRefused = true;
    EXPECT_EQ(SerialPorts().Names(), std::vector<std::wstring>());
    EXPECT_EQ(m_hives.closed, 2);
}
