#pragma once

#include "utility/platform/Modules.h"

#include <map>
#include <string>
#include <utility>

namespace support
{

/// A module for a substitute to know; the real service finds nothing in it.
class FakeModule
{
public:
    HINSTANCE Handle() { return reinterpret_cast<HINSTANCE>(m_bytes); }

private:
    alignas(4096) char m_bytes[4096] = {};
};

/// A module service with strings of its own, which hands the rest to the one it was made over.
class TableModules : public utility::platform::ModuleService
{
public:
    TableModules() : m_system(utility::platform::Modules()) {}

    HINSTANCE ModuleAt(const void* address) override { return m_system.ModuleAt(address); }

    std::wstring FileName(HINSTANCE module) override { return m_system.FileName(module); }

    HINSTANCE Load(const wchar_t* path) override { return m_system.Load(path); }

    bool Free(HINSTANCE module) override { return m_system.Free(module); }

    std::wstring_view StringOf(HINSTANCE module, UINT id) override
    {
        ++lookups;
        const auto found = strings.find({module, id});
        return found == strings.end() ? m_system.StringOf(module, id) : std::wstring_view(found->second);
    }

    std::span<const std::byte> ResourceOf(HINSTANCE module, UINT type, const wchar_t* name) override
    {
        return m_system.ResourceOf(module, type, name);
    }

    std::map<std::pair<HINSTANCE, UINT>, std::wstring> strings;
    int lookups = 0;

private:
    utility::platform::ModuleService& m_system;
};

}
