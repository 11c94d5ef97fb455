#include "utility/platform/posix/ziplibrary/SourceFile.h"

#include "utility/platform/Files.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/files/Lock.h"
#include "utility/platform/posix/handles/Handle.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace utility::platform::posix
{

SourceFile::SourceFile(const boost::filesystem::path& path)
    : m_file(Files().OpenForReading(path)), m_descriptor(NumberOf(HandleKind::file, m_file))
{
    if (m_descriptor >= 0 && ::fstat(m_descriptor, &m_status) != 0)
        m_status = {};
}

SourceFile::~SourceFile()
{
    if (m_descriptor >= 0)
        Files().Close(m_file);
}

bool SourceFile::Read(void* buffer, std::size_t size, std::uint64_t position) const
{
    auto* to = static_cast<char*>(buffer);
    while (size > 0)
    {
        const ssize_t count =
            Uninterrupted([&] { return ::pread(m_descriptor, to, size, static_cast<off_t>(position)); });
        if (count <= 0)
            return false;
        to += count;
        position += static_cast<std::uint64_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool SourceFile::EndsAt(std::uint64_t position) const
{
    char next = 0;
    return Uninterrupted([&] { return ::pread(m_descriptor, &next, 1, static_cast<off_t>(position)); }) == 0;
}

bool SourceFile::Claim() const
{
    // A file system that has locks of one kind only would take that of a reader for another's.
    Lock(m_descriptor, F_UNLCK);
    return Uninterrupted([&] { return ::flock(m_descriptor, LOCK_EX | LOCK_NB); }) == 0 || errno != EWOULDBLOCK;
}

bool SourceFile::IsStillAt(const boost::filesystem::path& path) const
{
    struct stat now;
    return ::stat(path.c_str(), &now) == 0 && now.st_dev == m_status.st_dev && now.st_ino == m_status.st_ino &&
           now.st_size == m_status.st_size && now.st_mtim.tv_sec == m_status.st_mtim.tv_sec &&
           now.st_mtim.tv_nsec == m_status.st_mtim.tv_nsec;
}

}
