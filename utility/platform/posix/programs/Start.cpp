#include "utility/platform/posix/programs/Start.h"

#include "utility/platform/formats/CommandLine.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/descriptors/Readable.h"
#include "utility/platform/posix/error/Errno.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
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
    pid_t program = -1;
    int end = -1; ///< a descriptor that tells the awaited program's end
};

/// False, with the reason in errno, if one of them cannot be had.
bool ArrangeStreams(const std::array<int, 3>& streams)
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
    {
        const int wanted = streams[static_cast<std::size_t>(stream)];
        const int file = wanted == ProgramStart::nowhere ? ::open("/dev/null", O_RDWR) : wanted;
        if (wanted != ProgramStart::ofTheHost && ::dup2(file, stream) < 0)
            return false;
    }
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    return true;
}

void ArrangeSignals(bool isFresh, const sigset_t& mask)
{
    // No signal may run a handler here, in the host's memory. A host may ignore the end of its children; a program that
    // has some of its own counts on being told.
    for (int number = 1; number < NSIG; ++number)
    {
        struct sigaction action;
        if (isFresh || number == SIGCHLD ||
            (::sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN))
            ::signal(number, SIG_DFL);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, isFresh ? &none : &mask, nullptr);
}

[[noreturn]] void BecomeProgram(Starting& starting)
{
    const ProgramStart& what = starting.what;
    if (what.group == ProgramStart::own)
        ::setpgid(0, 0);
    else if (what.group == ProgramStart::ofOwnSession)
        ::setsid();
    ArrangeSignals(what.hasFreshSignals, starting.mask);
    if (ArrangeStreams(what.streams) && (what.folder == nullptr || ::chdir(what.folder) == 0))
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
    starting.program = ::vfork();
    if (starting.program == 0)
        BecomeProgram(starting);
    if (starting.program < 0)
        starting.error = errno;
    else if (starting.error == 0 && starting.what.awaited != 0)
    {
        starting.end = static_cast<int>(::syscall(SYS_pidfd_open, starting.program, 0));
        // With no descriptor left, it is this process that waits.
        if (starting.end < 0)
            Uninterrupted([&] { return ::waitpid(starting.program, nullptr, 0); });
    }
    return 0;
}

/// The state of an awaited program, in its time.
ProgramState Await(const Starting& starting)
{
    const ProgramStart& what = starting.what;
    bool hasEnded = WaitUntilReadable(starting.end, what.awaited) == true;
    if (!hasEnded && what.isKilledLate)
    {
        ::kill(-starting.program, SIGKILL);
        hasEnded = WaitUntilReadable(starting.end, ProgramStart::forEver) == true;
    }
    // A host that adopts orphans has it as its child by now.
    if (hasEnded)
        ::waitid(P_PIDFD, static_cast<id_t>(starting.end), nullptr, WEXITED | WNOHANG);
    ::close(starting.end);
    return hasEnded ? ProgramState::ended : ProgramState::running;
}

/// The first file of a name, along the folders of PATH that are asked for, that may be run. Empty, with the reason in
/// errno, if there is none.
std::string AlongPath(const std::string& name, bool (*isAskedFor)(const std::string& folder))
{
    const char* const path = std::getenv("PATH");
    int reason = ENOENT;
    for (std::string_view rest = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin"; !name.empty();)
    {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const std::string folder(rest.substr(0, end));
        std::string file = (folder.empty() ? "." : folder) + '/' + name;
        struct stat status;
        if (isAskedFor(folder) && ::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode))
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

}

ProgramState StartProgram(const ProgramStart& start) noexcept
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
    if (starting.end >= 0)
        return Await(starting);
    errno = starting.error;
    return starting.error != 0  ? ProgramState::notStarted
           : start.awaited != 0 ? ProgramState::ended
                                : ProgramState::running;
}

std::string ProgramFile(const std::string& name)
{
    if (name.find('/') != std::string::npos)
        return name;
    return AlongPath(name, [](const std::string&) { return true; });
}

std::string InstalledProgram(const std::string& name)
{
    return AlongPath(name, [](const std::string& folder) { return folder.starts_with('/'); });
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
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(text.c_str());
    pointers.push_back(nullptr);
    return pointers;
}

}
