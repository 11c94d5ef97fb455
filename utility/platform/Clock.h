#pragma once

#include <cstdint>
#include <ctime>

namespace utility::platform
{

/// The user's local time at a moment, which is given in seconds since the start of 1970 UTC. All zeros for one that
/// the system cannot tell.
[[nodiscard]] std::tm LocalTime(std::int64_t seconds) noexcept;

}
