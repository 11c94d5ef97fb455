#include "utility/platform/DelayLoad.h"

#include "utility/platform/Modules.h"

#include <delayimp.h>

namespace utility::platform
{

boost::filesystem::path LibraryOf(const DelayLoadInfo& info) { return info.szDll; }

HINSTANCE LoadCode(const boost::filesystem::path& file) { return Modules().Load(file.c_str()); }

HINSTANCE OpenDelayed(const char* library, DelayLoadHook failureHook)
{
    if (library == nullptr)
        return nullptr;
    const HINSTANCE module = ::LoadLibraryW(boost::filesystem::path(library).c_str());
    if (module != nullptr || failureHook == nullptr)
        return module;
    DelayLoadInfo info = {};
    info.cb = sizeof(info);
    info.szDll = library;
    info.dwLastError = ::GetLastError();
    return reinterpret_cast<HINSTANCE>(failureHook(dliFailLoadLib, &info));
}

}
