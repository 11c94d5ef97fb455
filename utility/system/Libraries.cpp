#include "utility/system/Libraries.h"

#include "utility/files/Places.h"
#include "utility/platform/Libraries.h"

#include <memory>
#include <type_traits>

namespace
{

using utility::platform::Libraries;

struct Release
{
    void operator()(HINSTANCE library) const { Libraries().Free(library); }
};
using Library = std::unique_ptr<std::remove_pointer_t<HINSTANCE>, Release>;

/// What a library fills in about itself.
struct VersionOfLibrary
{
    DWORD size;
    DWORD major;
    DWORD minor;
    DWORD build;
    DWORD platform;
};
static_assert(sizeof(VersionOfLibrary) == 20);

}

bool IsDLLAvailable(const boost::filesystem::path& library) { return Library(Libraries().Load(library)) != nullptr; }

HRESULT GetDLLVersion(const boost::filesystem::path& library, DWORD& major, DWORD& minor)
{
    constexpr auto failure = static_cast<HRESULT>(0x80004005);
    const Library loaded(Libraries().Load(library));
    if (loaded == nullptr)
        return failure;
    const auto found = Libraries().Find(loaded.get(), "DllGetVersion");
    if (found == nullptr)
        return failure;
    VersionOfLibrary version = {sizeof(version), 0, 0, 0, 0};
    const HRESULT status = reinterpret_cast<HRESULT (*)(VersionOfLibrary*)>(found)(&version);
    if (status >= 0)
    {
        major = version.major;
        minor = version.minor;
    }
    return status;
}

HRESULT GetBrowserVersion(DWORD& major, DWORD& minor)
{
    return GetDLLVersion(GetSystemFolder() / "shdocvw.dll", major, minor);
}

bool CheckBrowserVersion()
{
    DWORD major = 0;
    DWORD minor = 0;
    return GetBrowserVersion(major, minor) >= 0 && (major > 4 || (major == 4 && minor >= 71));
}

HINSTANCE__* GetModuleHandleExW(void* address, DWORD flags)
{
    constexpr DWORD byAddress = 4;
    return Libraries().ModuleAt(address, flags + byAddress);
}
