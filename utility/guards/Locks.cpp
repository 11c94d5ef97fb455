#include "utility/guards/Locks.h"

#include "utility/platform/Threads.h"

CLock::CLock() : m_nCount(-1), m_bWriteLocked(true) {}

CLock::CLock(const CLock& other) = default;
CLock& CLock::operator=(const CLock& other) = default;

CLock::~CLock() = default;

void CLock::InitialUnlock()
{
    m_nCount = 0;
    m_bWriteLocked = false;
}

bool CLock::ReadLock() { return ++m_nCount > 0; }

bool CLock::WriteLock()
{
    ++m_nCount;
    m_bWriteLocked = true;
    return true;
}

void CLock::Unlock()
{
    --m_nCount;
    m_bWriteLocked = false;
}

bool CLock::IsLocked() const { return m_nCount >= 1; }

bool CLock::IsWriteLocked() const { return m_bWriteLocked; }

int CLock::LockCount() const { return m_nCount; }

CCriticalSectionSpinCount::CCriticalSectionSpinCount(DWORD spinCount)
{
    utility::platform::InitialiseCriticalSection(m_section, spinCount);
}

CCriticalSectionSpinCount::~CCriticalSectionSpinCount() { utility::platform::DeleteCriticalSection(m_section); }

void CCriticalSectionSpinCount::Lock() { utility::platform::EnterCriticalSection(m_section); }

void CCriticalSectionSpinCount::Unlock() { utility::platform::LeaveCriticalSection(m_section); }

CCriticalSectionSpinCount::operator _RTL_CRITICAL_SECTION*() { return &m_section; }
