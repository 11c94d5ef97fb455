#pragma once

// A thread has another priority for the time of a scope.
//
//     {
//         const CThreadPriority priority(-1); // below the usual one: the user's programs go first
//         Recalculate();
//     }
//
// An object of the calling thread belongs to that thread. Nothing here throws or reports: a priority that is refused
// stays what it was. On Windows it may be any thread's; on Linux that of the calling thread alone, and a lower one is
// refused where the system would not let it be raised again, which it does not let most users.

#include "utility/platform/Export.h"

/// Another priority for a thread, as long as it lives. Priorities are those of Windows: 0 is the usual one, 1 and 2 are
/// above it, -1 and -2 below, 15 and -15 the utmost.
class UTILITY_API CThreadPriority
{
public:
    /// Of the calling thread.
    explicit CThreadPriority(int priority) noexcept;
    /// Of the thread with this handle, which outlives the object.
    CThreadPriority(void* thread, int priority) noexcept;
    CThreadPriority(const CThreadPriority&) = delete;
    CThreadPriority& operator=(const CThreadPriority&) = delete;
    /// Gives the thread back the priority that it had.
    ~CThreadPriority();

private:
    void* m_hThread;
    int m_nOldPriority;
};
