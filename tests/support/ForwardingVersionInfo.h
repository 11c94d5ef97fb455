#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/VersionInfo.h"

#include <string>
#include <vector>

namespace support
{

/// For its lifetime the version records: the system's, with a record of the queries, except where a test says
/// otherwise.
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

    std::vector<std::wstring> queries;

protected:
    utility::platform::VersionInfoService& m_system = utility::platform::VersionInfo();

private:
    Substitute<utility::platform::VersionInfoService> m_scope{utility::platform::VersionInfoSlot(), *this};
};

}
