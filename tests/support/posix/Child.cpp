#include "tests/support/posix/Child.h"

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace support
{

Child::Child(const std::function<int()>& work, Terminal terminal)
{
    m_process = terminal == Terminal::none ? ::fork() : ::forkpty(&m_terminal, nullptr, nullptr, nullptr);
    if (m_process != 0)
        return;
    if (terminal == Terminal::none)
        ::setsid();
    if (terminal == Terminal::background)
    {
        // The copy of the copy is no leader of the session, so it can leave the foreground.
        const pid_t member = ::fork();
        if (member != 0)
        {
            int status = 0;
            ::waitpid(member, &status, 0);
            ::_exit(WIFEXITED(status) ? WEXITSTATUS(status) : 255);
        }
        ::setpgid(0, 0);
    }
    ::_exit(work());
}

Child::~Child()
{
    HangUp();
    Status();
}

std::string Child::ReadUntil(std::string_view end) const
{
    std::string text;
    while (text.find(end) == std::string::npos)
    {
        pollfd waiting{m_terminal, POLLIN, 0};
        char byte = 0;
        // What is wrong takes longer than this; what is right does not.
        if (::poll(&waiting, 1, 100000) <= 0 || ::read(m_terminal, &byte, 1) != 1)
            break;
        text += byte;
    }
    return text;
}

void Child::Type(std::string_view keys) const
{
    [[maybe_unused]] const ssize_t typed = ::write(m_terminal, keys.data(), keys.size());
}

void Child::HangUp()
{
    if (m_terminal >= 0)
        ::close(std::exchange(m_terminal, -1));
}

int Child::ExitCode()
{
    const int status = Status();
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int Child::Signal()
{
    const int status = Status();
    return WIFSIGNALED(status) ? WTERMSIG(status) : -1;
}

int Child::Status()
{
    if (m_process > 0)
    {
        ::waitpid(m_process, &m_status, 0);
        m_process = -1;
    }
    return m_status;
}

}
