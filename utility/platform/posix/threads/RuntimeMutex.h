#pragma once

#include "utility/platform/AtFork.h"

namespace utility::platform::posix
{

/// To be held in calls of the C library that lock something which it does not free in the child of a fork: local time,
/// the choice of a locale, the begin and the end of a conversion. So no child waits for a thread that was within one.
ForkSafeMutex& RuntimeMutex() noexcept;

}
