// In the place of the steady clock: one of the time that the processor has worked for this process, which runs twenty
// times as fast. So a busy machine takes none of it away.

#include <chrono>
#include <ctime>

using Clock = std::chrono::steady_clock;

extern "C" Clock::time_point __wrap__ZNSt6chrono3_V212steady_clock3nowEv();

Clock::time_point __wrap__ZNSt6chrono3_V212steady_clock3nowEv()
{
    timespec worked = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &worked);
    return Clock::time_point(20 * (std::chrono::seconds(worked.tv_sec) + std::chrono::nanoseconds(worked.tv_nsec)));
}
