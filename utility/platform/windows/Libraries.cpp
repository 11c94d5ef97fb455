#include "utility/platform/Libraries.h"

#include "utility/platform/DelayLoad.h"
#include "utility/platform/Paths.h"
#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

class WindowsLibraries final : public LibraryService
{
public:
    HINSTANCE Load(const boost::filesystem::path& file) override { return AreWhole(file) ? LoadCode(file) : nullptr; }

    HINSTANCE Loaded(const wchar_t* name) override
    {
        HINSTANCE module = nullptr;
        return ::GetModuleHandleExW(0, name, &module) != FALSE ? module : nullptr;
    }

    Function Find(HINSTANCE library, const char* name) override
    {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
    }

    void Free(HINSTANCE library) override { ::FreeLibrary(library); }

    HINSTANCE ModuleAt(void* address, DWORD flags) override
    {
        HINSTANCE module = nullptr;
        return ::GetModuleHandleExW(flags, static_cast<const wchar_t*>(address), &module) != FALSE ? module : nullptr;
    }
};

}

ServiceSlot<LibraryService>& LibrariesSlot() noexcept
{
    return SystemService<LibraryService, WindowsLibraries>::Slot();
}

}
