#pragma once

#include "utility/platform/Types.h"

#include <boost/filesystem/path.hpp>

#include <cstddef>
#include <cstdint>
#include <sys/stat.h>

namespace utility::platform::posix
{

/// A file that is read, for a scope. Users of this library cannot write to it meanwhile.
class SourceFile
{
public:
    /// Leaves the reason in LastError() where it cannot be opened. A pipe does not hold it up.
    explicit SourceFile(const boost::filesystem::path& path);
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;
    ~SourceFile();

    bool IsOpen() const noexcept { return m_descriptor >= 0; }
    /// Whether it is open, and neither a pipe nor a device.
    bool IsPlain() const noexcept { return S_ISREG(m_status.st_mode); }
    /// As it was when the file was opened.
    const struct stat& Status() const noexcept { return m_status; }
    std::uint64_t Length() const noexcept { return static_cast<std::uint64_t>(m_status.st_size); }

    /// Fills a buffer with the bytes at a position. False if they are not all there.
    bool Read(void* buffer, std::size_t size, std::uint64_t position) const;
    /// Whether the file ends at a position now.
    bool EndsAt(std::uint64_t position) const;

    /// Keeps others who claim the file off it. False if one of them has it.
    bool Claim() const;
    /// Whether a path leads to this file, and nobody has written to it since it was opened.
    bool IsStillAt(const boost::filesystem::path& path) const;

private:
    HANDLE m_file;
    int m_descriptor;
    struct stat m_status = {};
};

}
