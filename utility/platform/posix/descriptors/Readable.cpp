#include "utility/platform/posix/descriptors/Readable.h"

#include "utility/platform/posix/error/Errno.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <poll.h>

namespace utility::platform::posix
{

std::optional<bool> WaitUntilReadable(int descriptor, DWORD milliseconds)
{
    using Clock = std::chrono::steady_clock;
    constexpr DWORD forEver = 0xFFFFFFFF;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    const auto left = [&]
    {
        // What is longer than the system can wait at once is waited for anew.
        constexpr std::int64_t longest = std::numeric_limits<int>::max();
        const std::int64_t time = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        return milliseconds == forEver ? -1 : static_cast<int>(std::clamp<std::int64_t>(time, 0, longest));
    };
    pollfd waited = {descriptor, POLLIN, 0};
    for (;;)
    {
        const int ready = Uninterrupted([&] { return ::poll(&waited, 1, left()); });
        if (ready < 0)
            return std::nullopt;
        if (ready > 0 || (milliseconds != forEver && Clock::now() >= end))
            return ready > 0;
    }
}

}
