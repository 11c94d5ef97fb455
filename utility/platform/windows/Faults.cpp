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

struct ThreadFaults
{
    FaultTranslator translator;
    bool isLetGo;  ///< the translator has returned: the fault comes again, and is not its any more
    bool isInNext; ///< the next filter is called, which may call this one in its turn
    _EXCEPTION_RECORD record;
    _CONTEXT registers;
    _EXCEPTION_POINTERS pointers;
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

/// Where the thread goes on: entered as by a call, on any stack.
[[gnu::noinline, gnu::force_align_arg_pointer]] void Throw()
{
    thread.translator(thread.record.ExceptionCode, &thread.pointers);
    thread.isLetGo = true;
    // What the system's own record of the registers has behind it is not copied.
    thread.registers.ContextFlags = CONTEXT_FULL;
    ::RtlRestoreContext(&thread.registers, nullptr);
}

LONG WINAPI TranslatingFilter(_EXCEPTION_POINTERS* fault)
{
    if (thread.translator == nullptr || std::exchange(thread.isLetGo, false) ||
        (fault->ExceptionRecord->ExceptionFlags & EXCEPTION_NONCONTINUABLE) != 0)
        return CallNext(fault);
    thread.record = *fault->ExceptionRecord;
    thread.registers = *fault->ContextRecord;
    CONTEXT& context = *fault->ContextRecord;
    // A call that led nowhere has left its return address already.
    constexpr ULONG_PTR fetching = 8;
    const bool isCall = thread.record.NumberParameters != 0 && thread.record.ExceptionInformation[0] == fetching;
    if (!isCall && context.Rip != 0)
    {
        context.Rsp -= sizeof(DWORD64);
        // The unwinder looks ahead of a return address for the call.
        *reinterpret_cast<DWORD64*>(context.Rsp) = context.Rip + 1;
    }
    context.Rip = reinterpret_cast<DWORD64>(&Throw);
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
    return ::SetUnhandledExceptionFilter(filter);
}

FaultTranslator SetFaultTranslator(FaultTranslator translator) noexcept
{
    thread.pointers = {&thread.record, &thread.registers};
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
