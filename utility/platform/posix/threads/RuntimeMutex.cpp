#include "utility/platform/posix/threads/RuntimeMutex.h"

#include "utility/platform/LoadOrder.h"

namespace utility::platform::posix
{

namespace
{

/// When the library is loaded: no fork finds another thread making it.
[[gnu::constructor(platformIsReady)]] void MakeMutex() { RuntimeMutex(); }

}

ForkSafeMutex& RuntimeMutex() noexcept
{
    static UntilUnload<ForkSafeMutex> mutex;
    return *mutex;
}

}
