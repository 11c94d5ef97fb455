#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/Registry.h"

namespace support
{

/// For its lifetime the registry: the one there was, except where a test says otherwise.
class ForwardingRegistry : public utility::platform::RegistryService
{
public:
    LSTATUS RegCreateKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        return m_system.RegCreateKeyExW(parent, subKey, access, key);
    }
    LSTATUS RegOpenKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        return m_system.RegOpenKeyExW(parent, subKey, access, key);
    }
    LSTATUS RegOpenKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) override
    {
        return m_system.RegOpenKeyW(parent, subKey, key);
    }
    LSTATUS RegCreateKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) override
    {
        return m_system.RegCreateKeyW(parent, subKey, key);
    }
    LSTATUS RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* type, void* data, DWORD* size) override
    {
        return m_system.RegQueryValueExW(key, name, type, data, size);
    }
    LSTATUS RegSetValueExW(HKEY key, const wchar_t* name, DWORD type, const void* data, DWORD size) override
    {
        return m_system.RegSetValueExW(key, name, type, data, size);
    }
    LSTATUS RegSetValueW(HKEY key, const wchar_t* subKey, const wchar_t* text) override
    {
        return m_system.RegSetValueW(key, subKey, text);
    }
    LSTATUS RegDeleteValueW(HKEY key, const wchar_t* name) override { return m_system.RegDeleteValueW(key, name); }
    LSTATUS RegCloseKey(HKEY key) override { return m_system.RegCloseKey(key); }
    LSTATUS SHDeleteKeyW(HKEY parent, const wchar_t* subKey) override { return m_system.SHDeleteKeyW(parent, subKey); }
    LSTATUS RegEnumKeyExW(HKEY key, DWORD index, wchar_t* name, DWORD& length) override
    {
        return m_system.RegEnumKeyExW(key, index, name, length);
    }
    LSTATUS RegEnumValueW(HKEY key, DWORD index, wchar_t* name, DWORD& length, DWORD* type, void* data,
                          DWORD* size) override
    {
        return m_system.RegEnumValueW(key, index, name, length, type, data, size);
    }
    LSTATUS RegQueryInfoKeyW(HKEY key, utility::platform::RegistryKeyInfo& info) override
    {
        return m_system.RegQueryInfoKeyW(key, info);
    }
    void Rest() override { m_system.Rest(); }

protected:
    utility::platform::RegistryService& m_system = utility::platform::Registry();

private:
    Substitute<utility::platform::RegistryService> m_scope{utility::platform::RegistrySlot(), *this};
};

}
