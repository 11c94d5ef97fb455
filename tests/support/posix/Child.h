#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace support
{

/// A copy of this process that does some work and ends with what the work returns.
class Child
{
public:
    enum class Terminal
    {
        none,       ///< a session without one
        foreground, ///< one of its own
        background, ///< one whose foreground is another process group
    };

    explicit Child(const std::function<int()>& work, Terminal terminal = Terminal::none);
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child();

    /// What the child wrote to its terminal, up to and with `end`; all of it if that never comes.
    std::string ReadUntil(std::string_view end) const;
    /// Types on the child's terminal.
    void Type(std::string_view keys) const;
    /// Takes the terminal away from the child.
    void HangUp();

    /// Waits for the end. -1 if it was not of that kind.
    int ExitCode();
    int Signal();

private:
    int Status();

    pid_t m_process;
    int m_terminal = -1;
    int m_status = 0;
};

}
