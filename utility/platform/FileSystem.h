#pragma once

#include "utility/platform/Service.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>

namespace utility::platform
{

/// What is done to a file by its name, and where files are. Any thread may call. An operation that fails leaves its
/// reason in LastError(). A path with a null character in it is refused with 123.
class FileSystemService
{
public:
    virtual ~FileSystemService() = default;

    /// Puts a new file, `replacement`, in the place of `target`; what was there has the name `backup` afterwards. The
    /// three are in one folder. The new file takes over what the system keeps about the old one, the rights to it above
    /// all, as far as it may. On failure the target is what it was, or else `backup` is. A target or a replacement that
    /// is missing is 2, a target that is a folder 267, and on Linux one that is a device or a pipe 123.
    ///
    /// On Linux a target is never missing for others, and never half: the new file is on the disk before it gets the
    /// name, and the name is when this returns. A link stays a link, and what it points at is replaced; one that points
    /// at nothing is a missing target. Where that is on another device, the new file goes there as a copy, and nothing
    /// is left under the name `backup`. Any other refusal is 1175. Where the new file or the name does not reach the
    /// disk, the target is the old one, and the replacement is deleted: a second attempt to flush it would succeed,
    /// whatever was lost.
    virtual bool Replace(const boost::filesystem::path& target, const boost::filesystem::path& replacement,
                         const boost::filesystem::path& backup) = 0;

    /// Has the system bring the name of a file to the disk. (Windows does so by itself.)
    virtual bool FlushName(const boost::filesystem::path& file) = 0;

    /// Has the system delete a file as soon as nobody reads it any more. (On Linux its name goes at once.)
    virtual bool DeleteWhenUnused(const boost::filesystem::path& file) = 0;

    /// Gives a file another name, in place of a file that has it already, or takes it to another device under that
    /// name. A folder goes to no other device (17 on Linux).
    virtual bool Move(const boost::filesystem::path& from, const boost::filesystem::path& to) = 0;

    /// Makes an empty file. One that is there already is 80.
    virtual bool CreateNew(const boost::filesystem::path& file) = 0;

    virtual bool IsReadable(const boost::filesystem::path& file) = 0;

    /// The length in bytes of what may be open elsewhere; 0 for a folder.
    virtual bool Length(const boost::filesystem::path& file, std::uint64_t& length) = 0;

    // Names of a file that is there; empty on failure. Linux has one name for a file, which is the one given.

    virtual boost::filesystem::path LongName(const boost::filesystem::path& file) = 0;
    virtual boost::filesystem::path ShortName(const boost::filesystem::path& file) = 0;

    /// The folder of the user's documents; empty on failure. On Linux it is the one that the desktop's settings name,
    /// or else the home folder.
    virtual boost::filesystem::path DocumentsFolder() = 0;

    /// The folder of the system's own libraries; empty on failure. On Linux it is the one that the C library is in.
    virtual boost::filesystem::path SystemFolder() = 0;
};

ServiceSlot<FileSystemService>& FileSystemSlot() noexcept;
inline FileSystemService& FileSystem() noexcept { return FileSystemSlot().Get(); }

}
