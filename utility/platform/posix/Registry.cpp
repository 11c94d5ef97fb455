#include "utility/platform/Registry.h"

namespace utility::platform
{

namespace
{

/// No hives yet: nothing can be opened.
class PosixRegistry final : public RegistryService
{
public:
    LSTATUS RegCreateKeyExW(HKEY, const wchar_t*, DWORD, HKEY&) override { return missing; }
    LSTATUS RegOpenKeyExW(HKEY, const wchar_t*, DWORD, HKEY&) override { return missing; }
    LSTATUS RegCreateKeyW(HKEY, const wchar_t*, HKEY&) override { return missing; }
    LSTATUS RegQueryValueExW(HKEY, const wchar_t*, DWORD*, void*, DWORD*) override { return missing; }
    LSTATUS RegSetValueExW(HKEY, const wchar_t*, DWORD, const void*, DWORD) override { return missing; }
    LSTATUS RegSetValueW(HKEY, const wchar_t*, const wchar_t*) override { return missing; }
    LSTATUS RegDeleteValueW(HKEY, const wchar_t*) override { return missing; }
    LSTATUS RegCloseKey(HKEY) override { return missing; }
    LSTATUS SHDeleteKeyW(HKEY, const wchar_t*) override { return missing; }
    LSTATUS RegEnumKeyExW(HKEY, DWORD, wchar_t*, DWORD&) override { return missing; }
    LSTATUS RegEnumValueW(HKEY, DWORD, wchar_t*, DWORD&, DWORD*, void*, DWORD*) override { return missing; }
    LSTATUS RegQueryInfoKeyW(HKEY, RegistryKeyInfo&) override { return missing; }

private:
    static constexpr LSTATUS missing = static_cast<LSTATUS>(ERROR_INVALID_HANDLE);
};

}

ServiceSlot<RegistryService>& RegistrySlot() noexcept
{
    static PosixRegistry system;
    static ServiceSlot<RegistryService> slot(system);
    return slot;
}

}
