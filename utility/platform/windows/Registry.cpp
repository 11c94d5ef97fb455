#include "utility/platform/Registry.h"

#include "utility/platform/Hives.h"
#include "utility/platform/SystemService.h"

#include <boost/filesystem/path.hpp>

#include <shlwapi.h>

namespace utility::platform
{

namespace
{

class WindowsRegistry final : public RegistryService
{
public:
    LSTATUS RegCreateKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        // The system refuses a null name here, and takes an empty one for the parent itself.
        return ::RegCreateKeyExW(parent, subKey != nullptr ? subKey : L"", 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                 nullptr, &key, nullptr);
    }

    LSTATUS RegOpenKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        HKEY opened = nullptr;
        const LSTATUS status = ::RegOpenKeyExW(parent, subKey, 0, access, &opened);
        if (status == ERROR_SUCCESS)
            key = opened;
        return status;
    }

    LSTATUS RegOpenKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) override
    {
        HKEY opened = nullptr;
        const LSTATUS status = ::RegOpenKeyW(parent, subKey, &opened);
        if (status == ERROR_SUCCESS)
            key = opened;
        return status;
    }

    LSTATUS RegCreateKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) override
    {
        return ::RegCreateKeyW(parent, subKey, &key);
    }

    LSTATUS RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* type, void* data, DWORD* size) override
    {
        return ::RegQueryValueExW(key, name, nullptr, type, static_cast<BYTE*>(data), size);
    }

    LSTATUS RegSetValueExW(HKEY key, const wchar_t* name, DWORD type, const void* data, DWORD size) override
    {
        return ::RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), size);
    }

    LSTATUS RegSetValueW(HKEY key, const wchar_t* subKey, const wchar_t* text) override
    {
        return ::RegSetValueW(key, subKey, REG_SZ, text, static_cast<DWORD>((::lstrlenW(text) + 1) * sizeof(wchar_t)));
    }

    LSTATUS RegDeleteValueW(HKEY key, const wchar_t* name) override { return ::RegDeleteValueW(key, name); }

    LSTATUS RegCloseKey(HKEY key) override { return ::RegCloseKey(key); }

    LSTATUS SHDeleteKeyW(HKEY parent, const wchar_t* subKey) override { return ::SHDeleteKeyW(parent, subKey); }

    LSTATUS RegEnumKeyExW(HKEY key, DWORD index, wchar_t* name, DWORD& length) override
    {
        return ::RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
    }

    LSTATUS RegEnumValueW(HKEY key, DWORD index, wchar_t* name, DWORD& length, DWORD* type, void* data,
                          DWORD* size) override
    {
        return ::RegEnumValueW(key, index, name, &length, nullptr, type, static_cast<BYTE*>(data), size);
    }

    LSTATUS RegQueryInfoKeyW(HKEY key, RegistryKeyInfo& info) override
    {
        return ::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &info.subKeys, &info.longestSubKey, nullptr,
                                  &info.values, &info.longestValueName, &info.largestValue, nullptr, nullptr);
    }
};

}

ServiceSlot<RegistryService>& RegistrySlot() noexcept
{
    return SystemService<RegistryService, WindowsRegistry>::Slot();
}

bool SetHiveFile(HKEY /*hive*/, const boost::filesystem::path& /*file*/) { return false; }

boost::filesystem::path HiveFile(HKEY /*hive*/) { return {}; }

}
