#include "utility/platform/Libraries.h"

#include "utility/platform/DelayLoad.h"
#include "utility/platform/Paths.h"
#include "utility/platform/SystemService.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/auxv.h>

namespace utility::platform
{

namespace
{

class PosixLibraries final : public LibraryService
{
public:
    /// An empty name would be the program's to the system.
    HINSTANCE Load(const boost::filesystem::path& file) override
    {
        return !file.empty() && AreWhole(file) ? LoadCode(file) : nullptr;
    }

    HINSTANCE Loaded(const wchar_t* name) override
    {
        return static_cast<HINSTANCE>(
            static_cast<void*>(::dlopen(PathFromWide(name).c_str(), RTLD_LAZY | RTLD_NOLOAD)));
    }

    Function Find(HINSTANCE library, const char* name) override
    {
        return reinterpret_cast<Function>(::dlsym(library, name));
    }

    void Free(HINSTANCE library) override { ::dlclose(library); }

    HINSTANCE ModuleAt(void* address, DWORD flags) override
    {
        constexpr DWORD toStay = 1;
        constexpr DWORD notHeld = 2;
        constexpr DWORD byAddress = 4;
        if (flags < byAddress || flags > byAddress + notHeld)
        {
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        const void* const place = address != nullptr ? address : reinterpret_cast<void*>(::getauxval(AT_PHDR));
        Dl_info info;
        link_map* map = nullptr;
        if (::dladdr1(place, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 ||
            (flags != byAddress + notHeld && !Hold(map->l_name, flags == byAddress + toStay)))
        {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return nullptr;
        }
        return static_cast<HINSTANCE>(info.dli_fbase);
    }

private:
    /// The program has no name in the list of modules.
    static bool Hold(const char* name, bool isToStay)
    {
        return ::dlopen(*name != '\0' ? name : nullptr, RTLD_LAZY | RTLD_NOLOAD | (isToStay ? RTLD_NODELETE : 0)) !=
               nullptr;
    }
};

}

ServiceSlot<LibraryService>& LibrariesSlot() noexcept { return SystemService<LibraryService, PosixLibraries>::Slot(); }

}
