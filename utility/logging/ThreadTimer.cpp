#include "utility/logging/ThreadTimer.h"

#include "utility/platform/Handles.h"
#include "utility/platform/ThreadTimes.h"

namespace
{

std::uint64_t CountOf(const FILETIME& time) { return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime; }

void ReadTimes(HANDLE thread, std::uint64_t& kernel, std::uint64_t& user)
{
    KUtime times;
    utility::platform::ThreadTimes().Times(thread, times.m_ftKernel, times.m_ftUser);
    kernel = CountOf(times.m_ftKernel);
    user = CountOf(times.m_ftUser);
}

}

KUtime::KUtime() : m_ftKernel{}, m_ftUser{} {}

KUtime::KUtime(const FILETIME& kernel, const FILETIME& user) : m_ftKernel(kernel), m_ftUser(user) {}

void KUtime::copy(const FILETIME& kernel, const FILETIME& user)
{
    m_ftKernel = kernel;
    m_ftUser = user;
}

ULARGE_INTEGER KUtime::Diff(const KUtime& other)
{
    ULARGE_INTEGER difference;
    difference.QuadPart = CountOf(m_ftUser) - CountOf(other.m_ftUser) - CountOf(other.m_ftKernel) + CountOf(m_ftKernel);
    return difference;
}

ThreadTimer::ThreadTimer() : m_hThread(INVALID_HANDLE_VALUE), m_nKernel(0), m_nUser(0), m_bPaused(true) {}

ThreadTimer::~ThreadTimer()
{
    // A timer that was never started deliberately hands over the invalid handle, which does no harm.
    if (m_hThread != nullptr)
        utility::platform::Handles().CloseHandle(m_hThread);
}

void ThreadTimer::Start()
{
    if (m_hThread == INVALID_HANDLE_VALUE)
        m_hThread = utility::platform::ThreadTimes().OpenCallingThread();
    ReadTimes(m_hThread, m_nKernel, m_nUser);
    m_bPaused = false;
}

void ThreadTimer::Stop()
{
    std::uint64_t kernel;
    std::uint64_t user;
    ReadTimes(m_hThread, kernel, user);
    // Deliberately without a look at the state: a second stop subtracts the result of the first.
    m_nKernel = kernel - m_nKernel;
    m_nUser = user - m_nUser;
    m_bPaused = true;
}

void ThreadTimer::Reset()
{
    m_bPaused = true;
    m_nKernel = 0;
    m_nUser = 0;
}

bool ThreadTimer::IsPaused() const { return m_bPaused; }

void ThreadTimer::ElapsedTime(std::uint64_t& kernel, std::uint64_t& user) const
{
    if (!m_bPaused)
        return CalcElapsedTime(kernel, user);
    kernel = m_nKernel;
    user = m_nUser;
}

std::uint64_t ThreadTimer::ElapsedTime() const
{
    std::uint64_t kernel;
    std::uint64_t user;
    ElapsedTime(kernel, user);
    return kernel + user;
}

void ThreadTimer::CalcElapsedTime(std::uint64_t& kernel, std::uint64_t& user) const
{
    kernel = 0;
    user = 0;
    if (m_hThread == INVALID_HANDLE_VALUE)
        return;
    ReadTimes(m_hThread, kernel, user);
    kernel -= m_nKernel;
    user -= m_nUser;
}
