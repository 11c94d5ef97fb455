#include "utility/platform/posix/mail/StartedProgram.h"

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/handles/Descriptor.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

// A process in between is the program's parent, and ends when the program is no longer waited for: who runs on is then
// a child of the system's first process. It shares this process's memory, while the thread that started it stands
// still, and nothing else; the host's handlers are not told of it, nor does a wait of the host's find it. It takes no
// lock and allocates nothing.

struct Job
{
    const char* program;
    char* const* arguments;
    int output; ///< where the program's output goes, -1 for nowhere
    int milliseconds;
    bool isEndedLate; ///< the program, when its time is over
    bool hasStarted = false;
    ProgramState state = {};
};

bool ArrangeDescriptors(int output)
{
    const int nowhere = ::open("/dev/null", O_RDWR);
    if (nowhere < 0 || ::dup2(nowhere, STDIN_FILENO) < 0 || ::dup2(nowhere, STDERR_FILENO) < 0 ||
        ::dup2(output < 0 ? nowhere : output, STDOUT_FILENO) < 0)
        return false;
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    return true;
}

/// Whether a child of this process has ended in time; all signals are blocked.
bool AwaitChild(int milliseconds)
{
    timespec now;
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const long long end = now.tv_sec * 1000LL + now.tv_nsec / 1000000 + milliseconds;
    sigset_t child;
    ::sigemptyset(&child);
    ::sigaddset(&child, SIGCHLD);
    for (;;)
    {
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        const long long left = end - (now.tv_sec * 1000LL + now.tv_nsec / 1000000);
        if (left <= 0)
            return false;
        const timespec wait = {static_cast<std::time_t>(left / 1000), static_cast<long>(left % 1000 * 1000000)};
        if (::sigtimedwait(&child, nullptr, &wait) == SIGCHLD)
            return true;
    }
}

/// The process in between.
int StartAndWait(void* argument)
{
    auto& job = *static_cast<Job*>(argument);
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        ::sigaction(signal, &standard, nullptr);
    if (!ArrangeDescriptors(job.output))
        return 1;
    volatile bool isRefused = false;
    const pid_t program = ::vfork();
    if (program == 0)
    {
        ::setsid();
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::execve(job.program, job.arguments, environ);
        isRefused = true;
        ::_exit(127);
    }
    job.hasStarted = program > 0 && !isRefused;
    if (!job.hasStarted)
        return 1;
    job.state.isRunning = !AwaitChild(job.milliseconds);
    if (job.state.isRunning)
    {
        if (job.isEndedLate)
            ::kill(-program, SIGKILL);
        return 0;
    }
    int status = 0;
    job.state.hasSucceeded = ::waitpid(program, &status, 0) == program && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return 0;
}

std::optional<ProgramState> Run(const std::vector<std::string>& arguments, int milliseconds, int output,
                                bool isEndedLate)
{
    std::vector<char*> pointers;
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    Job job = {pointers[0], pointers.data(), output, milliseconds, isEndedLate};
    alignas(16) char stack[32 * 1024];
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t between = ::clone(&StartAndWait, stack + sizeof(stack), CLONE_VM | CLONE_VFORK, &job);
    if (between > 0)
        Uninterrupted([&] { return ::waitpid(between, nullptr, static_cast<int>(__WCLONE)); });
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return job.hasStarted ? std::optional(job.state) : std::nullopt;
}

}

std::string FindProgram(const char* name)
{
    const char* const path = std::getenv("PATH");
    std::vector<std::string> folders;
    boost::algorithm::split(folders, path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin", boost::is_any_of(":"));
    for (const std::string& folder : folders)
    {
        if (!folder.starts_with('/'))
            continue;
        std::string file = folder + '/' + name;
        struct stat status;
        if (::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(file.c_str(), X_OK) == 0)
            return file;
    }
    return {};
}

std::optional<ProgramState> StartProgram(const std::vector<std::string>& arguments, int milliseconds)
{
    return Run(arguments, milliseconds, -1, false);
}

std::string OutputOf(const std::vector<std::string>& arguments, int milliseconds)
{
    const int output = AboveStandardStreams(::memfd_create("output", MFD_CLOEXEC));
    if (output < 0)
        return {};
    std::string text;
    const auto state = Run(arguments, milliseconds, output, true);
    if (state && state->hasSucceeded)
    {
        text.resize(4096);
        const ssize_t size = ::pread(output, text.data(), text.size(), 0);
        text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    ::close(output);
    return text;
}

}
