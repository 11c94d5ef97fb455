#include "utility/platform/posix/handles/Descriptor.h"

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

}
