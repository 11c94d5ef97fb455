#pragma once

// Two small locks: the library's ordinary mutex, and a record of who holds an object.
//
//     CCriticalSectionSpinCount section;
//     section.Lock();
//     Change(shared);
//     section.Unlock();
//
// Any thread may use a CCriticalSectionSpinCount. A CLock guards nothing by itself and belongs to one thread at a time.
// Nothing here throws.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <cstdint>

/// A count of locks with a note of whether the last one taken was for writing. It blocks nobody and refuses nothing.
/// A new lock counts as held for writing until InitialUnlock: deliberately so, for an object under construction.
class UTILITY_API CLock
{
public:
    /// Held for writing, until InitialUnlock.
    CLock() noexcept;
    /// A copy counts as the other one does, and on its own from then on.
    CLock(const CLock& other) noexcept;
    CLock& operator=(const CLock& other) noexcept;
    ~CLock(); // NOLINT(performance-trivially-destructible): exported

    /// To be called once, when the object that the lock stands for is complete: nobody holds it from then on.
    void InitialUnlock() noexcept;

    /// One more reader. False as long as the new count is not above 0, which it is not for a new lock.
    bool ReadLock() noexcept;

    /// One more lock, for writing whoever else holds one. Always true.
    bool WriteLock() noexcept;

    /// One lock less, and deliberately no write lock any more, also where readers are left. The count may fall below 0.
    void Unlock() noexcept;

    /// Whether the count is above 0.
    bool IsLocked() const noexcept;
    /// Whether the last lock that was taken is for writing, and none has been given back since.
    bool IsWriteLocked() const noexcept;
    /// The count: -1 for a new lock, 0 where nobody holds it.
    int LockCount() const noexcept;

private:
    std::int32_t m_nCount;
    bool m_bWriteLocked;
};

/// A mutual exclusion lock that a thread may take again while it holds it: it is free after as many calls of Unlock.
class UTILITY_API CCriticalSectionSpinCount
{
public:
    /// A thread that has to wait first spins `spinCount` times, where there is more than one processor.
    explicit CCriticalSectionSpinCount(DWORD spinCount = 4000) noexcept;
    CCriticalSectionSpinCount(const CCriticalSectionSpinCount&) = delete;
    CCriticalSectionSpinCount& operator=(const CCriticalSectionSpinCount&) = delete;
    /// No thread may hold it.
    ~CCriticalSectionSpinCount();

    /// Waits, however long, until no other thread holds it.
    void Lock() noexcept;
    /// Only for the thread that holds it.
    void Unlock() noexcept;

    /// For calls of the system; it belongs to this object.
    operator _RTL_CRITICAL_SECTION*() noexcept;

private:
    _RTL_CRITICAL_SECTION m_section;
};
