#include "utility/platform/FileSystem.h"

#include "utility/platform/Error.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/filesystem/Swap.h"
#include "utility/platform/posix/filesystem/UserFolders.h"
#include "utility/platform/SystemService.h"

#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <gnu/lib-names.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

namespace utility::platform
{

namespace
{

using boost::filesystem::path;

class PosixFileSystem final : public FileSystemService
{
public:
    bool Replace(const path& target, const path& replacement, const path& backup) override
    {
        return AreWhole(target, replacement, backup) && posix::Swap(target, replacement, backup);
    }

    bool FlushName(const path& file) override { return AreWhole(file) && (posix::FlushNames(file) || posix::Fail()); }

    bool DeleteWhenUnused(const path& file) override
    {
        const auto unlink = [&] { return ::unlink(file.c_str()); };
        return AreWhole(file) && (posix::Uninterrupted(unlink) == 0 || posix::FailOn(file.native()));
    }

    bool Move(const path& from, const path& to) override
    {
        if (!AreWhole(from, to))
            return false;
        if (posix::Uninterrupted([&] { return ::rename(from.c_str(), to.c_str()); }) == 0)
            return true;
        if (errno == EXDEV)
            return posix::MoveAcross(from, to);
        const int reason = errno;
        struct stat status;
        const bool isThere = ::lstat(from.c_str(), &status) == 0;
        errno = reason;
        return posix::FailOn((isThere ? to : from).native());
    }

    bool CreateNew(const path& file) override
    {
        if (!AreWhole(file))
            return false;
        const auto create = [&](int more) {
            return posix::Uninterrupted([&]
                                        { return ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | more, 0666); });
        };
        int made = create(O_EXCL);
        // A link may be there that points at nothing: what it points at is made.
        if (made < 0 && errno == EEXIST && ::access(file.c_str(), F_OK) != 0)
            made = create(0);
        return made >= 0 ? ::close(made) == 0 : posix::FailOn(file.native());
    }

    bool IsReadable(const path& file) override
    {
        return AreWhole(file) &&
               (::faccessat(AT_FDCWD, file.c_str(), R_OK, AT_EACCESS) == 0 || posix::FailOn(file.native()));
    }

    bool Length(const path& file, std::uint64_t& length) override
    {
        struct stat status;
        if (!AreWhole(file))
            return false;
        if (::stat(file.c_str(), &status) != 0)
            return posix::FailOn(file.native());
        length = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
        return true;
    }

    path LongName(const path& file) override
    {
        struct stat status;
        if (!AreWhole(file))
            return {};
        if (::lstat(file.c_str(), &status) == 0)
            return file;
        posix::FailOn(file.native());
        return {};
    }

    path ShortName(const path& file) override { return LongName(file); }

    path DocumentsFolder() override { return posix::DocumentsFolder(); }

    path SystemFolder() override
    {
        void* const library = ::dlopen(LIBC_SO, RTLD_LAZY | RTLD_NOLOAD);
        if (library == nullptr)
        {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return {};
        }
        link_map* map = nullptr;
        const bool isKnown = ::dlinfo(library, RTLD_DI_LINKMAP, &map) == 0;
        const path folder = isKnown ? path(map->l_name).parent_path() : path();
        ::dlclose(library);
        return folder;
    }
};

}

ServiceSlot<FileSystemService>& FileSystemSlot() noexcept
{
    return SystemService<FileSystemService, PosixFileSystem>::Slot();
}

}
