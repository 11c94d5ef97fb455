#include "utility/platform/Faults.h"

#include "utility/platform/LoadOrder.h"
#include "utility/platform/posix/faults/FaultRecord.h"
#include "utility/platform/posix/faults/FaultStack.h"
#include "utility/platform/posix/faults/OutsideReport.h"
#include "utility/platform/posix/faults/ReportedProcess.h"
#include "utility/platform/posix/faults/ReportRequest.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <ctime>
#include <optional>
#include <pthread.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>
#include <utility>
#include <xmmintrin.h>

// How a fault is dealt with.
//
// The system tells a fault by a signal. Its handler fills the records of a Windows exception, and calls what the thread
// or the process has for those. Then the signal is sent once more to where it came from, and finds the default action:
// the process ends as it would have without the library, with the same signal, the same registers in its core.
//
// What was there before for a signal is called by the filter, which has it for its earlier one. It may go on by a jump
// or end the process, and may not find anything held then. If it returns, the process goes on where the fault was,
// which is what it would have done.
//
// A fault within a report ends the report: the process ends then by the fault that the report is of. Until the report
// begins the signal is blocked, so that the system itself ends the process by a second one.

namespace utility::platform
{

namespace
{

// All that is here but for the functions of Faults.h runs within a fault: it takes no lock and allocates nothing.

constexpr std::int32_t continueExecution = -1;
constexpr std::int32_t continueSearch = 0;

struct HandledSignal
{
    int number;
    bool isTaken;
    struct sigaction earlier;
};

constinit HandledSignal handledSignals[] = {{SIGSEGV, false, {}}, {SIGBUS, false, {}},  {SIGFPE, false, {}},
                                            {SIGILL, false, {}},  {SIGTRAP, false, {}}, {SIGABRT, false, {}}};

constinit std::atomic<FaultFilter> processFilter = nullptr;

struct Fault
{
    int signal;
    siginfo_t* info;
    ucontext_t* interrupted;
};

struct Place
{
    std::uint64_t instruction;
    void* address;

    bool operator==(const Place&) const = default;
};

// A thread's own is made with it, so that nothing is allocated where it is used first.
#define UTILITY_OF_THREAD [[gnu::tls_model("initial-exec")]] constinit thread_local

/// What the thread writes a report of. Where that was exhausted, a second fault has the stack of the first one from its
/// start: nothing may be kept there that ends the process.
UTILITY_OF_THREAD std::optional<Fault> reported = std::nullopt;
/// Where the latest fault was that an earlier action returned from.
UTILITY_OF_THREAD std::optional<Place> latest = std::nullopt;
UTILITY_OF_THREAD FaultTranslator threadTranslator = nullptr;
/// The kernel's number of the timer that ends the report, or none.
UTILITY_OF_THREAD int reportTimer = -1;

#undef UTILITY_OF_THREAD

/// The threads that write a report.
constinit std::atomic<int> writers = 0;

/// In a child of fork: of the threads only the one that forked goes on there.
void CountOwnReport() { writers = reported ? 1 : 0; }

[[gnu::constructor(platformIsReady)]] void AskForForks() { ::pthread_atfork(nullptr, nullptr, &CountOwnReport); }

/// What is thrown points here, until the thread's next: when it is caught, the handler's stack is no more.
struct Records
{
    _EXCEPTION_RECORD record;
    _CONTEXT registers;
    _EXCEPTION_POINTERS pointers;
};
constinit thread_local Records translated = {};

/// A fault within a report is to be ours, whatever a handler of the host's has blocked. That is put back at the end of
/// the handler.
void Unblock(int signal)
{
    sigset_t own;
    ::sigemptyset(&own);
    ::sigaddset(&own, signal);
    ::pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
}

class Reporting
{
public:
    explicit Reporting(const Fault& fault) noexcept
    {
        reported = fault;
        ++writers;
        Unblock(fault.signal);
    }
    Reporting(const Reporting&) = delete;
    Reporting& operator=(const Reporting&) = delete;
    ~Reporting()
    {
        if (const int timer = std::exchange(reportTimer, -1); timer >= 0)
            ::syscall(SYS_timer_delete, timer);
        --writers;
        reported.reset();
    }
};

/// While an earlier action is called, which may have faults of its own, and need not return.
class ReportingSuspended
{
public:
    ReportingSuspended() noexcept : m_fault(std::exchange(reported, std::nullopt)) { --writers; }
    ReportingSuspended(const ReportingSuspended&) = delete;
    ReportingSuspended& operator=(const ReportingSuspended&) = delete;
    ~ReportingSuspended()
    {
        ++writers;
        reported = m_fault;
    }

private:
    const std::optional<Fault> m_fault;
};

class KeepErrno
{
public:
    KeepErrno() = default;
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;
    ~KeepErrno() { errno = m_value; }

private:
    int m_value = errno;
};

/// What is thrown leaves no handler by its end, which would put back the mask.
class KeepMask
{
public:
    explicit KeepMask(const ucontext_t& interrupted) noexcept : m_mask(interrupted.uc_sigmask) {}
    KeepMask(const KeepMask&) = delete;
    KeepMask& operator=(const KeepMask&) = delete;
    ~KeepMask() { ::pthread_sigmask(SIG_SETMASK, &m_mask, nullptr); }

private:
    const sigset_t& m_mask;
};

std::int32_t CallEarlierAction(_EXCEPTION_POINTERS*)
{
    if (!reported)
        return continueSearch;
    const Fault fault = *reported;
    auto* const handled = std::ranges::find(handledSignals, fault.signal, &HandledSignal::number);
    const struct sigaction action = handled->earlier;
    if (action.sa_handler == SIG_DFL)
        return continueSearch;
    if ((static_cast<unsigned>(action.sa_flags) & SA_RESETHAND) != 0)
        handled->earlier.sa_handler = SIG_DFL;
    // What it blocks stays so until the end of the handler: it may have sent itself a signal that waits for that.
    sigset_t mask = action.sa_mask;
    if ((action.sa_flags & SA_NODEFER) == 0)
        ::sigaddset(&mask, fault.signal);
    ::pthread_sigmask(SIG_BLOCK, &mask, nullptr);
    const ReportingSuspended scope;
    if (action.sa_flags & SA_SIGINFO)
        action.sa_sigaction(fault.signal, fault.info, fault.interrupted);
    else
        action.sa_handler(fault.signal);
    return continueExecution;
}

void WaitForOtherWriters()
{
    constexpr timespec pause = {0, 1000 * 1000};
    for (int pauses = 0; writers != 0 && pauses < static_cast<int>(posix::reportSeconds) * 1000; ++pauses)
        ::nanosleep(&pause, nullptr);
}

/// Has the process end by a signal where it was interrupted, as soon as the handler returns.
void EndProcess(const Fault& fault, ucontext_t& interrupted)
{
    WaitForOtherWriters();
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    ::sigaction(fault.signal, &standard, nullptr);
    sigset_t own;
    ::sigemptyset(&own);
    ::sigaddset(&own, fault.signal);
    ::pthread_sigmask(SIG_BLOCK, &own, nullptr);
    ::sigdelset(&interrupted.uc_sigmask, fault.signal);
    if (::syscall(SYS_rt_tgsigqueueinfo, ::getpid(), ::gettid(), fault.signal, fault.info) != 0)
        ::raise(fault.signal);
}

extern "C" const void* _Unwind_Find_FDE(void* instruction, void* bases[3]);

/// Where a failure that is thrown for a fault comes from: registers as they are in a function that is known to the
/// unwinder. False if there is none.
bool FindThrower(const _EXCEPTION_RECORD& record, const _CONTEXT& registers, ucontext_t& interrupted)
{
    std::uint64_t instruction = registers.Rip;
    std::uint64_t stackPointer = registers.Rsp;
    constexpr std::uint64_t fetching = 8;
    if (record.NumberParameters != 0 && record.ExceptionInformation[0] == fetching)
    {
        // A call that led nowhere: it was made by what it would have returned to.
        if (posix::ReadReportedProcess(stackPointer, &instruction, sizeof(instruction)) != sizeof(instruction))
            return false;
        --instruction;
        stackPointer += sizeof(instruction);
    }
    void* bases[3];
    if (_Unwind_Find_FDE(reinterpret_cast<void*>(instruction), bases) == nullptr)
        return false;
    interrupted.uc_mcontext.gregs[REG_RIP] = static_cast<greg_t>(instruction);
    interrupted.uc_mcontext.gregs[REG_RSP] = static_cast<greg_t>(stackPointer);
    return true;
}

/// A handler has the state of a new process. Of that of the interrupted code everything but the pending status is put
/// back, for those who catch.
void PutBackFloatingControl(const ucontext_t& interrupted)
{
    constexpr unsigned int status = 0x3F;
    const _libc_fpstate& floating = *interrupted.uc_mcontext.fpregs;
    asm volatile("fldcw %0" : : "m"(floating.cwd));
    _mm_setcsr(floating.mxcsr & ~status);
}

/// Throws, unless the translator does not, or nobody could catch it.
void Translate(const Fault& fault, const _EXCEPTION_RECORD& record, const _CONTEXT& registers)
{
    ucontext_t& interrupted = *fault.interrupted;
    if (!FindThrower(record, registers, interrupted))
        return;
    if (record.ExceptionCode == posix::codeOfStackOverflow && !posix::MakeRoomOnStack(record.ExceptionInformation[1]))
        return;
    translated.record = record;
    translated.registers = registers;
    PutBackFloatingControl(interrupted);
    const KeepMask mask(interrupted);
    const Reporting scope(fault);
    threadTranslator(record.ExceptionCode, &translated.pointers);
}

std::int32_t AskFilter(const Fault& fault, _EXCEPTION_RECORD& record, _CONTEXT& registers)
{
    const FaultFilter filter = processFilter;
    if (filter == nullptr)
        return continueSearch;
    const Place place = {registers.Rip, posix::IsOfProcessor(*fault.info) ? fault.info->si_addr : nullptr};
    const bool isKnown = place == std::exchange(latest, std::nullopt);
    _EXCEPTION_POINTERS pointers = {&record, &registers};
    const Reporting scope(fault);
    const std::int32_t disposition = (isKnown ? &CallEarlierAction : filter)(&pointers);
    if (disposition == continueExecution)
        latest = place;
    return disposition;
}

/// The handler where it has room. It may throw.
[[gnu::used, gnu::noinline]] void HandleFault(int signal, siginfo_t* info, void* context) asm("UtilityHandleFault");

void HandleFault(int signal, siginfo_t* info, void* context)
{
    auto& interrupted = *static_cast<ucontext_t*>(context);
    const KeepErrno keptErrno;
    if (reported)
    {
        const Fault first = *std::exchange(reported, std::nullopt);
        --writers;
        std::ranges::copy(first.interrupted->uc_mcontext.gregs, interrupted.uc_mcontext.gregs);
        interrupted.uc_sigmask = first.interrupted->uc_sigmask;
        EndProcess(first, interrupted);
        return;
    }
    const Fault fault = {signal, info, &interrupted};
    _EXCEPTION_RECORD record = {};
    _CONTEXT registers = {};
    posix::FillRecords(signal, *info, interrupted, record, registers);
    if (threadTranslator != nullptr && posix::IsOfProcessor(*info))
        Translate(fault, record, registers);
    if (AskFilter(fault, record, registers) != continueExecution)
        EndProcess(fault, interrupted);
}

/// The room that the handler needs on a host's own stack for signals, with that of the dynamic linker, which finds what
/// is called for the first time.
constexpr std::uintptr_t neededRoom = 5120;

/// What the kernel takes for the default action.
constinit const std::uint64_t standardAction[4] = {};

/// The handler. A host's own stack for signals may have no room but for what the system puts there, and a fault beyond
/// its end would begin anew at its start: without room the process ends by the signal, and no stack is used.
[[gnu::naked]] void OnFault(int /*signal*/, siginfo_t* /*info*/, void* /*context*/)
{
    asm(R"(
        mov %%rsp, %%rax
        sub %c[stack](%%rdx), %%rax     # what is left of it
        cmp $%c[needed], %%rax
        jae UtilityHandleFault
        cmp %c[size](%%rdx), %%rax      # on another stack
        jae UtilityHandleFault
        mov %%edi, %%r8d
        mov %%rsi, %%r9
        mov $%c[sigaction], %%eax
        lea %[standard], %%rsi
        xor %%edx, %%edx
        mov $8, %%r10d                  # the size of a mask
        syscall
        mov $%c[getpid], %%eax
        syscall
        mov %%eax, %%edi
        mov $%c[gettid], %%eax
        syscall
        mov %%eax, %%esi
        mov %%r8d, %%edx
        mov %%r9, %%r10
        mov $%c[send], %%eax
        syscall
        ret                             # it is blocked until then
    )"
        :
        : [stack] "i"(offsetof(ucontext_t, uc_stack.ss_sp)), [size] "i"(offsetof(ucontext_t, uc_stack.ss_size)),
          [needed] "i"(neededRoom), [standard] "m"(standardAction), [sigaction] "i"(SYS_rt_sigaction),
          [getpid] "i"(SYS_getpid), [gettid] "i"(SYS_gettid), [send] "i"(SYS_rt_tgsigqueueinfo));
}

bool IsOurs(const struct sigaction& action)
{
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == &OnFault;
}

/// Gives whether there is an action among the earlier ones. What is ignored is left alone.
bool TakeSignals()
{
    bool isAction = false;
    for (HandledSignal& handled : handledSignals)
    {
        if (::sigaction(handled.number, nullptr, &handled.earlier) != 0 || handled.earlier.sa_handler == SIG_IGN)
            continue;
        struct sigaction own = {};
        own.sa_sigaction = &OnFault;
        own.sa_flags = SA_SIGINFO | SA_ONSTACK | (handled.earlier.sa_flags & SA_RESTART);
        handled.isTaken = ::sigaction(handled.number, &own, nullptr) == 0;
        isAction = isAction || handled.earlier.sa_handler != SIG_DFL;
    }
    return isAction;
}

void GiveSignalsBack()
{
    for (HandledSignal& handled : handledSignals)
    {
        struct sigaction present;
        if (std::exchange(handled.isTaken, false) && ::sigaction(handled.number, nullptr, &present) == 0 &&
            IsOurs(present))
            ::sigaction(handled.number, &handled.earlier, nullptr);
    }
}

}

void posix::LimitReport() noexcept
{
    if (!reported)
        return;
    Unblock(reported->signal);
    sigevent event = {};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = reported->signal;
    event._sigev_un._tid = ::gettid();
    itimerspec time = {};
    time.it_value.tv_sec = reportSeconds + 2;
    // The kernel's own calls: those of the C library may allocate.
    if (::syscall(SYS_timer_create, CLOCK_MONOTONIC, &event, &reportTimer) == 0)
        ::syscall(SYS_timer_settime, reportTimer, 0, &time, nullptr);
}

FaultFilter SetFaultFilter(FaultFilter filter) noexcept
{
    const FaultFilter wanted = filter == &CallEarlierAction ? nullptr : filter;
    const FaultFilter before = processFilter.exchange(wanted);
    if (before == nullptr && wanted != nullptr)
    {
        posix::FindReportProgram();
        return TakeSignals() ? &CallEarlierAction : nullptr;
    }
    if (before != nullptr && wanted == nullptr)
        GiveSignalsBack();
    return before;
}

FaultTranslator SetFaultTranslator(FaultTranslator translator) noexcept
{
    // Its memory is allocated here, if the thread has none of it yet.
    translated.pointers = {&translated.record, &translated.registers};
    return std::exchange(threadTranslator, translator);
}

}
