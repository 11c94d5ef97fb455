#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>

namespace utility::platform
{

/// Files and mappings. Any thread may call; a handle belongs to one thread at a time.
/// An operation that fails leaves its reason in LastError().
///
/// Who may open a file that is open already: several readers may share it, a reader and a writer or two writers may
/// not (32, sharing violation). Windows holds everybody to this. On Linux an open file carries an advisory lock, so it
/// holds among the users of this library, in all processes, on file systems that know locks, for files as such and not
/// for devices and pipes. It ends when the process that opened the file closes it, whoever was forked meanwhile.
class FileService
{
public:
    virtual ~FileService() = default;

    // A path with a null character in it is refused with 123.

    /// An existing file, to be read from start to end. Others may read, rename and delete it meanwhile.
    /// INVALID_HANDLE_VALUE on failure; a directory is refused with 5.
    [[nodiscard]] virtual HANDLE OpenForReading(const boost::filesystem::path& path) = 0;

    /// A file to write, created if absent, its bytes kept. Others may neither read nor write it meanwhile.
    /// INVALID_HANDLE_VALUE on failure.
    [[nodiscard]] virtual HANDLE OpenForWriting(const boost::filesystem::path& path) = 0;

    /// The length in bytes.
    virtual bool Length(HANDLE file, std::uint64_t& length) = 0;

    /// A mapping of the whole file, read-only. Null on failure, which an empty file is too. It is used and closed while
    /// the file is open.
    [[nodiscard]] virtual HANDLE MapReadOnly(HANDLE file) = 0;

    /// The bytes of a whole mapping, whose file has this length. They stay readable until UnmapView, also when both
    /// handles are closed before, and one byte more is readable behind them. Null on failure. (Windows cannot put that
    /// byte behind a file that fills its last page: such a file is read into memory instead.)
    [[nodiscard]] virtual void* ViewAll(HANDLE mapping, std::uint64_t length) = 0;

    /// Hands the changed bytes of a view to the system.
    virtual bool FlushView(const void* view) = 0;

    virtual bool UnmapView(const void* view) = 0;

    /// Moves the file position by `distance` from the start (FILE_BEGIN), the position (FILE_CURRENT) or the end
    /// (FILE_END) and gives the low half of the new one; INVALID_SET_FILE_POINTER on failure. With `distanceHigh`
    /// the distance has 64 bits, and the high half of the new position is stored there; without it the new position is
    /// one that 32 bits hold.
    virtual DWORD Seek(HANDLE file, std::int32_t distance, std::int32_t* distanceHigh, DWORD method) = 0;

    /// Cuts or extends the file at the file position. A file that is open for reading is refused.
    virtual bool TruncateHere(HANDLE file) = 0;

    /// Writes at the file position; `written` says how many bytes went out, which may be fewer than `size`.
    /// A file that is open for reading is refused with 5.
    virtual bool Write(HANDLE file, const void* data, DWORD size, DWORD& written) = 0;

    /// Has the system bring all that was written to the disk.
    virtual bool FlushToDisk(HANDLE file) = 0;

    /// What the system knows of an open file. Off Windows the creation time is that of the last change of the
    /// file's record where the file system keeps none.
    virtual bool Information(HANDLE file, BY_HANDLE_FILE_INFORMATION& information) = 0;

    /// Closes a file or a mapping.
    virtual bool Close(HANDLE handle) = 0;
};

ServiceSlot<FileService>& FilesSlot() noexcept;
inline FileService& Files() noexcept { return FilesSlot().Get(); }

}
