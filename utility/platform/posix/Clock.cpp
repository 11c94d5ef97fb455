#include "utility/platform/Clock.h"

#include "utility/platform/posix/threads/RuntimeMutex.h"

#include <mutex>

namespace utility::platform
{

std::tm LocalTime(std::int64_t seconds) noexcept
{
    const std::time_t moment = seconds;
    std::tm local = {};
    const std::lock_guard lock(posix::RuntimeMutex());
    return ::localtime_r(&moment, &local) != nullptr ? local : std::tm{};
}

}
