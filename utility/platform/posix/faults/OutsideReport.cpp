#include "utility/platform/posix/faults/OutsideReport.h"

#include "utility/platform/Faults.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/faults/ReportedProcess.h"
#include "utility/platform/posix/faults/ReportRequest.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <linux/limits.h>
#include <sched.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace utility::platform
{

namespace
{

// All but FindReportProgram runs within a fault: it takes no lock and allocates nothing. A process in between starts
// the program for reports and waits for it. It shares this one's memory, while the thread that faulted stands still,
// but nothing else: so no descriptor need be free here, no handler of the host is told of a child that is not his, and
// nobody takes away its result.

/// Where the library is; empty if it is in the program itself.
char libraryFile[PATH_MAX];

struct Job
{
    posix::ReportRequest request;
    char program[PATH_MAX + sizeof(posix::reportProgram)];
    bool isDone; ///< there is a report, or there will be none
};

bool FindProgram(char (&program)[sizeof(Job::program)])
{
    std::size_t length = std::strlen(libraryFile);
    std::memcpy(program, libraryFile, length);
    if (length == 0)
    {
        const ssize_t read = ::readlink("/proc/thread-self/exe", program, PATH_MAX);
        if (read <= 0)
            return false;
        length = static_cast<std::size_t>(read);
    }
    const std::size_t folder = std::string_view(program, length).rfind('/');
    if (folder == std::string_view::npos)
        return false;
    std::memcpy(program + folder + 1, posix::reportProgram, sizeof(posix::reportProgram));
    return true;
}

void ResetSignals()
{
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        ::sigaction(signal, &standard, nullptr);
}

/// What was set low for the process that faulted need not do for the one that looks at it.
void RaiseLimits()
{
    for (const auto resource : {RLIMIT_AS, RLIMIT_DATA, RLIMIT_NOFILE, RLIMIT_STACK})
    {
        rlimit limit;
        if (::getrlimit(resource, &limit) != 0)
            continue;
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(resource, &limit);
    }
}

[[noreturn]] void BecomeProgram(const char* program)
{
    // It gives up by itself; if it cannot do even that, the system ends it.
    ::alarm(posix::reportSeconds + 2);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    char name[sizeof(posix::reportProgram)];
    std::memcpy(name, posix::reportProgram, sizeof(name));
    char* const arguments[] = {name, nullptr};
    ::execve(program, arguments, environ);
    // What broke the process may have broken its environment.
    char* const nothing[] = {nullptr};
    ::execve(program, arguments, nothing);
    ::_exit(127);
}

/// Makes the request the standard input of this process, and leaves it no other descriptor of the one that faulted.
/// Gives where to read what is written to the standard output, -1 on failure.
int HandOver(const posix::ReportRequest& request)
{
    if (::close_range(0, ~0U, 0) != 0)
    {
        for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor)
            ::close(descriptor);
    }
    int asked[2];
    int answer[2];
    if (::pipe(asked) != 0 || asked[0] != STDIN_FILENO ||
        ::write(asked[1], &request, sizeof(request)) != static_cast<ssize_t>(sizeof(request)) ||
        ::close(asked[1]) != 0 || ::pipe2(answer, O_NONBLOCK) != 0)
        return -1;
    const int reader = ::fcntl(answer[0], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::dup2(answer[1], STDOUT_FILENO);
    ::close(answer[1]);
    return ::open("/dev/null", O_RDWR) == STDERR_FILENO ? reader : -1;
}

/// Whether the program for reports, which ended so, has done what can be done. What killed it need not be in the way of
/// the process that faulted, which then writes the report itself; unless there is a part of it, or its time is over.
bool IsDone(int status, bool isBegun)
{
    if (WIFEXITED(status))
        return WEXITSTATUS(status) == 0;
    return isBegun || WTERMSIG(status) == SIGALRM;
}

/// The process in between.
int StartAndWait(void* argument)
{
    auto& job = *static_cast<Job*>(argument);
    ResetSignals();
    RaiseLimits();
    const int answer = HandOver(job.request);
    if (answer < 0)
        return 1;
    const pid_t program = ::vfork();
    if (program == 0)
        BecomeProgram(job.program);
    int status = 0;
    if (program > 0 && posix::Uninterrupted([&] { return ::waitpid(program, &status, 0); }) == program)
    {
        char begun = 0;
        job.isDone = IsDone(status, ::read(answer, &begun, sizeof(begun)) == sizeof(begun));
    }
    return 0;
}

}

void posix::FindReportProgram() noexcept
{
    // dladdr would look at each symbol of the library as well.
    dl_find_object library;
    if (::_dl_find_object(libraryFile, &library) != 0)
        return;
    const std::string_view name = library.dlfo_link_map->l_name;
    if (name.starts_with('/') && name.size() < sizeof(libraryFile))
        name.copy(libraryFile, name.size());
    else if (!name.empty() && ::realpath(library.dlfo_link_map->l_name, libraryFile) == nullptr)
        libraryFile[0] = '\0';
}

namespace
{

/// What a report needs. The stack of a handler may be the host's, and too small for it.
struct Room
{
    Job job;
    alignas(16) char stack[4096];
};
constinit Room sharedRoom = {};
constinit std::atomic_flag isSharedRoomTaken;

bool WriteFromOutside(const _EXCEPTION_POINTERS& fault, const void* log, Room& room)
{
    Job& job = room.job;
    job.request = {::gettid(), posix::ReportedThreadInProc(), *fault.ExceptionRecord, *fault.ContextRecord, log};
    job.isDone = false;
    if (!FindProgram(job.program))
        return false;
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    // Where only a process above another one may look into it, ours allows its descendants to.
    ::prctl(PR_SET_PTRACER, ::getpid());
    const pid_t between = ::clone(&StartAndWait, room.stack + sizeof(room.stack), CLONE_VM | CLONE_VFORK, &job);
    if (between > 0)
        posix::Uninterrupted([&] { return ::waitpid(between, nullptr, static_cast<int>(__WCLONE)); });
    ::prctl(PR_SET_PTRACER, 0);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return job.isDone;
}

/// Of a thread that crashes while another one's report is written.
[[gnu::noinline]] bool WriteFromOutsideWithOwnRoom(const _EXCEPTION_POINTERS& fault, const void* log)
{
    Room room;
    return WriteFromOutside(fault, log, room);
}

}

bool ReportFromOutside(const _EXCEPTION_POINTERS& fault, const void* log) noexcept
{
    const bool isShared = !isSharedRoomTaken.test_and_set();
    const bool isWritten =
        isShared ? WriteFromOutside(fault, log, sharedRoom) : WriteFromOutsideWithOwnRoom(fault, log);
    if (isShared)
        isSharedRoomTaken.clear();
    if (!isWritten)
        posix::LimitReport();
    return isWritten;
}

}
