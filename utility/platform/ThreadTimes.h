#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

/// The processor times of threads. Any thread may call. An operation that fails leaves its reason in LastError().
class ThreadTimeService
{
public:
    virtual ~ThreadTimeService() = default;

    /// A handle of the calling thread for any thread to use, also when this one has ended. Handles().CloseHandle ends
    /// it. INVALID_HANDLE_VALUE on failure.
    [[nodiscard]] virtual HANDLE OpenCallingThread() = 0;

    /// What a thread has used so far, in 100 ns. Neither time decreases from one call with a handle to the next.
    ///
    /// Windows counts in steps of its clock, 15.6 ms as a rule. Linux measures the sum exactly; how another thread's
    /// is split follows its clock of 10 ms, and of a thread that has ended what was last given is given again.
    virtual bool Times(HANDLE thread, FILETIME& kernel, FILETIME& user) = 0;
};

ServiceSlot<ThreadTimeService>& ThreadTimesSlot() noexcept;
inline ThreadTimeService& ThreadTimes() noexcept { return ThreadTimesSlot().Get(); }

}
