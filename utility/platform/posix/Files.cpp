#include "utility/platform/Files.h"

#include "utility/platform/Error.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/files/FileTimes.h"
#include "utility/platform/posix/files/Flushed.h"
#include "utility/platform/posix/files/Lock.h"
#include "utility/platform/posix/files/Views.h"
#include "utility/platform/posix/handles/Handle.h"
#include "utility/platform/SystemService.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace utility::platform
{

namespace
{

int DescriptorOf(HANDLE file) { return posix::NumberOf(posix::HandleKind::file, file); }

/// Takes the advisory lock of this type on the whole of a file. A file system without locks lets everybody in; only a
/// lock held by another turns the caller away.
DWORD TakeLock(int descriptor, short type)
{
    return posix::Lock(descriptor, type) || (errno != EAGAIN && errno != EACCES) ? ERROR_SUCCESS
                                                                                 : ERROR_SHARING_VIOLATION;
}

/// Makes what was opened ready to be used by the caller alone, or with others who only read. Devices and pipes are
/// there for several at once.
DWORD Prepare(int descriptor, short lockType)
{
    struct stat status;
    if (::fstat(descriptor, &status) != 0)
        return posix::ErrorOfErrno(errno);
    if (S_ISDIR(status.st_mode))
        return ERROR_ACCESS_DENIED;
    const DWORD refused = S_ISREG(status.st_mode) ? TakeLock(descriptor, lockType) : ERROR_SUCCESS;
    // From here on a pipe that is full makes its writer wait.
    return refused == ERROR_SUCCESS && ::fcntl(descriptor, F_SETFL, 0) != 0 ? posix::ErrorOfErrno(errno) : refused;
}

enum class Absent
{
    fails,
    isMade
};

HANDLE OpenLocked(const boost::filesystem::path& path, int access, short lockType, Absent then)
{
    if (!AreWhole(path))
        return INVALID_HANDLE_VALUE;
    const int errnoBefore = errno;
    int descriptor = posix::OpenAny(path.c_str(), access);
    bool isNew = false;
    if (descriptor < 0 && errno == ENOENT && then == Absent::isMade)
    {
        descriptor = posix::MakeFile(path.c_str(), 0666);
        isNew = descriptor >= 0;
        // A link to where nothing is, or somebody else has made it meanwhile.
        if (!isNew && errno == EEXIST)
            descriptor = posix::OpenAny(path.c_str(), access | O_CREAT);
    }
    if (descriptor < 0)
    {
        posix::FailOn(path.native());
        return INVALID_HANDLE_VALUE;
    }
    // What is new needs nothing that may fail: no file is left where the caller gets none.
    const DWORD refused = isNew ? TakeLock(descriptor, lockType) : Prepare(descriptor, lockType);
    if (refused != ERROR_SUCCESS)
    {
        ::close(descriptor);
        SetLastError(refused);
        return INVALID_HANDLE_VALUE;
    }
    // That nothing was there at first is no failure.
    errno = errnoBefore;
    return posix::MakeHandle(posix::HandleKind::file, descriptor);
}

/// Fail for a call that changes a file, which one open for reading does not allow.
bool FailToChange(int descriptor)
{
    posix::Fail();
    const int flags = ::fcntl(descriptor, F_GETFL);
    if (flags >= 0 && (flags & O_ACCMODE) == O_RDONLY)
        SetLastError(ERROR_ACCESS_DENIED);
    return false;
}

class PosixFiles final : public FileService
{
public:
    HANDLE OpenForReading(const boost::filesystem::path& path) override
    {
        return OpenLocked(path, O_RDONLY, F_RDLCK, Absent::fails);
    }

    HANDLE OpenForWriting(const boost::filesystem::path& path) override
    {
        return OpenLocked(path, O_RDWR, F_WRLCK, Absent::isMade);
    }

    bool Length(HANDLE file, std::uint64_t& length) override
    {
        struct stat status;
        if (::fstat(DescriptorOf(file), &status) != 0)
            return posix::Fail();
        length = static_cast<std::uint64_t>(status.st_size);
        return true;
    }

    HANDLE MapReadOnly(HANDLE file) override
    {
        std::uint64_t length = 0;
        if (!Length(file, length))
            return nullptr;
        if (length == 0)
        {
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        return posix::MakeHandle(posix::HandleKind::mapping, DescriptorOf(file));
    }

    void* ViewAll(HANDLE mapping, std::uint64_t length) override
    {
        return m_views.Map(posix::NumberOf(posix::HandleKind::mapping, mapping), length);
    }

    /// Views are read-only here: there is nothing of theirs to write.
    bool FlushView(const void* /*view*/) override { return true; }

    bool UnmapView(const void* view) override { return m_views.Unmap(view); }

    DWORD Seek(HANDLE file, std::int32_t distance, std::int32_t* distanceHigh, DWORD method) override
    {
        constexpr int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
        if (method > FILE_END)
        {
            SetLastError(ERROR_INVALID_PARAMETER);
            return INVALID_SET_FILE_POINTER;
        }
        std::int64_t offset = distance;
        if (distanceHigh != nullptr)
            offset = static_cast<std::int64_t>(static_cast<std::uint64_t>(*distanceHigh) << 32 |
                                               static_cast<DWORD>(distance));
        const off_t position = ::lseek(DescriptorOf(file), offset, origins[method]);
        if (position < 0)
        {
            SetLastError(errno == EINVAL ? ERROR_NEGATIVE_SEEK : posix::ErrorOfErrno(errno));
            return INVALID_SET_FILE_POINTER;
        }
        if (distanceHigh != nullptr)
            *distanceHigh = static_cast<std::int32_t>(position >> 32);
        return static_cast<DWORD>(position);
    }

    bool TruncateHere(HANDLE file) override
    {
        const off_t position = ::lseek(DescriptorOf(file), 0, SEEK_CUR);
        // Nothing but that it is asked: the change gets a time of its own, which saves a flush. See files/Flushed.h.
        struct stat ignored;
        ::fstat(DescriptorOf(file), &ignored);
        const auto truncate = [&] { return ::ftruncate(DescriptorOf(file), position); };
        return (position >= 0 && posix::Uninterrupted(truncate) == 0) || FailToChange(DescriptorOf(file));
    }

    bool Write(HANDLE file, const void* data, DWORD size, DWORD& written) override
    {
        const auto* const bytes = static_cast<const char*>(data);
        written = 0;
        if (DescriptorOf(file) < 0)
        {
            SetLastError(ERROR_INVALID_HANDLE);
            return false;
        }
        while (written < size)
        {
            const ssize_t count =
                posix::Uninterrupted([&] { return ::write(DescriptorOf(file), bytes + written, size - written); });
            if (count < 0)
                return FailToChange(DescriptorOf(file));
            if (count == 0)
                break;
            written += static_cast<DWORD>(count);
        }
        return true;
    }

    bool FlushToDisk(HANDLE file) override
    {
        if (posix::Uninterrupted([&] { return ::fsync(DescriptorOf(file)); }) != 0)
            return posix::Fail();
        posix::NoteFlushed(DescriptorOf(file));
        return true;
    }

    bool Information(HANDLE file, BY_HANDLE_FILE_INFORMATION& information) override
    {
        struct stat status;
        if (::fstat(DescriptorOf(file), &status) != 0)
            return posix::Fail();
        const auto length = static_cast<std::uint64_t>(status.st_size);
        const auto index = static_cast<std::uint64_t>(status.st_ino);
        information = {};
        information.dwFileAttributes =
            status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH) ? FILE_ATTRIBUTE_NORMAL : FILE_ATTRIBUTE_READONLY;
        information.ftCreationTime = posix::CreationTime(DescriptorOf(file), status);
        information.ftLastAccessTime = posix::FileTimeOf(status.st_atim);
        information.ftLastWriteTime = posix::FileTimeOf(status.st_mtim);
        information.dwVolumeSerialNumber = static_cast<DWORD>(status.st_dev);
        information.nFileSizeHigh = static_cast<DWORD>(length >> 32);
        information.nFileSizeLow = static_cast<DWORD>(length);
        information.nNumberOfLinks = static_cast<DWORD>(status.st_nlink);
        information.nFileIndexHigh = static_cast<DWORD>(index >> 32);
        information.nFileIndexLow = static_cast<DWORD>(index);
        return true;
    }

    bool Close(HANDLE handle) override
    {
        // The lock would last until the last process that was forked meanwhile closes the file too. A process that only
        // inherited the file leaves the lock alone; and while there is a view the file is in use.
        if (posix::NumberOf(posix::HandleKind::file, handle) >= 0 && posix::IsOwn(handle) &&
            !m_views.IsViewed(DescriptorOf(handle)))
            posix::Lock(DescriptorOf(handle), F_UNLCK);
        return posix::CloseHandle(handle);
    }

private:
    posix::Views m_views;
};

}

ServiceSlot<FileService>& FilesSlot() noexcept { return SystemService<FileService, PosixFiles>::Slot(); }

}
