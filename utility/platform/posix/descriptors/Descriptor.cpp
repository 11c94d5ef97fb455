#include "utility/platform/posix/descriptors/Descriptor.h"

#include "utility/platform/posix/error/Errno.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace utility::platform::posix
{

int AboveStandardStreams(int descriptor) noexcept
{
    if (descriptor < 0 || descriptor > STDERR_FILENO)
        return descriptor;
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int reason = errno;
    ::close(descriptor);
    errno = reason;
    return moved;
}

Descriptor::~Descriptor()
{
    const int reason = errno;
    if (m_number >= 0)
        ::close(m_number);
    errno = reason;
}

int OpenAny(const char* path, int flags) noexcept
{
    const auto open = [&](int more)
    { return Uninterrupted([&] { return ::open(path, flags | O_CLOEXEC | O_NOCTTY | more, 0666); }); };
    const int descriptor = open(O_NONBLOCK);
    return AboveStandardStreams(descriptor < 0 && errno == EAGAIN ? open(0) : descriptor);
}

int MakeFile(const char* path, mode_t mode) noexcept
{
    const int made = Uninterrupted([&] { return ::open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode); });
    const int moved = AboveStandardStreams(made);
    if (made >= 0 && moved < 0)
    {
        const int reason = errno;
        ::unlink(path);
        errno = reason;
    }
    return moved;
}

bool WriteAll(int descriptor, std::string_view text) noexcept
{
    while (!text.empty())
    {
        const ssize_t written = Uninterrupted([&] { return ::write(descriptor, text.data(), text.size()); });
        if (written <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}
