#pragma once

#include <cerrno>
#include <csignal>
#include <ctime>

namespace utility::platform::posix
{

/// While it is there, a write that meets a limit on the size of files says so, and no signal ends the process for it.
/// The reason of a failure stays in errno.
class WithoutSignalForSize
{
public:
    WithoutSignalForSize()
    {
        ::sigemptyset(&m_signal);
        ::sigaddset(&m_signal, SIGXFSZ);
        ::pthread_sigmask(SIG_BLOCK, &m_signal, &m_before);
    }
    WithoutSignalForSize(const WithoutSignalForSize&) = delete;
    WithoutSignalForSize& operator=(const WithoutSignalForSize&) = delete;
    ~WithoutSignalForSize()
    {
        const int reason = errno;
        constexpr timespec noTime = {};
        ::sigtimedwait(&m_signal, nullptr, &noTime);
        ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
        errno = reason;
    }

private:
    sigset_t m_signal;
    sigset_t m_before;
};

}
