#include "utility/platform/DelayLoad.h"

#include "utility/platform/ErrorCodes.h"

#include <dlfcn.h>

namespace utility::platform
{

boost::filesystem::path LibraryOf(const DelayLoadInfo& info) { return info.szDll; }

HINSTANCE LoadCode(const boost::filesystem::path& file)
{
    return static_cast<HINSTANCE>(::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL));
}

HINSTANCE OpenDelayed(const char* library, DelayLoadHook failureHook)
{
    const HINSTANCE module = LoadCode(library);
    if (module != nullptr || failureHook == nullptr)
        return module;
    constexpr unsigned int failedLoad = 3;
    DelayLoadInfo info = {sizeof(info), library, ERROR_MOD_NOT_FOUND};
    return reinterpret_cast<HINSTANCE>(failureHook(failedLoad, &info));
}

}
