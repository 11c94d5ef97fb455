#include "utility/platform/Files.h"

#include "utility/platform/Error.h"
#include "utility/platform/posix/error/Errno.h"

#include <fcntl.h>
#include <limits>
#include <map>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace utility::platform
{

namespace
{

// A handle is the descriptor plus one, so that descriptor 0 is not null and the invalid handle is no descriptor.
HANDLE HandleOf(int descriptor) { return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(descriptor) + 1); }

int DescriptorOf(HANDLE handle) { return static_cast<int>(reinterpret_cast<std::intptr_t>(handle) - 1); }

std::size_t PageSize()
{
    static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

/// The mapped length of each view: the system wants it back, and the interface does not carry it.
class Views
{
    using Lengths = std::map<const void*, std::size_t>;

public:
    using View = Lengths::node_type;

    /// False where memory is short.
    bool Add(const void* base, std::size_t length)
    {
        const std::lock_guard lock(m_mutex);
        try
        {
            m_lengths[base] = length;
            return true;
        }
        catch (const std::bad_alloc&)
        {
            return false;
        }
    }

    /// Forgets a view; empty if there is none at this address.
    View Take(const void* base)
    {
        const std::lock_guard lock(m_mutex);
        return m_lengths.extract(base);
    }

    void PutBack(View view)
    {
        const std::lock_guard lock(m_mutex);
        m_lengths.insert(std::move(view));
    }

private:
    std::mutex m_mutex;
    Lengths m_lengths;
};

Views& AllViews()
{
    static Views views;
    return views;
}

/// Opens a file and takes the advisory lock of its kind on the whole of it.
HANDLE OpenLocked(const boost::filesystem::path& path, int flags, short lockType)
{
    // Without O_NONBLOCK a pipe without a writer would hold up the caller; for files it has no effect.
    const int descriptor =
        posix::Uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666); });
    if (descriptor < 0)
    {
        posix::FailOn(path.native());
        return INVALID_HANDLE_VALUE;
    }
    const auto refuse = [descriptor](DWORD error)
    {
        ::close(descriptor);
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    };
    struct stat status;
    if (::fstat(descriptor, &status) != 0)
        return refuse(posix::ErrorOfErrno(errno));
    if (S_ISDIR(status.st_mode))
        return refuse(ERROR_ACCESS_DENIED);
    struct flock lock = {};
    lock.l_type = lockType;
    lock.l_whence = SEEK_SET;
    // A file system without locks lets everybody in; only a lock held by another turns the caller away.
    const int locked = posix::Uninterrupted([&] { return ::fcntl(descriptor, F_OFD_SETLK, &lock); });
    if (locked != 0 && (errno == EAGAIN || errno == EACCES))
        return refuse(ERROR_SHARING_VIOLATION);
    return HandleOf(descriptor);
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

FILETIME FileTimeOf(std::int64_t seconds, std::int64_t nanoseconds)
{
    constexpr std::int64_t secondsFrom1601To1970 = 11644473600;
    const auto ticks = static_cast<std::uint64_t>((seconds + secondsFrom1601To1970) * 10000000 + nanoseconds / 100);
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

FILETIME FileTimeOf(const timespec& time) { return FileTimeOf(time.tv_sec, time.tv_nsec); }

FILETIME CreationTime(int descriptor, const struct stat& status)
{
    struct statx record;
    if (::statx(descriptor, "", AT_EMPTY_PATH, STATX_BTIME, &record) == 0 && (record.stx_mask & STATX_BTIME) != 0)
        return FileTimeOf(record.stx_btime.tv_sec, record.stx_btime.tv_nsec);
    return FileTimeOf(status.st_ctim);
}

class PosixFiles final : public FileService
{
public:
    HANDLE OpenForReading(const boost::filesystem::path& path) override { return OpenLocked(path, O_RDONLY, F_RDLCK); }

    HANDLE OpenForWriting(const boost::filesystem::path& path) override
    {
        return OpenLocked(path, O_RDWR | O_CREAT, F_WRLCK);
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
        const int descriptor = ::fcntl(DescriptorOf(file), F_DUPFD_CLOEXEC, 0);
        if (descriptor < 0)
        {
            posix::Fail();
            return nullptr;
        }
        return HandleOf(descriptor);
    }

    void* ViewAll(HANDLE mapping, std::uint64_t length) override
    {
        // A file that ends within a page is followed by zeros. Behind one that fills its last page stands a page of
        // zeros of our own, so that the byte behind the file is readable there too.
        const bool needsPageBehind = length % PageSize() == 0;
        const std::size_t total = length + (needsPageBehind ? PageSize() : 0);
        void* const reserved =
            needsPageBehind ? ::mmap(nullptr, total, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) : nullptr;
        if (reserved == MAP_FAILED)
        {
            posix::Fail();
            return nullptr;
        }
        void* const base = ::mmap(reserved, length, PROT_READ, MAP_SHARED | (needsPageBehind ? MAP_FIXED : 0),
                                  DescriptorOf(mapping), 0);
        const DWORD reason = base == MAP_FAILED             ? posix::ErrorOfErrno(errno)
                             : !AllViews().Add(base, total) ? ERROR_NOT_ENOUGH_MEMORY
                                                            : ERROR_SUCCESS;
        if (reason != ERROR_SUCCESS)
        {
            if (void* const mapped = base != MAP_FAILED ? base : reserved)
                ::munmap(mapped, total);
            SetLastError(reason);
            return nullptr;
        }
        ::madvise(base, length, MADV_SEQUENTIAL);
        return base;
    }

    /// Views are read-only here: there is nothing of theirs to write.
    bool FlushView(const void* /*view*/) override { return true; }

    bool UnmapView(const void* view) override
    {
        Views::View taken = AllViews().Take(view);
        if (!taken)
        {
            SetLastError(ERROR_INVALID_ADDRESS);
            return false;
        }
        if (::munmap(const_cast<void*>(view), taken.mapped()) == 0)
            return true;
        posix::Fail();
        AllViews().PutBack(std::move(taken));
        return false;
    }

    DWORD Seek(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method) override
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
            *distanceHigh = static_cast<LONG>(position >> 32);
        return static_cast<DWORD>(position);
    }

    bool TruncateHere(HANDLE file) override
    {
        const off_t position = ::lseek(DescriptorOf(file), 0, SEEK_CUR);
        const auto truncate = [&] { return ::ftruncate(DescriptorOf(file), position); };
        return (position >= 0 && posix::Uninterrupted(truncate) == 0) || FailToChange(DescriptorOf(file));
    }

    bool Write(HANDLE file, const void* data, DWORD size, DWORD& written) override
    {
        const auto* const bytes = static_cast<const char*>(data);
        written = 0;
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
        return posix::Uninterrupted([&] { return ::fsync(DescriptorOf(file)); }) == 0 || posix::Fail();
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
        information.ftCreationTime = CreationTime(DescriptorOf(file), status);
        information.ftLastAccessTime = FileTimeOf(status.st_atim);
        information.ftLastWriteTime = FileTimeOf(status.st_mtim);
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
        // A descriptor is gone when the call is interrupted as well: made anew it would close that of somebody else.
        return ::close(DescriptorOf(handle)) == 0 || errno == EINTR || posix::Fail();
    }
};

}

ServiceSlot<FileService>& FilesSlot() noexcept
{
    static PosixFiles system;
    static ServiceSlot<FileService> slot(system);
    return slot;
}

}
