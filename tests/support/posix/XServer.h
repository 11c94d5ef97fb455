#pragma once

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace support
{

/// An X server without a screen, for its lifetime, where the machine has Xvfb.
class XServer
{
public:
    XServer()
    {
        int pipe[2];
        if (::access("/usr/bin/Xvfb", X_OK) != 0 || ::pipe2(pipe, O_CLOEXEC) != 0)
            return;
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, pipe[1], 1);
        ::posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        // Without a reset it keeps what a client has done when that goes.
        const char* const arguments[] = {"Xvfb", "-noreset",   "-displayfd", "1",   "-screen",
                                         "0",    "320x200x24", "-nolisten",  "tcp", nullptr};
        if (::posix_spawn(&m_process, "/usr/bin/Xvfb", &actions, nullptr, const_cast<char* const*>(arguments),
                          environ) != 0)
            m_process = -1;
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(pipe[1]);
        // It tells its number when it is ready.
        char c = 0;
        for (pollfd ready{pipe[0], POLLIN, 0};
             ::poll(&ready, 1, 100000) > 0 && ::read(pipe[0], &c, 1) == 1 && c != '\n';)
            m_display += c;
        ::close(pipe[0]);
    }
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;
    ~XServer() { End(); }

    bool IsThere() const { return m_process > 0 && m_display.size() > 1; }
    const std::string& Display() const { return m_display; }

    void End()
    {
        if (m_process <= 0)
            return;
        ::kill(m_process, SIGTERM);
        ::waitpid(m_process, nullptr, 0);
        m_process = -1;
    }

private:
    pid_t m_process = -1;
    std::string m_display = ":";
};

/// What a command of the shell writes.
inline std::string OutputOfShell(const std::string& command)
{
    std::string output;
    if (std::FILE* const stream = ::popen(command.c_str(), "r"))
    {
        char bytes[256];
        for (std::size_t size = 0; (size = std::fread(bytes, 1, sizeof(bytes), stream)) > 0;)
            output.append(bytes, size);
        ::pclose(stream);
    }
    return output;
}

}
