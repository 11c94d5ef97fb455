#pragma once

#include "utility/platform/Types.h"

#include <sys/stat.h>
#include <time.h>

namespace utility::platform::posix
{

FILETIME FileTimeOf(const timespec& time);

/// When an open file was made, or its record changed last where the file system does not keep that.
FILETIME CreationTime(int descriptor, const struct stat& status);

}
