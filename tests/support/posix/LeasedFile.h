#pragma once

#include "tests/support/posix/Child.h"

#include <boost/filesystem/path.hpp>

#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace support
{

/// A file that another process holds a lease on until somebody opens it.
class LeasedFile
{
public:
    explicit LeasedFile(const boost::filesystem::path& file) : m_holder([&] { return Hold(file); })
    {
        ::close(m_ends[1]);
        char word = 0;
        [[maybe_unused]] const ssize_t isLeased = ::read(m_ends[0], &word, 1);
        ::close(m_ends[0]);
    }
    LeasedFile(const LeasedFile&) = delete;
    LeasedFile& operator=(const LeasedFile&) = delete;

    /// Whether it was leased, and has been opened.
    bool WasGivenUp() { return m_holder.ExitCode() == 0; }

private:
    int Hold(const boost::filesystem::path& path)
    {
        sigset_t breaks;
        ::sigemptyset(&breaks);
        ::sigaddset(&breaks, SIGIO);
        ::sigprocmask(SIG_BLOCK, &breaks, nullptr);
        const int file = ::open(path.c_str(), O_RDWR);
        const bool hasLease = ::fcntl(file, F_SETLEASE, F_WRLCK) == 0;
        [[maybe_unused]] const ssize_t told = ::write(m_ends[1], "x", 1);
        if (!hasLease)
            return 1;
        const timespec wait = {100, 0};
        const bool isWanted = ::sigtimedwait(&breaks, nullptr, &wait) == SIGIO;
        ::usleep(50000);
        return ::fcntl(file, F_SETLEASE, F_UNLCK) == 0 && isWanted ? 0 : 1;
    }

    int m_ends[2];
    const bool m_hasEnds = ::pipe(m_ends) == 0;
    Child m_holder;
};

}
