#include "utility/platform/Clock.h"

namespace utility::platform
{

std::tm LocalTime(std::int64_t seconds) noexcept
{
    std::tm local = {};
    return ::_localtime64_s(&local, &seconds) == 0 ? local : std::tm{};
}

}
