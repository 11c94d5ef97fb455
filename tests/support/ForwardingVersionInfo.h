#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/VersionInfo.h"

#include <string>
#include <vector>

namespace support
{

/// For its lifetime the version records: the system's, with a record of the queries and of the memory, except where a test
/// says otherwise.
class ForwardingVersionInfo : public utility::platform::VersionInfoService
{
public:
    DWORD GetFileVersionInfoSizeW(const wchar_t* path) override { return m_system.GetFileVersionInfoSizeW(path); }
    bool GetFileVersionInfoW(const wchar_t* path, DWORD size, void* data) override
    {
        return m_system.GetFileVersionInfoW(path, size, data);
    }
    bool VerQueryValueW(const void* data, const wchar_t* subBlock, void*& value, UINT& length) override
    {
        queries.emplace_back(subBlock);
        return m_system.VerQueryValueW(data, subBlock, value, length);
    }
    HANDLE GlobalAlloc(std::size_t size) override
    {
        allocated.push_back(m_system.GlobalAlloc(size));
        return allocated.back();
    }
    void* GlobalLock(HANDLE memory) override { return m_system.GlobalLock(memory); }
    void GlobalUnlock(HANDLE memory) override
    {
        unlocked.push_back(memory);
        m_system.GlobalUnlock(memory);
    }
    void GlobalFree(HANDLE memory) override
    {
        freed.push_back(memory);
        m_system.GlobalFree(memory);
    }

    std::vector<std::wstring> queries;
    std::vector<HANDLE> allocated;
    std::vector<HANDLE> unlocked;
    std::vector<HANDLE> freed;

protected:
    utility::platform::VersionInfoService& m_system = utility::platform::VersionInfo();

private:
    Substitute<utility::platform::VersionInfoService> m_scope{utility::platform::VersionInfoSlot(), *this};
};

}
