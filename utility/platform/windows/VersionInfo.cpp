#include "utility/platform/VersionInfo.h"

#include "utility/platform/SystemService.h"
namespace utility::platform
{

namespace
{

class WindowsVersionInfo final : public VersionInfoService
{
public:
    DWORD GetFileVersionInfoSizeW(const wchar_t* path) override
    {
        DWORD unused = 0;
        return ::GetFileVersionInfoSizeW(path, &unused);
    }

    bool GetFileVersionInfoW(const wchar_t* path, DWORD size, void* data) override
    {
        return ::GetFileVersionInfoW(path, 0, size, data);
    }

    bool VerQueryValueW(const void* data, const wchar_t* subBlock, void*& value, UINT& length) override
    {
        return ::VerQueryValueW(data, subBlock, &value, &length);
    }
};

}

ServiceSlot<VersionInfoService>& VersionInfoSlot() noexcept
{
    return SystemService<VersionInfoService, WindowsVersionInfo>::Slot();
}

}
