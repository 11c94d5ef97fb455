#include "utility/platform/Clock.h"

namespace utility::platform
{

std::tm LocalTime(std::int64_t seconds) noexcept
{
    const std::time_t moment = seconds;
    std::tm local = {};
    return ::localtime_r(&moment, &local) != nullptr ? local : std::tm{};
}

}
