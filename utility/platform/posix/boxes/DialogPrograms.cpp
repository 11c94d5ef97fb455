#include "utility/platform/posix/boxes/DialogPrograms.h"

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/handles/Descriptor.h"

#include <csignal>
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

/// What a program writes until its end; the first argument is its name and the last is null. No value if there is no
/// such program.
std::optional<std::string> Run(const char* const* arguments)
{
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0)
        return std::nullopt;
    for (int& end : pipe)
        end = AboveStandardStreams(end);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    // A host may ignore the end of its children; a program that has some of its own counts on being told.
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    sigset_t told;
    ::sigemptyset(&told);
    ::sigaddset(&told, SIGCHLD);
    ::posix_spawnattr_setsigdefault(&attributes, &told);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t process = 0;
    const bool runs = ::posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO) == 0 &&
                      ::posix_spawnp(&process, arguments[0], &actions, &attributes, const_cast<char* const*>(arguments),
                                     environ) == 0;
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(pipe[1]);
    std::string output;
    if (runs)
    {
        char bytes[64];
        const auto read = [&] { return ::read(pipe[0], bytes, sizeof(bytes)); };
        for (ssize_t size = 0; (size = Uninterrupted(read)) > 0;)
            output.append(bytes, static_cast<std::size_t>(size));
        // There is no status to be had where the host ignores the end of its children.
        Uninterrupted([&] { return ::waitpid(process, nullptr, 0); });
    }
    ::close(pipe[0]);
    return runs ? std::optional(std::move(output)) : std::nullopt;
}

std::optional<BoxAnswer> AnswerOf(const std::string& output, const char* abort, const char* retry, const char* ignore)
{
    return output == abort    ? std::optional(BoxAnswer::abort)
           : output == retry  ? std::optional(BoxAnswer::retry)
           : output == ignore ? std::optional(BoxAnswer::ignore)
                              : std::nullopt;
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

std::optional<BoxAnswer> AskByDialogProgram(const char* title, const char* text)
{
    // Its first button has the focus, and is the one to be pressed by mistake.
    const char* const zenity[] = {
        "zenity",         "--question", "--switch",       "--no-markup", "--title",        title,   "--text", text,
        "--extra-button", "Ignore",     "--extra-button", "Retry",       "--extra-button", "Abort", nullptr};
    // Its answer is its exit code, which the shell writes.
    const char* const kdialog[] = {"/bin/sh",
                                   "-c",
                                   "kdialog \"$@\"; echo $?",
                                   "sh",
                                   "--title",
                                   title,
                                   "--yes-label",
                                   "Abort",
                                   "--no-label",
                                   "Retry",
                                   "--cancel-label",
                                   "Ignore",
                                   "--warningyesnocancel",
                                   text,
                                   nullptr};
    if (const auto output = Run(zenity))
        return AnswerOf(*output, "Abort\n", "Retry\n", "Ignore\n");
    if (const auto output = Run(kdialog))
        return AnswerOf(*output, "0\n", "1\n", "2\n");
    return std::nullopt;
}

bool ShowByDialogProgram(const char* title, const char* text, UINT style)
{
    struct Kind
    {
        const char* zenity;
        const char* kdialog;
    };
    constexpr UINT signs = 0xF0;
    const Kind kind = (style & signs) == 0x10   ? Kind{"--error", "--error"}
                      : (style & signs) == 0x30 ? Kind{"--warning", "--sorry"}
                                                : Kind{"--info", "--msgbox"};
    // Nothing is written where there is no such program. A box that could not be shown ends with another code than 0.
    const char* const script = "command -v \"$1\" >/dev/null || exit; \"$@\" >&2; echo $?";
    const char* const zenity[] = {"/bin/sh",     "-c",      script, "sh",     "zenity", kind.zenity,
                                  "--no-markup", "--title", title,  "--text", text,     nullptr};
    const char* const kdialog[] = {"/bin/sh", "-c",  script,       "sh", "kdialog",
                                   "--title", title, kind.kdialog, text, nullptr};
    for (const char* const* program : {zenity, kdialog})
    {
        if (const auto output = Run(program); output && !output->empty())
            return *output == "0\n";
    }
    return false;
}

}
