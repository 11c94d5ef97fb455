#include "tests/support/posix/FaultedProgram.h"

#include <csignal>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <sys/ptrace.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support
{

FaultedProgram::FaultedProgram(const char* path) : m_process(::fork())
{
    if (m_process == 0)
    {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::execl(path, path, static_cast<char*>(nullptr));
        ::_exit(127);
    }
    int status = 0;
    if (::waitpid(m_process, &status, 0) != m_process || !WIFSTOPPED(status) ||
        ::ptrace(PTRACE_CONT, m_process, nullptr, nullptr) != 0 || ::waitpid(m_process, &status, 0) != m_process ||
        !WIFSTOPPED(status) || WSTOPSIG(status) != SIGSEGV)
        return;
    user_regs_struct general = {};
    user_fpregs_struct vectors = {};
    m_isStopped = ::ptrace(PTRACE_GETREGS, m_process, nullptr, &general) == 0 &&
                  ::ptrace(PTRACE_GETFPREGS, m_process, nullptr, &vectors) == 0 &&
                  ::ptrace(PTRACE_DETACH, m_process, nullptr, SIGSTOP) == 0;
    m_context.Rax = general.rax;
    m_context.Rcx = general.rcx;
    m_context.Rdx = general.rdx;
    m_context.Rbx = general.rbx;
    m_context.Rsp = general.rsp;
    m_context.Rbp = general.rbp;
    m_context.Rsi = general.rsi;
    m_context.Rdi = general.rdi;
    m_context.R8 = general.r8;
    m_context.R9 = general.r9;
    m_context.R10 = general.r10;
    m_context.R11 = general.r11;
    m_context.R12 = general.r12;
    m_context.R13 = general.r13;
    m_context.R14 = general.r14;
    m_context.R15 = general.r15;
    m_context.Rip = general.rip;
    for (std::size_t i = 0; i < std::size(m_context.Xmm); ++i)
        std::memcpy(&m_context.Xmm[i], &vectors.xmm_space[4 * i], sizeof(m_context.Xmm[i]));
}

FaultedProgram::~FaultedProgram()
{
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
}

}
