#pragma once

#include <cstdint>

namespace utility::platform::posix
{

/// The processor time of a thread, in 100 ns.
struct ProcessorTime
{
    std::uint64_t kernel = 0;
    std::uint64_t user = 0;
};

/// Remembers the calling thread under a number of its own, for TimeOf. -1 on failure.
int RememberCallingThread();

/// What a thread has used so far. What has been given before is what it has used at least, and all that is known of it
/// once it has ended. False if there is no thread with this number.
bool TimeOf(int number, ProcessorTime& time);

/// False if there is no thread with this number.
bool ForgetThread(int number) noexcept;

}
