#include "utility/platform/DelayLoad.h"

#include "utility/platform/ErrorCodes.h"

#include <boost/filesystem/operations.hpp>

#include <dlfcn.h>

namespace utility::platform
{

boost::filesystem::path LibraryOf(const DelayLoadInfo& info) { return info.szDll; }

HINSTANCE LoadCode(const boost::filesystem::path& file)
{
    // The loader takes no name for that of the program itself, and waits at a pipe until somebody writes to it.
    boost::system::error_code ignored;
    if (file.empty() || (file.has_parent_path() && !is_regular_file(file, ignored)))
        return nullptr;
    return static_cast<HINSTANCE>(::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL));
}

HINSTANCE OpenDelayed(const char* library, DelayLoadHook failureHook)
{
    if (library == nullptr)
        return nullptr;
    const HINSTANCE module = LoadCode(library);
    if (module != nullptr || failureHook == nullptr)
        return module;
    constexpr unsigned int failedLoad = 3;
    DelayLoadInfo info = {sizeof(info), library, ERROR_MOD_NOT_FOUND};
    return reinterpret_cast<HINSTANCE>(failureHook(failedLoad, &info));
}

}
