#include "utility/guards/Locks.h"

#include "utility/platform/Threads.h"

CLock::CLock() noexcept : m_nCount(-1), m_bWriteLocked(true) {}

CLock::CLock(const CLock& other) noexcept = default;
CLock& CLock::operator=(const CLock& other) noexcept = default;

CLock::~CLock() = default;

void CLock::InitialUnlock() noexcept
{
    m_nCount = 0;
    m_bWriteLocked = false;
}

bool CLock::ReadLock() noexcept { return ++m_nCount > 0; }

bool CLock::WriteLock() noexcept
{
    ++m_nCount;
    m_bWriteLocked = true;
    return true;
}

void CLock::Unlock() noexcept
{
    --m_nCount;
    m_bWriteLocked = false;
}

bool CLock::IsLocked() const noexcept { return m_nCount >= 1; }

bool CLock::IsWriteLocked() const noexcept { return m_bWriteLocked; }

int CLock::LockCount() const noexcept { return m_nCount; }

CCriticalSectionSpinCount::CCriticalSectionSpinCount(DWORD spinCount) noexcept
{
    utility::platform::InitialiseCriticalSection(m_section, spinCount);
}

CCriticalSectionSpinCount::~CCriticalSectionSpinCount() { utility::platform::DeleteCriticalSection(m_section); }

void CCriticalSectionSpinCount::Lock() noexcept { utility::platform::EnterCriticalSection(m_section); }

void CCriticalSectionSpinCount::Unlock() noexcept { utility::platform::LeaveCriticalSection(m_section); }

CCriticalSectionSpinCount::operator _RTL_CRITICAL_SECTION*() noexcept { return &m_section; }
