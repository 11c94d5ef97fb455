#include "utility/platform/ZipLibrary.h"

#include "utility/platform/AtFork.h"
#include "utility/platform/posix/ziplibrary/Minizip.h"
#include "utility/platform/posix/ziplibrary/Pack.h"
#include "utility/platform/SystemService.h"

#include <dlfcn.h>
#include <mutex>
#include <span>
#include <string_view>
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
        const std::lock_guard lock(m_loading);
        if (m_library != nullptr)
            return 1;
        m_library = ::dlopen("libminizip.so.1", RTLD_NOW | RTLD_LOCAL);
        const bool isWhole = m_library != nullptr && Find("zipOpen2_64", m_minizip.zipOpen2_64) &&
                             Find("zipOpenNewFileInZip4_64", m_minizip.zipOpenNewFileInZip4_64) &&
                             Find("zipWriteInFileInZip", m_minizip.zipWriteInFileInZip) &&
                             Find("zipCloseFileInZip", m_minizip.zipCloseFileInZip) &&
                             Find("zipClose", m_minizip.zipClose);
        if (!isWhole && m_library != nullptr)
            ::dlclose(std::exchange(m_library, nullptr));
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
    template <class Function>
    bool Find(const char* name, Function*& function)
    {
        function = reinterpret_cast<Function*>(::dlsym(m_library, name));
        return function != nullptr;
    }

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
