// A new file takes the place of an old one by one step of the file system, so that whoever looks finds either, and a
// crash leaves either. The steps, each safe to be the last one:
//
//   1. the new file takes over what the system keeps about the old one
//   2. the old file gets a second name, `backup`; nothing is moved away
//   3. the new file is brought to the disk, unless the library has just done so
//   4. the new file is renamed to the old one's name: this is the swap
//   5. the folder is brought to the disk, and the new name with it
//
// Up to 4 a failure undoes what was done. Where 3 fails, the new file is not what was written, though from then on the
// system gives it back as if it were, and would flush it without a complaint; so it goes. Where 5 fails, the old file
// goes back. A file system without second names may exchange the two files in one step instead.

#include "utility/platform/posix/filesystem/Swap.h"

#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/files/Flushed.h"
#include "utility/platform/posix/filesystem/Attributes.h"

#include <boost/filesystem/operations.hpp>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace utility::platform::posix
{

namespace
{

using boost::filesystem::path;

enum class Outcome
{
    swapped,
    missing,     ///< one of the two
    refused,     ///< nothing has changed
    unflushed,   ///< the old file stands, the new one is gone
    otherDevice, ///< the old file is on another device than its backup; nothing has changed
};

/// An open file, for a scope.
class Opened
{
public:
    Opened(const path& file, int flags)
        : m_descriptor(
              AboveStandardStreams(Uninterrupted([&] { return ::open(file.c_str(), flags | O_CLOEXEC, 0600); })))
    {
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    ~Opened()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    /// -1, with the reason in errno, if it could not be opened.
    int Descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

bool Rename(const path& from, const path& to)
{
    return Uninterrupted([&] { return ::rename(from.c_str(), to.c_str()); }) == 0;
}

bool Exchange(const path& one, const path& other)
{
    return Uninterrupted([&]
                         { return ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE); }) == 0;
}

void Remove(const path& file)
{
    Uninterrupted([&] { return ::unlink(file.c_str()); });
}

bool Flush(int descriptor)
{
    return Uninterrupted([&] { return ::fsync(descriptor); }) == 0;
}

/// Makes a file of its own of the bytes of another. False, with the reason in errno, on failure.
bool Copy(const path& from, const path& to)
{
    std::vector<char> block(1 << 16);
    const Opened source(from, O_RDONLY);
    const Opened copy(to, O_WRONLY | O_CREAT | O_EXCL);
    if (source.Descriptor() < 0 || copy.Descriptor() < 0)
        return false;
    ssize_t count = 0;
    while ((count = Uninterrupted([&] { return ::read(source.Descriptor(), block.data(), block.size()); })) > 0)
    {
        const char* at = block.data();
        for (ssize_t written = 0; count > 0; count -= written, at += written)
        {
            written = Uninterrupted([&] { return ::write(copy.Descriptor(), at, static_cast<std::size_t>(count)); });
            if (written < 0)
                return false;
        }
    }
    return count == 0;
}

/// A file beside another, under a name that no file has. What has the name at the end goes.
class Draft
{
public:
    explicit Draft(const path& file)
        : m_name(file.parent_path() / boost::filesystem::unique_path("MS%%%%-%%%%-%%%%-%%%%"))
    {
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;
    ~Draft() { Remove(m_name); }

    const path& Name() const { return m_name; }

private:
    path m_name;
};

/// Brings the names in a folder to the disk, that of a file in it among them.
bool FlushFolder(const path& folder, const path& file)
{
    const Opened names(folder, O_RDONLY | O_DIRECTORY);
    if (names.Descriptor() >= 0)
        return Flush(names.Descriptor()) || errno == EINVAL; // not every file system has folders to flush
    if (errno != EACCES)
        return false;
    // A folder that may be written, but not read: with all else that is on the file system.
    const Opened any(file, O_RDONLY | O_NONBLOCK);
    return any.Descriptor() >= 0 && ::syncfs(any.Descriptor()) == 0;
}

/// The folder that a file is in.
path FolderOf(const path& file) { return file.has_parent_path() ? file.parent_path() : "."; }

/// Whether the user may remove a second name of a file from a folder. In one for everybody (sticky) only an owner may.
bool MayBeRemoved(const struct stat& file, const path& folder)
{
    struct stat status;
    const uid_t user = ::geteuid();
    return user == 0 || user == file.st_uid || ::stat(folder.c_str(), &status) != 0 ||
           (status.st_mode & S_ISVTX) == 0 || user == status.st_uid;
}

Outcome SwapOnDevice(const path& target, const struct stat& status, const path& replacement, const path& backup)
{
    // Nothing allocates memory from the second name on: what was begun is brought to an end.
    const path folder = FolderOf(target);
    const Opened file(replacement, O_RDONLY);
    if (file.Descriptor() < 0)
        return errno == ENOENT ? Outcome::missing : Outcome::refused;
    CopyAttributes(target.native(), status, file.Descriptor());
    if (!MayBeRemoved(status, FolderOf(backup)))
        return Outcome::refused;
    const bool isLinked = Uninterrupted([&] { return ::link(target.c_str(), backup.c_str()); }) == 0;
    if (!isLinked && errno == EXDEV)
        return Outcome::otherDevice;
    const bool isFlushed = IsFlushed(file.Descriptor()) || Flush(file.Descriptor());
    if (!isFlushed || !(isLinked ? Rename(replacement, target) : Exchange(replacement, target)))
    {
        if (isLinked)
            Remove(backup);
        if (!isFlushed)
            Remove(replacement);
        return isFlushed ? Outcome::refused : Outcome::unflushed;
    }
    if (!FlushFolder(folder, target))
    {
        Rename(isLinked ? backup : replacement, target);
        return Outcome::unflushed;
    }
    if (!isLinked && !Rename(replacement, backup))
        Remove(replacement);
    return Outcome::swapped;
}

/// Swaps with a copy of the new file on the device of the old one.
Outcome SwapByCopy(const path& target, const struct stat& status, const path& replacement)
{
    const Draft copy(target);
    const Draft backup(target);
    const Outcome outcome =
        Copy(replacement, copy.Name()) ? SwapOnDevice(target, status, copy.Name(), backup.Name()) : Outcome::refused;
    if (outcome == Outcome::swapped || outcome == Outcome::unflushed)
        Remove(replacement);
    return outcome;
}

}

bool Swap(const path& target, const path& replacement, const path& backup)
{
    struct stat status;
    path file = target;
    bool isFound = ::lstat(file.c_str(), &status) == 0;
    if (isFound && S_ISLNK(status.st_mode))
    {
        const std::unique_ptr<char, decltype(&std::free)> real(::realpath(target.c_str(), nullptr), &std::free);
        isFound = real != nullptr && ::lstat(real.get(), &status) == 0;
        file = isFound ? real.get() : "";
    }
    Outcome outcome = errno == ENOENT || errno == ELOOP ? Outcome::missing : Outcome::refused;
    if (isFound && !S_ISREG(status.st_mode))
    {
        SetLastError(S_ISDIR(status.st_mode) ? ERROR_DIRECTORY : ERROR_INVALID_NAME);
        return false;
    }
    if (isFound)
        outcome = SwapOnDevice(file, status, replacement, backup);
    if (outcome == Outcome::otherDevice)
        outcome = SwapByCopy(file, status, replacement);
    SetLastError(outcome == Outcome::missing ? ERROR_FILE_NOT_FOUND : ERROR_UNABLE_TO_REMOVE_REPLACED);
    return outcome == Outcome::swapped;
}

bool MoveAcross(const path& from, const path& to)
{
    struct stat status;
    if (::lstat(from.c_str(), &status) != 0)
        return FailOn(from.native());
    if (!S_ISREG(status.st_mode))
    {
        SetLastError(ERROR_NOT_SAME_DEVICE);
        return false;
    }
    const Draft copy(to);
    if (Copy(from, copy.Name()))
    {
        const Opened file(copy.Name(), O_RDONLY);
        CopyAttributes(from.native(), status, file.Descriptor());
        const timespec times[] = {status.st_atim, status.st_mtim};
        ::futimens(file.Descriptor(), times);
        if (Flush(file.Descriptor()) && Rename(copy.Name(), to) && FlushNames(to))
        {
            Remove(from);
            return true;
        }
    }
    return Fail();
}

bool FlushNames(const path& file) { return FlushFolder(FolderOf(file), file); }

}
