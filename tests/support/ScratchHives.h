#pragma once

#include "tests/support/ForwardingRegistry.h"

#include <boost/filesystem/operations.hpp>

#include <string>

namespace support
{

/// For its lifetime both hives are empty and a test's own: keys of the real store that are gone with it. Nothing of the
/// user's settings is seen or touched.
class ScratchHives : public ForwardingRegistry
{
public:
    ScratchHives()
    {
        m_system.RegCreateKeyExW(HKEY_CURRENT_USER, (m_root + L"\\user").c_str(), KEY_READ | KEY_WRITE, m_user);
        m_system.RegCreateKeyExW(HKEY_CURRENT_USER, (m_root + L"\\machine").c_str(), KEY_READ | KEY_WRITE, m_machine);
    }
    ~ScratchHives() override
    {
        m_system.RegCloseKey(m_user);
        m_system.RegCloseKey(m_machine);
        m_system.SHDeleteKeyW(HKEY_CURRENT_USER, m_root.c_str());
    }

    LSTATUS RegCreateKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        return ForwardingRegistry::RegCreateKeyExW(Own(parent), subKey, access, key);
    }
    LSTATUS RegOpenKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        return ForwardingRegistry::RegOpenKeyExW(Own(parent), subKey, access, key);
    }
    LSTATUS RegOpenKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) override
    {
        return ForwardingRegistry::RegOpenKeyW(Own(parent), subKey, key);
    }
    LSTATUS RegCreateKeyW(HKEY parent, const wchar_t* subKey, HKEY& key) override
    {
        return ForwardingRegistry::RegCreateKeyW(Own(parent), subKey, key);
    }
    LSTATUS SHDeleteKeyW(HKEY parent, const wchar_t* subKey) override
    {
        return ForwardingRegistry::SHDeleteKeyW(Own(parent), subKey);
    }

private:
    HKEY Own(HKEY parent) const
    {
        return parent == HKEY_CURRENT_USER ? m_user : parent == HKEY_LOCAL_MACHINE ? m_machine : parent;
    }

    std::wstring m_root = L"SOFTWARE\\UtilityTests\\" + boost::filesystem::unique_path(L"%%%%%%%%%%%%").wstring();
    HKEY m_user = nullptr;
    HKEY m_machine = nullptr;
};

}
