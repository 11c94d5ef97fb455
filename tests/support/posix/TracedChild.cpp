#include "tests/support/posix/TracedChild.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <iterator>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support
{

namespace
{

std::string Read(pid_t process, std::uint64_t address, std::size_t size)
{
    std::string bytes(size, '\0');
    const iovec here{bytes.data(), size};
    const iovec there{reinterpret_cast<void*>(address), size};
    const ssize_t count = ::process_vm_readv(process, &here, 1, &there, 1, 0);
    bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return bytes;
}

std::string ReadPath(pid_t process, std::uint64_t address)
{
    // Memory may end behind the page that a path ends in.
    constexpr std::size_t page = 4096;
    std::string path = Read(process, address, page - address % page);
    if (path.find('\0') == path.npos)
        path += Read(process, address + path.size(), page);
    return path.c_str();
}

SystemCall CallAtEntry(pid_t process, const user_regs_struct& registers)
{
    SystemCall call;
    call.number = static_cast<long>(registers.orig_rax);
    const std::uint64_t arguments[] = {registers.rdi, registers.rsi, registers.rdx,
                                       registers.r10, registers.r8,  registers.r9};
    std::copy(std::begin(arguments), std::end(arguments), call.arguments);
    switch (call.number)
    {
    case SYS_open:
    case SYS_unlink:
        call.path = ReadPath(process, arguments[0]);
        break;
    case SYS_openat:
    case SYS_unlinkat:
        call.path = ReadPath(process, arguments[1]);
        break;
    case SYS_link:
    case SYS_rename:
        call.path = ReadPath(process, arguments[0]);
        call.otherPath = ReadPath(process, arguments[1]);
        break;
    case SYS_linkat:
    case SYS_renameat:
    case SYS_renameat2:
        call.path = ReadPath(process, arguments[1]);
        call.otherPath = ReadPath(process, arguments[3]);
        break;
    case SYS_write:
    case SYS_pwrite64:
        call.bytes = Read(process, arguments[1], arguments[2]);
        break;
    default:
        break;
    }
    return call;
}

bool OpensToWrite(const SystemCall& call)
{
    const std::uint64_t flags = call.arguments[call.number == SYS_open ? 1 : 2];
    return (call.number == SYS_open || call.number == SYS_openat) && (flags & O_ACCMODE) != O_RDONLY;
}

bool IsAboutMemory(const SystemCall& call)
{
    constexpr long numbers[] = {SYS_mmap, SYS_munmap, SYS_mremap, SYS_madvise, SYS_mprotect, SYS_brk, SYS_futex};
    return std::ranges::find(numbers, call.number) != std::end(numbers);
}

}

TracedChild::TracedChild(const std::function<int()>& work, const Intrusion& intrusion)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // Their runtimes make calls of their own, which are neither to be counted nor to fail.
    obstacle = "The build lacks a trace of the tests alone: its sanitizer makes calls too";
    return;
#endif
    constexpr int notAllowed = 98;
    const pid_t process = ::fork();
    if (process == 0)
    {
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            ::_exit(notAllowed);
        ::raise(SIGSTOP);
        ::_exit(work());
    }
    constexpr int callStop = SIGTRAP | 0x80;
    int status = 0;
    ::waitpid(process, &status, 0);
    ::ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    bool isEntry = true;
    bool isLookedAt = false;
    int signal = 0;
    using Kind = Intrusion::Kind;
    while (!WIFEXITED(status) && !WIFSIGNALED(status))
    {
        ::ptrace(PTRACE_SYSCALL, process, nullptr, signal);
        ::waitpid(process, &status, 0);
        signal = WIFSTOPPED(status) && WSTOPSIG(status) != callStop ? WSTOPSIG(status) : 0;
        if (!WIFSTOPPED(status) || signal != 0)
            continue;
        user_regs_struct registers;
        ::ptrace(PTRACE_GETREGS, process, nullptr, &registers);
        const bool isIntrudedOn = intrusion.kind != Kind::none && calls.size() == intrusion.at + (isEntry ? 0 : 1);
        if (isEntry)
        {
            SystemCall call = CallAtEntry(process, registers);
            isEntry = false;
            isLookedAt =
                (!calls.empty() || OpensToWrite(call)) && !IsAboutMemory(call) && call.number != SYS_exit_group;
            if (!isLookedAt)
                continue;
            calls.push_back(std::move(call));
            if (isIntrudedOn && intrusion.kind == Kind::killAtEntry)
                ::kill(process, SIGKILL);
            if (isIntrudedOn && intrusion.kind == Kind::failure)
            {
                registers.orig_rax = ~0ULL; // a call that there is not
                ::ptrace(PTRACE_SETREGS, process, nullptr, &registers);
            }
            continue;
        }
        isEntry = true;
        if (!isLookedAt)
            continue;
        if (isIntrudedOn && intrusion.kind == Kind::failure)
        {
            registers.rax = static_cast<std::uint64_t>(-intrusion.error);
            ::ptrace(PTRACE_SETREGS, process, nullptr, &registers);
        }
        calls.back().result = static_cast<long>(registers.rax);
        if (isIntrudedOn && intrusion.kind == Kind::killAtExit)
            ::kill(process, SIGKILL);
    }
    if (WIFEXITED(status))
        exitCode = WEXITSTATUS(status);
    if (exitCode == notAllowed)
        obstacle = "The user lacks the right to trace processes";
}

}
