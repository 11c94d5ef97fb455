#pragma once

#include "utility/guards/Locks.h"

namespace utility
{

/// Holds the library's ordinary mutex while it lives.
class LockGuard
{
public:
    explicit LockGuard(CCriticalSectionSpinCount& lock) : m_lock(lock) { m_lock.Lock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;
    ~LockGuard() { m_lock.Unlock(); }

private:
    CCriticalSectionSpinCount& m_lock;
};

}
