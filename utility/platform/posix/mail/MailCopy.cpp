#include "utility/platform/posix/mail/MailCopy.h"

#include "utility/platform/Mail.h"
#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/error/Errno.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

constexpr char folderPrefix[] = "utility-mail-";
constexpr std::time_t secondsKept = 7 * 24 * 60 * 60;

boost::filesystem::path TemporaryFolder()
{
    const char* const given = std::getenv("TMPDIR");
    return given != nullptr && *given == '/' ? given : "/tmp";
}

/// What is read to the end of one file goes into another one.
std::uint32_t CopyBytes(int from, int to)
{
    char bytes[64 * 1024];
    for (;;)
    {
        const ssize_t size = Uninterrupted([&] { return ::read(from, bytes, sizeof(bytes)); });
        if (size == 0)
            return mailSucceeded;
        if (size < 0)
            return mailAttachmentNotOpened;
        if (!WriteAll(to, {bytes, static_cast<std::size_t>(size)}))
            return mailAttachmentNotWritten;
    }
}

std::uint32_t CopyToNewFile(int from, const boost::filesystem::path& path)
{
    const int to = MakeFile(path.c_str(), S_IRUSR | S_IWUSR);
    if (to < 0)
        return mailAttachmentNotWritten;
    const std::uint32_t result = CopyBytes(from, to);
    // A disk in the network may tell only now that it is full.
    return ::close(to) == 0 || errno == EINTR ? result : mailAttachmentNotWritten;
}

bool IsOldFolderOfUser(const boost::filesystem::path& path)
{
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           status.st_mtime < std::time(nullptr) - secondsKept;
}

}

MailCopy::~MailCopy()
{
    boost::system::error_code ignored;
    if (!m_isKept && !m_folder.empty())
        boost::filesystem::remove_all(m_folder, ignored);
}

std::uint32_t MailCopy::Make(const boost::filesystem::path& file, std::string name)
{
    const Descriptor from(OpenAny(file.c_str(), O_RDONLY));
    if (!from)
        return errno == ENOENT || errno == ENOTDIR ? mailAttachmentNotFound : mailAttachmentNotOpened;
    struct stat status;
    if (::fstat(from.Number(), &status) != 0 || !S_ISREG(status.st_mode))
        return mailAttachmentNotOpened;
    std::string folder = (TemporaryFolder() / folderPrefix).native() + "XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr)
        return mailAttachmentNotWritten;
    m_folder = folder;
    if (name.empty())
        name = file.filename().native();
    std::ranges::replace(name, '/', '_');
    m_path = m_folder / name;
    return CopyToNewFile(from.Number(), m_path);
}

void MailCopy::RemoveOld()
{
    boost::system::error_code error;
    for (boost::filesystem::directory_iterator each(TemporaryFolder(), error), end; !error && each != end;
         each.increment(error))
    {
        const boost::filesystem::path& path = each->path();
        if (!path.filename().native().starts_with(folderPrefix) || !IsOldFolderOfUser(path))
            continue;
        boost::system::error_code ignored;
        boost::filesystem::remove_all(path, ignored);
    }
}

}
