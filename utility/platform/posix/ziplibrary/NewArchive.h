#pragma once

#include "utility/platform/posix/ziplibrary/SourceFile.h"

#include <boost/filesystem/path.hpp>

#include <cstddef>
#include <cstdint>
#include <minizip/ioapi.h>
#include <string>
#include <vector>

namespace utility::platform::posix
{

/// An archive that is being written, beside the one whose place it is to take, under a name of its own. It goes with
/// the object unless it has taken that place.
class NewArchive
{
public:
    explicit NewArchive(const boost::filesystem::path& archive);
    NewArchive(const NewArchive&) = delete;
    NewArchive& operator=(const NewArchive&) = delete;
    ~NewArchive();

    // What is written and read at the position, which goes on by it. From the first failure on all fail.

    bool Write(const void* data, std::size_t size) noexcept;
    bool Write(const std::string& bytes) noexcept { return Write(bytes.data(), bytes.size()); }
    bool Read(void* data, std::size_t size) noexcept;
    std::uint64_t Position() const noexcept { return m_position; }
    void Seek(std::uint64_t position) noexcept { m_position = position; }
    std::uint64_t Length() const noexcept { return m_length; }
    bool HasFailed() const noexcept { return m_hasFailed; }

    /// For minizip to write to it.
    zlib_filefunc64_def Functions() noexcept;

    /// Brings it to the disk and puts it in its place: that of the old one, or where nothing is if that is not open.
    /// What somebody else has put or written there meanwhile stays.
    bool TakePlace(const SourceFile& old);

private:
    bool Flush() noexcept;
    bool TakeFreePlace();

    boost::filesystem::path m_archive;
    boost::filesystem::path m_name;
    std::vector<char> m_buffer; ///< what is to be written at m_bufferPosition, m_buffered bytes of it
    std::size_t m_buffered = 0;
    std::uint64_t m_bufferPosition = 0;
    std::uint64_t m_position = 0;
    std::uint64_t m_length = 0;
    int m_descriptor;
    bool m_hasFailed;
};

}
