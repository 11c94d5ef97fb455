#include "utility/platform/ZipLibrary.h"

#include "utility/platform/AtFork.h"
#include "utility/platform/posix/ziplibrary/Minizip.h"
#include "utility/platform/posix/ziplibrary/Pack.h"
#include "utility/platform/SystemService.h"

#include <dlfcn.h>
#include <mutex>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

namespace utility::platform
{

namespace
{

/// minizip stays loaded as long as the library.
class PosixZipLibrary final : public ZipLibraryService
{
public:
    PosixZipLibrary() = default;
    PosixZipLibrary(const PosixZipLibrary&) = delete;
    PosixZipLibrary& operator=(const PosixZipLibrary&) = delete;
    ~PosixZipLibrary() override
    {
        if (m_library != nullptr)
            ::dlclose(m_library);
    }

    int ZpInit(ZipCallbacks& /*callbacks*/) override
    {
        // Ahead of the lock: the system's loader has one as well, and holds it while static objects of another library
        // are made, which may write an archive.
        void* library = ::dlopen("libminizip.so.1", RTLD_NOW | RTLD_LOCAL);
        posix::Minizip found;
        const auto find = [library](const char* name, auto*& function)
        {
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, name));
            return function != nullptr;
        };
        const bool isWhole = library != nullptr && find("zipOpen2_64", found.zipOpen2_64) &&
                             find("zipOpenNewFileInZip4_64", found.zipOpenNewFileInZip4_64) &&
                             find("zipWriteInFileInZip", found.zipWriteInFileInZip) &&
                             find("zipCloseFileInZip", found.zipCloseFileInZip) && find("zipClose", found.zipClose);
        if (isWhole)
        {
            const std::lock_guard lock(m_loading);
            if (m_library == nullptr)
            {
                m_minizip = found;
                m_library = std::exchange(library, nullptr);
            }
        }
        if (library != nullptr)
            ::dlclose(library);
        return isWhole ? 1 : 0;
    }

    int ZpArchive(const ZipCommand& command, ZipOptions& options) override
    {
        std::span files(command.entries, static_cast<std::size_t>(command.count));
        if (!files.empty() && std::string_view(files.front()) == zipNamesAreUtf8)
            files = files.subspan(1);
        return posix::Pack(m_minizip, command.archive, options.rootFolder, files, options.level - '0') ? 0 : 1;
    }

private:
    ForkSafeMutex m_loading;
    void* m_library = nullptr;
    posix::Minizip m_minizip;
};

}

ServiceSlot<ZipLibraryService>& ZipLibrarySlot() noexcept
{
    return SystemService<ZipLibraryService, PosixZipLibrary>::Slot();
}

}
