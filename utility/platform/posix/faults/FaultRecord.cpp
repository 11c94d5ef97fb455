#include "utility/platform/posix/faults/FaultRecord.h"

#include "utility/platform/posix/faults/ReportedProcess.h"

#include <cstring>
#include <limits>

namespace utility::platform::posix
{

namespace
{

constexpr DWORD accessViolation = 0xC0000005;
constexpr DWORD inPageError = 0xC0000006;
constexpr DWORD misalignment = 0x80000002;
constexpr DWORD singleStep = 0x80000004;
constexpr DWORD illegalInstruction = 0xC000001D;
constexpr DWORD privilegedInstruction = 0xC0000096;

// As the processor numbers them.
constexpr greg_t protectionFault = 13;
constexpr greg_t pageFault = 14;
constexpr greg_t errorOfWriting = 0x2;
constexpr greg_t errorOfFetching = 0x10;

std::uint64_t Register(const ucontext_t& interrupted, int number)
{
    return static_cast<std::uint64_t>(interrupted.uc_mcontext.gregs[number]);
}

DWORD CodeOfArithmetic(int why)
{
    switch (why)
    {
    case FPE_INTDIV:
        return 0xC0000094;
    case FPE_INTOVF:
        return 0xC0000095;
    case FPE_FLTDIV:
        return 0xC000008E;
    case FPE_FLTOVF:
        return 0xC0000091;
    case FPE_FLTUND:
        return 0xC0000093;
    case FPE_FLTRES:
        return 0xC000008F;
    case FPE_FLTSUB:
        return 0xC000008C;
    default:
        return 0xC0000090;
    }
}

/// Whether the instruction is one that only the kernel may execute. To the kernel it is a fault like that of an address
/// that no memory can have.
bool IsPrivileged(std::uint64_t instruction)
{
    unsigned char first = 0;
    if (ReadReportedProcess(instruction, &first, 1) != 1)
        return false;
    switch (first)
    {
    case 0xF4: // hlt
    case 0xFA: // cli
    case 0xFB: // sti
        return true;
    default: // ins, outs; in, out
        return (first >= 0x6C && first <= 0x6F) || (first >= 0xE4 && first <= 0xE7) || (first >= 0xEC && first <= 0xEF);
    }
}

/// A stack that is exhausted has its pointer at the end of its memory, and a little below it the address that was
/// asked for; or a function has taken a large frame, and its pointer is beyond.
bool IsBeyondStack(std::uint64_t address, std::uint64_t stackPointer)
{
    constexpr std::uint64_t below = 64 * 1024;
    constexpr std::uint64_t largestFrame = 1U << 30;
    const std::uint64_t distance = address - (stackPointer - below);
    char probe = 0;
    return distance < below || (distance < below + largestFrame && ReadReportedProcess(stackPointer, &probe, 1) != 1);
}

void DescribeAccess(DWORD code, std::uint64_t address, const ucontext_t& interrupted, _EXCEPTION_RECORD& record)
{
    const greg_t error = interrupted.uc_mcontext.gregs[REG_ERR];
    const bool isPageFault = interrupted.uc_mcontext.gregs[REG_TRAPNO] == pageFault;
    record.ExceptionCode = code;
    record.NumberParameters = 2;
    record.ExceptionInformation[0] = !isPageFault ? 0 : error & errorOfFetching ? 8 : error & errorOfWriting ? 1 : 0;
    record.ExceptionInformation[1] = address;
}

void DescribeSegmentation(const siginfo_t& info, const ucontext_t& interrupted, _EXCEPTION_RECORD& record)
{
    const std::uint64_t instruction = Register(interrupted, REG_RIP);
    if (interrupted.uc_mcontext.gregs[REG_TRAPNO] == protectionFault)
    {
        if (IsPrivileged(instruction))
            record.ExceptionCode = privilegedInstruction;
        else // of an address that no memory can have the kernel tells nothing
            DescribeAccess(accessViolation, std::numeric_limits<std::uint64_t>::max(), interrupted, record);
        return;
    }
    const auto address = reinterpret_cast<std::uint64_t>(info.si_addr);
    const bool isOverflow = address != instruction && IsBeyondStack(address, Register(interrupted, REG_RSP));
    DescribeAccess(isOverflow ? codeOfStackOverflow : accessViolation, address, interrupted, record);
}

DWORD CodeOfSent(int signal)
{
    switch (signal)
    {
    case SIGABRT:
        return codeOfAbort;
    case SIGBUS:
        return inPageError;
    case SIGFPE:
        return CodeOfArithmetic(0);
    case SIGILL:
        return illegalInstruction;
    case SIGTRAP:
        return codeOfBreakpoint;
    default:
        return accessViolation;
    }
}

void Describe(int signal, const siginfo_t& info, const ucontext_t& interrupted, _EXCEPTION_RECORD& record)
{
    record.ExceptionCode = CodeOfSent(signal);
    if (!IsOfProcessor(info))
        return;
    switch (signal)
    {
    case SIGSEGV:
        DescribeSegmentation(info, interrupted, record);
        break;
    case SIGBUS:
        DescribeAccess(info.si_code == BUS_ADRALN ? misalignment : inPageError,
                       reinterpret_cast<std::uint64_t>(info.si_addr), interrupted, record);
        break;
    case SIGFPE:
        record.ExceptionCode = CodeOfArithmetic(info.si_code);
        break;
    case SIGILL:
        if (info.si_code == ILL_PRVOPC || info.si_code == ILL_PRVREG)
            record.ExceptionCode = privilegedInstruction;
        break;
    case SIGTRAP:
        if (info.si_code == TRAP_TRACE)
            record.ExceptionCode = singleStep;
        break;
    default:
        break;
    }
}

}

void FillRecords(int signal, const siginfo_t& info, const ucontext_t& interrupted, _EXCEPTION_RECORD& record,
                 _CONTEXT& registers)
{
    registers.EFlags = static_cast<DWORD>(Register(interrupted, REG_EFL));
    registers.Rax = Register(interrupted, REG_RAX);
    registers.Rcx = Register(interrupted, REG_RCX);
    registers.Rdx = Register(interrupted, REG_RDX);
    registers.Rbx = Register(interrupted, REG_RBX);
    registers.Rsp = Register(interrupted, REG_RSP);
    registers.Rbp = Register(interrupted, REG_RBP);
    registers.Rsi = Register(interrupted, REG_RSI);
    registers.Rdi = Register(interrupted, REG_RDI);
    registers.R8 = Register(interrupted, REG_R8);
    registers.R9 = Register(interrupted, REG_R9);
    registers.R10 = Register(interrupted, REG_R10);
    registers.R11 = Register(interrupted, REG_R11);
    registers.R12 = Register(interrupted, REG_R12);
    registers.R13 = Register(interrupted, REG_R13);
    registers.R14 = Register(interrupted, REG_R14);
    registers.R15 = Register(interrupted, REG_R15);
    registers.Rip = Register(interrupted, REG_RIP);
    if (const _libc_fpstate* const floating = interrupted.uc_mcontext.fpregs)
    {
        registers.MxCsr = floating->mxcsr;
        for (int number = 0; number < 16; ++number)
            std::memcpy(&registers.Xmm[number], floating->_xmm[number].element, sizeof(registers.Xmm[number]));
    }

    Describe(signal, info, interrupted, record);
    // The processor has gone past a breakpoint; everything else it has not executed.
    if (record.ExceptionCode == codeOfBreakpoint && IsOfProcessor(info))
        --registers.Rip;
    record.ExceptionAddress = reinterpret_cast<void*>(registers.Rip);
}

}
