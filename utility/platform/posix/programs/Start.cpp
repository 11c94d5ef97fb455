#include "utility/platform/posix/programs/Start.h"

#include "utility/platform/formats/CommandLine.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/error/Errno.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

// A process in between starts the program, and ends: so the program is nobody's child that has to be collected, and the
// host, whose children it would otherwise be among, is told of neither. It shares this process's memory and
// descriptors, while the calling thread stands still.

struct Starting
{
    const ProgramStart& what;
    sigset_t mask;          ///< of the calling thread
    volatile int error = 0; ///< the new process sets it, in this memory
    int process = -1;       ///< a descriptor of the awaited program
};

void LeaveOnly(int input)
{
    if (input < 0)
        return;
    ::dup2(input, STDIN_FILENO);
    static_cast<void>(!::chdir("/"));
    const int nowhere = ::open("/dev/null", O_RDWR);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
}

/// No signal may run one here, in the host's memory.
void ForgetHandlers()
{
    // A host may ignore the end of its children; a program that has some of its own counts on being told.
    ::signal(SIGCHLD, SIG_DFL);
    for (int number = 1; number < NSIG; ++number)
    {
        struct sigaction action;
        if (::sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            ::signal(number, SIG_DFL);
    }
}

[[noreturn]] void BecomeProgram(Starting& starting)
{
    const ProgramStart& what = starting.what;
    if (what.hasOwnGroup)
        ::setpgid(0, 0);
    LeaveOnly(what.input);
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    ForgetHandlers();
    ::sigprocmask(SIG_SETMASK, &starting.mask, nullptr);
    ::execve(what.program, const_cast<char* const*>(what.arguments), environ);
    starting.error = errno;
    ::_exit(127);
}

/// The process in between.
int StartAndEnd(void* argument)
{
    auto& starting = *static_cast<Starting*>(argument);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::signal(SIGCHLD, SIG_DFL);
    const pid_t program = ::vfork();
    if (program == 0)
        BecomeProgram(starting);
    if (program < 0)
        starting.error = errno;
    else if (starting.error == 0 && starting.what.isAwaited)
    {
        starting.process = static_cast<int>(::syscall(SYS_pidfd_open, program, 0));
        // With no descriptor left, it is this process that waits.
        if (starting.process < 0)
            Uninterrupted([&] { return ::waitpid(program, nullptr, 0); });
    }
    return 0;
}

void WaitFor(int process)
{
    pollfd end = {process, POLLIN, 0};
    Uninterrupted([&] { return ::poll(&end, 1, -1); });
    // A host that adopts orphans has it as its child by now.
    ::waitid(P_PIDFD, static_cast<id_t>(process), nullptr, WEXITED | WNOHANG);
    ::close(process);
}

}

bool StartProgram(const ProgramStart& start) noexcept
{
    Starting starting = {start, {}};
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &starting.mask);
    alignas(16) char stack[16384];
    const pid_t between = ::clone(&StartAndEnd, stack + sizeof(stack), CLONE_VM | CLONE_VFORK | CLONE_FILES, &starting);
    if (between < 0)
        starting.error = errno;
    else
        Uninterrupted([&] { return ::waitpid(between, nullptr, static_cast<int>(__WCLONE)); });
    ::pthread_sigmask(SIG_SETMASK, &starting.mask, nullptr);
    if (starting.process >= 0)
        WaitFor(starting.process);
    errno = starting.error;
    return starting.error == 0;
}

std::string ProgramFile(const std::string& name)
{
    if (name.find('/') != std::string::npos)
        return name;
    const char* const path = std::getenv("PATH");
    int reason = ENOENT;
    for (std::string_view rest = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin"; !name.empty();)
    {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const std::string folder(rest.substr(0, end));
        const std::string file = (folder.empty() ? "." : folder) + '/' + name;
        struct stat status;
        if (::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode))
        {
            if (::access(file.c_str(), X_OK) == 0)
                return file;
            reason = errno;
        }
        if (end == rest.size())
            break;
        rest.remove_prefix(end + 1);
    }
    errno = reason;
    return {};
}

std::vector<std::string> ArgumentsOf(std::wstring_view commandLine)
{
    std::vector<std::string> arguments;
    for (const std::wstring& argument : formats::SplitCommandLine(commandLine))
        arguments.push_back(PathFromWide(argument).native());
    return arguments;
}

std::vector<const char*> PointersTo(const std::vector<std::string>& texts)
{
    std::vector<const char*> pointers;
    for (const std::string& text : texts)
        pointers.push_back(text.c_str());
    pointers.push_back(nullptr);
    return pointers;
}

}
