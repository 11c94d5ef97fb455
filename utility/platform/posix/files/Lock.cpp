#include "utility/platform/posix/files/Lock.h"

#include "utility/platform/posix/error/Errno.h"

#include <fcntl.h>
#include <unistd.h>

namespace utility::platform::posix
{

bool Lock(int descriptor, short type) noexcept
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return Uninterrupted([&] { return ::fcntl(descriptor, F_OFD_SETLK, &lock); }) == 0;
}

}
