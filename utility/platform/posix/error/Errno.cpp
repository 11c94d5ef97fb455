#include "utility/platform/posix/error/Errno.h"

#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

struct Translation
{
    int errnoValue;
    DWORD error;
};

constexpr Translation translations[] = {
    {0, ERROR_SUCCESS},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EBADF, ERROR_INVALID_HANDLE},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EXDEV, ERROR_NOT_SAME_DEVICE},
    {EROFS, ERROR_WRITE_PROTECT},
    {ESPIPE, ERROR_SEEK},
    {EIO, ERROR_GEN_FAILURE},
    {EAGAIN, ERROR_LOCK_VIOLATION},
    {EOPNOTSUPP, ERROR_NOT_SUPPORTED},
    {ENOSYS, ERROR_NOT_SUPPORTED},
    {EEXIST, ERROR_FILE_EXISTS},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EPIPE, ERROR_BROKEN_PIPE},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {EBUSY, ERROR_BUSY},
    {ENOEXEC, ERROR_BAD_EXE_FORMAT},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {E2BIG, ERROR_FILENAME_EXCED_RANGE},
    {EFBIG, ERROR_FILE_TOO_LARGE},
    {EFAULT, ERROR_INVALID_ADDRESS},
    {ELOOP, ERROR_CANT_RESOLVE_FILENAME},
};

/// Whether there is a folder for a path to be in. The empty path has none.
bool FolderExists(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? !path.empty() : ::access(path.substr(0, slash + 1).c_str(), F_OK) == 0;
}

}

DWORD ErrorOfErrno(int value) noexcept
{
    for (const Translation& translation : translations)
    {
        if (translation.errnoValue == value)
            return translation.error;
    }
    return ERROR_GEN_FAILURE;
}

bool FailOn(const std::string& path)
{
    Fail();
    if (LastError() == ERROR_FILE_NOT_FOUND && !FolderExists(path))
        SetLastError(ERROR_PATH_NOT_FOUND);
    return false;
}

}
