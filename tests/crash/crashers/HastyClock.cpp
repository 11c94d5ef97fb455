// In the place of the steady clock: one that runs twenty times as fast.

#include <chrono>

using Clock = std::chrono::steady_clock;

extern "C" Clock::time_point __real__ZNSt6chrono3_V212steady_clock3nowEv();
extern "C" Clock::time_point __wrap__ZNSt6chrono3_V212steady_clock3nowEv();

Clock::time_point __wrap__ZNSt6chrono3_V212steady_clock3nowEv()
{
    static const Clock::time_point start = __real__ZNSt6chrono3_V212steady_clock3nowEv();
    return start + 20 * (__real__ZNSt6chrono3_V212steady_clock3nowEv() - start);
}
