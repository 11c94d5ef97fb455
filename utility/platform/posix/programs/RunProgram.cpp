#include "utility/platform/posix/programs/RunProgram.h"

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/handles/Descriptor.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace utility::platform::posix
{

namespace
{

using Clock = std::chrono::steady_clock;

/// The process that runs a program; no value if it could not be started. What it writes goes to `output`.
std::optional<pid_t> Start(const char* const* arguments, const RunBy& by, int output)
{
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    // A host may ignore the end of its children, or a broken pipe; a program that has some of its own counts on being
    // told.
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    sigset_t told;
    ::sigemptyset(&told);
    ::posix_spawnattr_setsigmask(&attributes, &told);
    ::sigaddset(&told, SIGCHLD);
    ::sigaddset(&told, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&attributes, &told);
    // To be killed with all it has started, it has a group of its own.
    const int group = by.atMost.count() != 0 ? POSIX_SPAWN_SETPGROUP : 0;
    ::posix_spawnattr_setflags(&attributes, static_cast<short>(POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | group));
    pid_t process = 0;
    const bool runs = ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO) == 0 &&
                      (by.input < 0 || ::posix_spawn_file_actions_adddup2(&actions, by.input, STDIN_FILENO) == 0) &&
                      ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1) == 0 &&
                      ::posix_spawnp(&process, arguments[0], &actions, &attributes, const_cast<char* const*>(arguments),
                                     environ) == 0;
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return runs ? std::optional(process) : std::nullopt;
}

/// Whether there is something to be read, or the end of it, ahead of a moment.
bool Wait(int file, const RunBy& by, Clock::time_point end)
{
    const auto poll = [&]
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd waiting{file, POLLIN, 0};
        return ::poll(&waiting, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
    };
    return by.atMost.count() == 0 || Uninterrupted(poll) > 0;
}

}

std::optional<std::string> OutputOf(const char* const* arguments, const RunBy& by)
{
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0)
        return std::nullopt;
    for (int& end : pipe)
        end = AboveStandardStreams(end);
    const auto process = Start(arguments, by, pipe[1]);
    ::close(pipe[1]);
    std::string output;
    bool isInTime = true;
    if (process)
    {
        const auto end = Clock::now() + by.atMost;
        char bytes[64];
        const auto read = [&] { return ::read(pipe[0], bytes, sizeof(bytes)); };
        for (ssize_t size = 0; (isInTime = Wait(pipe[0], by, end)) && (size = Uninterrupted(read)) > 0;)
            output.append(bytes, static_cast<std::size_t>(size));
        if (!isInTime)
            ::kill(-*process, SIGKILL);
        // There is no status to be had where the host ignores the end of its children.
        Uninterrupted([&] { return ::waitpid(*process, nullptr, 0); });
    }
    ::close(pipe[0]);
    return process && isInTime ? std::optional(std::move(output)) : std::nullopt;
}

std::optional<int> ExitCodeOf(std::initializer_list<const char*> program, const RunBy& by)
{
    // It is the shell that tells the code, and nothing where there is no such program.
    std::vector<const char*> arguments = {
        "/bin/sh", "-c", "command -v \"$1\" >/dev/null || exit; \"$@\" >/dev/null 2>&1; echo $?", "sh"};
    arguments.insert(arguments.end(), program);
    arguments.push_back(nullptr);
    const auto output = OutputOf(arguments.data(), by);
    return output && !output->empty() ? std::optional(std::atoi(output->c_str())) : std::nullopt;
}

}
