#include "utility/platform/posix/boxes/DialogPrograms.h"

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/handles/Descriptor.h"

#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace utility::platform::posix
{

namespace
{

struct Finished
{
    int status;
    std::string output;
};

/// Runs a program, of which the first argument is the name and the last is null, to its end. No value if there is no
/// such program.
std::optional<Finished> Run(const char* const* arguments)
{
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0)
        return std::nullopt;
    for (int& end : pipe)
        end = AboveStandardStreams(end);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    pid_t process = 0;
    const bool runs =
        ::posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO) == 0 &&
        ::posix_spawnp(&process, arguments[0], &actions, nullptr, const_cast<char* const*>(arguments), environ) == 0;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(pipe[1]);
    Finished finished{-1, {}};
    if (runs)
    {
        char bytes[64];
        const auto read = [&] { return ::read(pipe[0], bytes, sizeof(bytes)); };
        for (ssize_t size = 0; (size = Uninterrupted(read)) > 0;)
            finished.output.append(bytes, static_cast<std::size_t>(size));
        Uninterrupted([&] { return ::waitpid(process, &finished.status, 0); });
    }
    ::close(pipe[0]);
    return runs ? std::optional(std::move(finished)) : std::nullopt;
}

}

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

}
