#include "utility/platform/Desktop.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace utility::platform
{

namespace
{

thread_local bool answeredWithControl = false;

/// The terminal of the process.
class Terminal
{
public:
    Terminal() : m_file(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {}
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal()
    {
        if (m_file >= 0)
            ::close(m_file);
    }

    /// A process in the background is stopped when it reads from its terminal, so it had better not ask there.
    bool IsOurs() const { return m_file >= 0 && ::tcgetpgrp(m_file) == ::getpgrp(); }

    BoxAnswer Ask(const char* title, const char* text) const
    {
        for (;;)
        {
            // What was typed before the question is no answer to it.
            ::tcflush(m_file, TCIFLUSH);
            for (const char* const part :
                 {"\n", title, "\n\n", text, "\n[a]bort, [R]etry, [i]gnore, Ctrl+I to ignore from now on: "})
            {
                if (::write(m_file, part, std::strlen(part)) < 0)
                    return BoxAnswer::ignore;
            }
            switch (FirstOfLine())
            {
            case 'a':
            case 'A':
                return BoxAnswer::abort;
            case '\n':
            case '\r':
            case 'r':
            case 'R':
                return BoxAnswer::retry;
            case controlI:
                answeredWithControl = true;
                return BoxAnswer::ignore;
            case 'i':
            case 'I':
            case endOfInput:
                return BoxAnswer::ignore;
            default:
                break;
            }
        }
    }

private:
    static constexpr char controlI = 'I' - '@';
    static constexpr char endOfInput = '\0';

    char FirstOfLine() const
    {
        char line[256];
        ssize_t size = 0;
        do
            size = ::read(m_file, line, sizeof(line));
        while (size < 0 && errno == EINTR);
        return size > 0 ? line[0] : endOfInput;
    }

    int m_file;
};

bool HasDisplay()
{
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY"})
    {
        const char* const value = std::getenv(name);
        if (value != nullptr && *value != '\0')
            return true;
    }
    return false;
}

struct Finished
{
    int status;
    std::string output;
};

/// Runs a program, of which the first argument is the name and the last is null, to its end. No value if there is no such
/// program.
std::optional<Finished> Run(const char* const* arguments)
{
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0)
        return std::nullopt;
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
    pid_t process = 0;
    const bool runs =
        ::posix_spawnp(&process, arguments[0], &actions, nullptr, const_cast<char* const*>(arguments), environ) == 0;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(pipe[1]);
    Finished finished{-1, {}};
    if (runs)
    {
        char bytes[64];
        for (ssize_t size = 0; (size = ::read(pipe[0], bytes, sizeof(bytes))) > 0;)
            finished.output.append(bytes, static_cast<std::size_t>(size));
        while (::waitpid(process, &finished.status, 0) < 0 && errno == EINTR)
            continue;
    }
    ::close(pipe[0]);
    return runs ? std::optional(std::move(finished)) : std::nullopt;
}

BoxAnswer AskByDialogProgram(const char* title, const char* text)
{
    // Its first button has the focus, and is the one to be pressed by mistake.
    const char* const zenity[] = {
        "zenity",         "--question", "--switch",       "--no-markup", "--title",        title,   "--text", text,
        "--extra-button", "Ignore",     "--extra-button", "Retry",       "--extra-button", "Abort", nullptr};
    const char* const kdialog[] = {"kdialog", "--title",        title,    "--yes-label",          "Abort", "--no-label",
                                   "Retry",   "--cancel-label", "Ignore", "--warningyesnocancel", text,    nullptr};
    if (const auto finished = Run(zenity))
        return finished->output == "Abort\n"   ? BoxAnswer::abort
               : finished->output == "Retry\n" ? BoxAnswer::retry
                                               : BoxAnswer::ignore;
    if (const auto finished = Run(kdialog); finished && WIFEXITED(finished->status))
        return WEXITSTATUS(finished->status) == 0   ? BoxAnswer::abort
               : WEXITSTATUS(finished->status) == 1 ? BoxAnswer::retry
                                                    : BoxAnswer::ignore;
    return BoxAnswer::ignore;
}

class PosixDesktop final : public DesktopService
{
public:
    std::optional<int> TakeQuitMessage() override { return std::nullopt; }

    void PostQuitMessage(int) override {}

    bool IsControlKeyDown() override { return std::exchange(answeredWithControl, false); }

    BoxAnswer AskAbortRetryIgnore(const char* title, const char* text) override
    {
        answeredWithControl = false;
        const Terminal terminal;
        if (terminal.IsOurs())
            return terminal.Ask(title, text);
        return HasDisplay() ? AskByDialogProgram(title, text) : BoxAnswer::ignore;
    }

    bool ProgramPath(char (&path)[pathSize]) override
    {
        const ssize_t length = ::readlink("/proc/self/exe", path, pathSize - 1);
        if (length < 0)
            return false;
        path[length] = '\0';
        return true;
    }
};

}

ServiceSlot<DesktopService>& DesktopSlot() noexcept
{
    static PosixDesktop system;
    static ServiceSlot<DesktopService> slot(system);
    return slot;
}

}
