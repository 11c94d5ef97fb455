#include "utility/platform/Faults.h"

#include <atomic>
#include <cstdint>
#include <malloc.h>
#include <utility>
#include <xmmintrin.h>

// The system calls the filter of the process for a fault that none of its own handlers has taken. On a thread that has
// a translator this one lets the thread go on, but in a function that throws, as if the faulting instruction had called
// it.

namespace utility::platform
{

namespace
{

/// Of the process, as it was set here.
constinit std::atomic<FaultFilter> processFilter = nullptr;
/// What the system had for a filter when a translator put its own in front.
constinit std::atomic<FaultFilter> nextFilter = nullptr;

/// What is thrown points here, until the thread's next.
struct Records
{
    _EXCEPTION_RECORD record;
    _CONTEXT registers;
    _EXCEPTION_POINTERS pointers;
};

struct ThreadFaults
{
    FaultTranslator translator;
    bool isTranslating; ///< the translator is called, and what it has for itself must not touch what it is called for
    bool isInNext;      ///< the next filter is called, which may call this one in its turn
    bool isLetGo;       ///< the translator has returned
    Records first;
    Records within; ///< of a fault within the translator

    Records& Present() { return isTranslating ? within : first; }
};
thread_local ThreadFaults thread = {};

LONG CallNext(_EXCEPTION_POINTERS* fault)
{
    const FaultFilter filter = thread.isInNext ? processFilter.load() : nextFilter.load();
    if (filter == nullptr)
        return EXCEPTION_CONTINUE_SEARCH;
    const bool before = std::exchange(thread.isInNext, true);
    const LONG disposition = filter(fault);
    thread.isInNext = before;
    return disposition;
}

[[gnu::noinline]] void Translate(Records& records)
{
    struct Translating
    {
        ~Translating() { thread.isTranslating = before; }
        const bool before = std::exchange(thread.isTranslating, true);
    } const scope;
    thread.translator(records.record.ExceptionCode, &records.pointers);
}

[[gnu::used, gnu::noinline]] void Throw() asm("utility_throw");
void Throw()
{
    Records& records = thread.Present();
    Translate(records);
    thread.isLetGo = true;
    // What the system's own record of the registers has behind it is not copied.
    records.registers.ContextFlags = CONTEXT_FULL;
    ::RtlRestoreContext(&records.registers, nullptr);
}

/// Where the thread goes on: entered as by a call, on any stack. That of a function without a frame is not aligned as
/// at a call, and the compiler aligns none on this system.
extern "C" void ThrowOnAnyStack() asm("utility_throw_on_any_stack");
asm(R"(
        .text
        .seh_proc utility_throw_on_any_stack
utility_throw_on_any_stack:
        pushq   %rbp
        .seh_pushreg %rbp
        movq    %rsp, %rbp
        .seh_setframe %rbp, 0
        .seh_endprologue
        andq    $-16, %rsp
        subq    $32, %rsp
        call    utility_throw
        int3
        .seh_endproc
)");

/// Whether it is the fault that the translator has returned from, which comes again then and is not its any more.
bool IsLetGo(const _EXCEPTION_POINTERS& fault)
{
    const Records& latest = thread.Present();
    return std::exchange(thread.isLetGo, false) &&
           fault.ExceptionRecord->ExceptionAddress == latest.record.ExceptionAddress &&
           fault.ExceptionRecord->ExceptionInformation[1] == latest.record.ExceptionInformation[1] &&
           fault.ContextRecord->Rsp == latest.registers.Rsp;
}

LONG WINAPI TranslatingFilter(_EXCEPTION_POINTERS* fault)
{
    if (thread.translator == nullptr || IsLetGo(*fault) ||
        (fault->ExceptionRecord->ExceptionFlags & EXCEPTION_NONCONTINUABLE) != 0)
        return CallNext(fault);
    Records& records = thread.Present();
    records.record = *fault->ExceptionRecord;
    records.registers = *fault->ContextRecord;
    records.pointers = {&records.record, &records.registers};
    CONTEXT& context = *fault->ContextRecord;
    // A call that led nowhere has left its return address already.
    constexpr ULONG_PTR fetching = 8;
    const bool isCall = records.record.NumberParameters != 0 && records.record.ExceptionInformation[0] == fetching;
    if (!isCall && context.Rip != 0)
    {
        context.Rsp -= sizeof(DWORD64);
        // The unwinder looks ahead of a return address for the call.
        *reinterpret_cast<DWORD64*>(context.Rsp) = context.Rip + 1;
    }
    context.Rip = reinterpret_cast<DWORD64>(&ThrowOnAnyStack);
    constexpr DWORD status = 0x3F;
    context.MxCsr &= ~status;
    context.FltSave.MxCsr &= ~status;
    context.FltSave.StatusWord = 0;
    return EXCEPTION_CONTINUE_EXECUTION;
}

}

FaultFilter SetFaultFilter(FaultFilter filter) noexcept
{
    processFilter = filter;
    // The thread that loads the library is the main one as a rule.
    if (filter != nullptr)
        EnterFaultStack();
    return ::SetUnhandledExceptionFilter(filter);
}

FaultTranslator SetFaultTranslator(FaultTranslator translator) noexcept
{
    if (translator != nullptr)
    {
        const FaultFilter before = ::SetUnhandledExceptionFilter(&TranslatingFilter);
        if (before != &TranslatingFilter)
            nextFilter = before;
    }
    return std::exchange(thread.translator, translator);
}

void EnterFaultStack() noexcept
{
    ULONG size = 64 * 1024;
    ::SetThreadStackGuarantee(&size);
}

void LeaveFaultStack() noexcept {}

void RestoreStackGuard() noexcept { ::_resetstkoflw(); }

bool ReportFromOutside(const _EXCEPTION_POINTERS&, const void*) noexcept { return false; }

}
