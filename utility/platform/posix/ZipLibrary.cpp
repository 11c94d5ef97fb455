#include "utility/platform/ZipLibrary.h"

#include "utility/platform/AtFork.h"
#include "utility/platform/posix/modules/SystemLibrary.h"
#include "utility/platform/posix/ziplibrary/Minizip.h"
#include "utility/platform/posix/ziplibrary/Pack.h"
#include "utility/platform/SystemService.h"

#include <span>
#include <string_view>

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
    ~PosixZipLibrary() override { m_library.Unload(); }

    int ZpInit(ZipCallbacks& /*callbacks*/) override
    {
        return m_library.Load("libminizip.so.1", m_minizip, m_loading) ? 1 : 0;
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
    posix::SystemLibrary m_library;
    posix::Minizip m_minizip;
};

}

ServiceSlot<ZipLibraryService>& ZipLibrarySlot() noexcept
{
    return SystemService<ZipLibraryService, PosixZipLibrary>::Slot();
}

}
