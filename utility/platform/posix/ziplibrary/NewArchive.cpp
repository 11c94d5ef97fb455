#include "utility/platform/posix/ziplibrary/NewArchive.h"

#include "utility/platform/FileSystem.h"
#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/files/Flushed.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

using boost::filesystem::path;

/// A name that no file has; that of the folder where none can be made up, which nothing can be made under.
path NameBeside(const path& file)
{
    boost::system::error_code failure;
    return file.parent_path() / boost::filesystem::unique_path("MS%%%%-%%%%-%%%%-%%%%", failure);
}

void Remove(const path& file)
{
    Uninterrupted([&] { return ::unlink(file.c_str()); });
}

NewArchive& Of(voidpf archive) { return *static_cast<NewArchive*>(archive); }

}

NewArchive::NewArchive(const path& archive)
    : m_archive(archive),
      m_name(NameBeside(archive)),
      m_buffer(1 << 18),
      m_descriptor(MakeFile(m_name.c_str(), 0666)),
      m_hasFailed(m_descriptor < 0)
{
}

NewArchive::~NewArchive()
{
    if (m_descriptor < 0)
        return;
    ::close(m_descriptor);
    if (!m_name.empty())
        Remove(m_name);
}

bool NewArchive::Write(const void* data, std::size_t size) noexcept
{
    const auto* from = static_cast<const char*>(data);
    while (size > 0 && !m_hasFailed)
    {
        // Numbers of an entry that were not known ahead of its bytes are written into the buffer as well.
        const bool isInBuffer = m_position >= m_bufferPosition && m_position <= m_bufferPosition + m_buffered &&
                                m_position < m_bufferPosition + m_buffer.size();
        if (!isInBuffer && !Flush())
            break;
        const auto at = static_cast<std::size_t>(m_position - m_bufferPosition);
        const std::size_t count = std::min(size, m_buffer.size() - at);
        std::memcpy(m_buffer.data() + at, from, count);
        m_buffered = std::max(m_buffered, at + count);
        m_position += count;
        m_length = std::max(m_length, m_position);
        from += count;
        size -= count;
    }
    return !m_hasFailed;
}

bool NewArchive::Read(void* data, std::size_t size) noexcept
{
    auto* to = static_cast<char*>(data);
    while (size > 0 && Flush())
    {
        const ssize_t count =
            Uninterrupted([&] { return ::pread(m_descriptor, to, size, static_cast<off_t>(m_position)); });
        m_hasFailed = count <= 0;
        if (m_hasFailed)
            break;
        m_position += static_cast<std::uint64_t>(count);
        to += count;
        size -= static_cast<std::size_t>(count);
    }
    return !m_hasFailed;
}

/// Empties the buffer, which goes on at the position.
bool NewArchive::Flush() noexcept
{
    for (std::size_t written = 0; written < m_buffered && !m_hasFailed;)
    {
        const ssize_t count = Uninterrupted(
            [&]
            {
                return ::pwrite(m_descriptor, m_buffer.data() + written, m_buffered - written,
                                static_cast<off_t>(m_bufferPosition + written));
            });
        m_hasFailed = count <= 0;
        written += m_hasFailed ? 0 : static_cast<std::size_t>(count);
    }
    m_buffered = 0;
    m_bufferPosition = m_position;
    return !m_hasFailed;
}

zlib_filefunc64_def NewArchive::Functions() noexcept
{
    zlib_filefunc64_def functions = {};
    functions.opaque = this;
    functions.zopen64_file = [](voidpf archive, const void* /*name*/, int /*mode*/) { return archive; };
    functions.zread_file = [](voidpf, voidpf archive, void* to, uLong size) -> uLong
    { return Of(archive).Read(to, size) ? size : 0; };
    // Where a write fails minizip forgets what it has allocated: the archive remembers that it did.
    functions.zwrite_file = [](voidpf, voidpf archive, const void* from, uLong size) -> uLong
    {
        Of(archive).Write(from, size);
        return size;
    };
    functions.ztell64_file = [](voidpf, voidpf archive) -> ZPOS64_T { return Of(archive).Position(); };
    functions.zseek64_file = [](voidpf, voidpf archive, ZPOS64_T distance, int origin) -> long
    {
        const std::uint64_t from = origin == ZLIB_FILEFUNC_SEEK_END   ? Of(archive).Length()
                                   : origin == ZLIB_FILEFUNC_SEEK_CUR ? Of(archive).Position()
                                                                      : 0;
        Of(archive).Seek(from + distance);
        return 0;
    };
    functions.zclose_file = [](voidpf, voidpf) { return 0; };
    functions.zerror_file = [](voidpf, voidpf archive) { return Of(archive).HasFailed() ? 1 : 0; };
    return functions;
}

bool NewArchive::TakePlace(const SourceFile& old)
{
    if (!Flush() || Uninterrupted([&] { return ::fsync(m_descriptor); }) != 0)
        return false;
    NoteFlushed(m_descriptor);
    if (!old.IsOpen())
        return TakeFreePlace();
    if (!old.Claim() || !old.IsStillAt(m_archive))
        return false;
    const path backup = NameBeside(m_archive);
    const bool isSwapped = FileSystem().Replace(m_archive, m_name, backup);
    if (isSwapped)
        Remove(backup);
    // A file system that can neither link nor exchange files can still rename them.
    else if (!FileSystem().Move(m_name, m_archive))
        return false;
    m_name.clear();
    return isSwapped || FileSystem().FlushName(m_archive);
}

bool NewArchive::TakeFreePlace()
{
    const auto rename = [&]
    { return ::renameat2(AT_FDCWD, m_name.c_str(), AT_FDCWD, m_archive.c_str(), RENAME_NOREPLACE); };
    // A link to nowhere gives its place. Not every file system looks whether something is there.
    struct stat status;
    if (Uninterrupted(rename) != 0 &&
        (::stat(m_archive.c_str(), &status) == 0 || errno != ENOENT || !FileSystem().Move(m_name, m_archive)))
        return false;
    m_name.clear();
    const bool isFlushed = FileSystem().FlushName(m_archive);
    if (!isFlushed)
        Remove(m_archive);
    return isFlushed;
}

}
