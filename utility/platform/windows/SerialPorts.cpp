#include "utility/platform/SerialPorts.h"

#include "utility/platform/formats/Utf16.h"
#include "utility/platform/Registry.h"
#include "utility/platform/SystemService.h"

#include <algorithm>
#include <memory>

namespace utility::platform
{

namespace
{

struct KeyCloser
{
    void operator()(HKEY key) const noexcept { Registry().RegCloseKey(key); }
};

class WindowsSerialPorts final : public SerialPortService
{
public:
    std::optional<std::vector<std::wstring>> Names() override
    {
        HKEY opened = nullptr;
        if (Registry().RegOpenKeyW(HKEY_LOCAL_MACHINE, L"Hardware\\devicemap\\serialcomm", opened) != ERROR_SUCCESS)
            return std::nullopt;
        const std::unique_ptr<HKEY__, KeyCloser> key(opened);
        std::vector<std::wstring> names;
        RegistryKeyInfo info;
        if (Registry().RegQueryInfoKeyW(key.get(), info) != ERROR_SUCCESS)
            return names;

        std::wstring device(info.longestValueName + std::size_t{1}, L'\0');
        std::vector<char> data(info.largestValue);
        for (DWORD index = 0;; ++index)
        {
            auto length = static_cast<DWORD>(device.size());
            auto size = static_cast<DWORD>(data.size());
            DWORD type = REG_NONE;
            if (Registry().RegEnumValueW(key.get(), index, device.data(), length, &type, data.data(), &size) !=
                ERROR_SUCCESS)
                return names;
            if (type != REG_SZ)
                continue;
            const std::wstring name = formats::WideFromUtf16(data.data(), size / sizeof(wchar_t));
            names.emplace_back(name, 0, name.find(L'\0'));
        }
    }
};

}

ServiceSlot<SerialPortService>& SerialPortsSlot() noexcept
{
    return SystemService<SerialPortService, WindowsSerialPorts>::Slot();
}

}
