// A program that has a report written from outside, in the state that its argument tells, and then says what it sees.

#include "utility/platform/Faults.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

volatile sig_atomic_t children = 0;

int OpenDescriptors()
{
    int open = 0;
    for (int descriptor = 0; descriptor < 200; ++descriptor)
        open += ::fcntl(descriptor, F_GETFD) != -1;
    return open;
}

}

int main(int argumentCount, char** arguments)
{
    const std::string_view state = argumentCount > 1 ? arguments[1] : "";
    ::signal(SIGCHLD, [](int) { children = children + 1; });
    rlimit limit = {100, 100};
    if (state == "no descriptor")
    {
        ::setrlimit(RLIMIT_NOFILE, &limit);
        while (::dup(STDOUT_FILENO) >= 0)
            continue;
    }
    else if (state == "low limit")
    {
        ::getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = STDERR_FILENO + 1;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    else if (state == "closed streams")
    {
        ::dup2(STDOUT_FILENO, 10);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::close(stream);
    }
    else if (state == "little memory")
    {
        limit = {64 * 1024 * 1024, RLIM_INFINITY};
        ::setrlimit(RLIMIT_AS, &limit);
    }
    else if (state == "broken environment")
    {
        static char* broken[] = {reinterpret_cast<char*>(8), nullptr};
        environ = broken;
    }
    else if (state == "ignored children")
    {
        ::signal(SIGCHLD, SIG_IGN);
    }
    else if (state == "blocked signals")
    {
        sigset_t all;
        ::sigfillset(&all);
        ::sigprocmask(SIG_SETMASK, &all, nullptr);
    }
    const int before = OpenDescriptors();
    _EXCEPTION_RECORD record = {};
    record.ExceptionCode = 0xC0000094;
    _CONTEXT context = {};
    context.Rip = 0x1234;
    const _EXCEPTION_POINTERS fault = {&record, &context};
    const bool isDone = utility::platform::ReportFromOutside(fault, &record);
    char line[100];
    const int length = std::snprintf(line, sizeof(line), "done %d told of children %d left %d descriptors %d\n", isDone,
                                     static_cast<int>(children), ::waitpid(-1, nullptr, WNOHANG | __WALL) >= 0,
                                     OpenDescriptors() - before);
    return ::write(state == "closed streams" ? 10 : STDOUT_FILENO, line, static_cast<std::size_t>(length)) != length;
}
