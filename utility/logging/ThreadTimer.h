#pragma once

// The processor time that one thread spends, which is not the time that passes.
//
//     ThreadTimer timer;
//     timer.Start();
//     Compute();
//     timer.Stop();
//     const std::uint64_t milliseconds = timer.ElapsedTime() / 10000;
//
// All times are counts of 100 ns. Windows advances them in steps of its clock, 15.6 ms as a rule. An object belongs to
// one thread at a time. Nothing is reported: what the system does not tell counts as 0.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <cstdint>

/// What a thread has spent in the system's code and in its own.
class UTILITY_API KUtime
{
public:
    /// No time.
    KUtime();
    /// The two times as the system gives them.
    KUtime(const FILETIME& kernel, const FILETIME& user);

    /// Replaces both times.
    void copy(const FILETIME& kernel, const FILETIME& user);

    /// What was spent in both from `other` to this; it wraps if `other` is the later one.
    ULARGE_INTEGER Diff(const KUtime& other);

    FILETIME m_ftKernel; ///< in the system's code, in units of 100 ns
    FILETIME m_ftUser;   ///< in the thread's own, in units of 100 ns
};

class UTILITY_API ThreadTimer
{
public:
    /// No measurement, and no thread yet.
    ThreadTimer();
    ThreadTimer(const ThreadTimer&) = delete;
    /// Both then have the same handle, and the handle that this one had is lost. Each closes the handle when it dies,
    /// so only one of them may live on.
    ThreadTimer& operator=(const ThreadTimer&) = default;
    /// Closes the handle of the thread.
    ~ThreadTimer();

    /// Measures from now. The first start binds the timer to the calling thread for good, whoever starts it later. What
    /// was measured before is lost: a stopped timer does not go on.
    void Start();

    /// Ends a measurement; to be called only while there is one.
    void Stop();

    /// No measurement, and no time.
    void Reset();

    /// Whether no measurement is under way.
    bool IsPaused() const;

    /// What the last measurement gave, or what the present one has given so far.
    void ElapsedTime(std::uint64_t& kernel, std::uint64_t& user) const;
    /// The sum of both.
    std::uint64_t ElapsedTime() const;

private:
    UTILITY_LOCAL void CalcElapsedTime(std::uint64_t& kernel, std::uint64_t& user) const;

    HANDLE m_hThread;
    // While paused what was measured, otherwise what the thread had spent at the start.
    std::uint64_t m_nKernel;
    std::uint64_t m_nUser;
    bool m_bPaused;
};
