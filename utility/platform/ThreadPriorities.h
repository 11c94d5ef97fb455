#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

/// How soon threads get a processor. Any thread may call. An operation that fails leaves its reason in LastError().
///
/// Priorities are those of Windows: 0 is the usual one, 1 and 2 are above it, -1 and -2 below, 15 and -15 the utmost.
/// On Linux they are the steps -5, -10, 5, 10, -20 and 19 of the thread's nice value, and a value between these is a
/// priority as well, by a number of its own.
class ThreadPriorityService
{
public:
    virtual ~ThreadPriorityService() = default;

    /// What stands for the calling thread in a call of it; it is not to be closed.
    virtual HANDLE CallingThread() = 0;

    virtual int Priority(HANDLE thread) = 0;

    /// On Linux only the calling thread has one, and what could not be taken back for lack of rights is refused with 5,
    /// as a lower priority without the right to raise it.
    virtual bool SetPriority(HANDLE thread, int priority) = 0;
};

ServiceSlot<ThreadPriorityService>& ThreadPrioritiesSlot() noexcept;
inline ThreadPriorityService& ThreadPriorities() noexcept { return ThreadPrioritiesSlot().Get(); }

}
