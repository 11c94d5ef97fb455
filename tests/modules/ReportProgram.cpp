// Stands beside Reporting for the program that writes reports, and tells in the file "told" beside it what it was
// given.

#include "utility/platform/posix/faults/ReportRequest.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/uio.h>
#include <unistd.h>

int main()
{
    int descriptors = 0;
    for (int descriptor = 0; descriptor < 200; ++descriptor)
        descriptors += ::fcntl(descriptor, F_GETFD) != -1;
    utility::platform::posix::ReportRequest request;
    const bool isWhole = ::read(STDIN_FILENO, &request, sizeof(request)) == sizeof(request);
    char rest = 0;
    const bool isEnd = ::read(STDIN_FILENO, &rest, 1) == 0;
    DWORD code = 0;
    const iovec here = {&code, sizeof(code)};
    const iovec there = {const_cast<void*>(request.log), sizeof(code)};
    const bool isReadable = ::process_vm_readv(request.thread, &here, 1, &there, 1, 0) == sizeof(code);
    sigset_t blocked;
    ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
    struct sigaction child;
    ::sigaction(SIGCHLD, nullptr, &child);
    rlimit memory;
    ::getrlimit(RLIMIT_AS, &memory);

    std::string path(4096, '\0');
    path.resize(static_cast<std::size_t>(::readlink("/proc/self/exe", path.data(), path.size())));
    std::FILE* const told = std::fopen((path.substr(0, path.rfind('/')) + "/told").c_str(), "w");
    std::fprintf(told,
                 "whole %d end %d descriptors %d code %x at %llx readable %d same %d parent %d blocked %d default %d "
                 "unlimited %d home %d\n",
                 isWhole, isEnd, descriptors, static_cast<unsigned>(request.record.ExceptionCode),
                 static_cast<unsigned long long>(request.context.Rip), isReadable, code == request.record.ExceptionCode,
                 ::getppid() == request.thread, ::sigismember(&blocked, SIGTERM) | ::sigismember(&blocked, SIGSEGV),
                 child.sa_handler == SIG_DFL, memory.rlim_cur == RLIM_INFINITY, std::getenv("HOME") != nullptr);
    std::fclose(told);
    const char* const end = std::getenv("REPORT_PROGRAM_END");
    if (end == nullptr)
        return 0;
    if (*end == 'b')
        static_cast<void>(::write(STDOUT_FILENO, "", 1));
    if (*end == 'b' || *end == 'k')
        ::raise(SIGKILL);
    if (*end == 'l')
        ::raise(SIGALRM);
    return std::atoi(end);
}
