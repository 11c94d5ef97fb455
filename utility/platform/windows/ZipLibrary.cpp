#include "utility/platform/ZipLibrary.h"

#include "utility/platform/SystemService.h"

#include <atomic>
#include <windows.h>

namespace utility::platform
{

namespace
{

using InitFunction = int WINAPI(ZipCallbacks* callbacks);
using ArchiveFunction = int WINAPI(ZipCommand command, ZipOptions* options);

/// The library is looked up and not imported: what is not there is a failure to be told, and not an exception of the
/// system. Deliberately it stays loaded until the process ends, as what is imported does.
class WindowsZipLibrary final : public ZipLibraryService
{
public:
    int ZpInit(ZipCallbacks& callbacks) override
    {
        const HMODULE library = ::LoadLibraryW(L"zip32z64.dll");
        if (library == nullptr)
            return 0;
        const auto init = Find<InitFunction>(library, "ZpInit");
        m_archive = Find<ArchiveFunction>(library, "ZpArchive");
        return init != nullptr && m_archive != nullptr ? init(&callbacks) : 0;
    }

    int ZpArchive(const ZipCommand& command, ZipOptions& options) override
    {
        return m_archive.load()(command, &options);
    }

private:
    template <class Function>
    static Function* Find(HMODULE library, const char* name)
    {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
    }

    std::atomic<ArchiveFunction*> m_archive = nullptr;
};

}

ServiceSlot<ZipLibraryService>& ZipLibrarySlot() noexcept
{
    return SystemService<ZipLibraryService, WindowsZipLibrary>::Slot();
}

}
