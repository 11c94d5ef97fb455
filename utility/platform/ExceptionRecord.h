#pragma once

// What the system tells of a fault: the records that Windows hands to an exception filter, and what stands for them on
// Linux, where a signal's handler fills them.

#include "utility/platform/Types.h"

#include <cstdint>

#ifndef _WIN32

/// What happened.
struct _EXCEPTION_RECORD
{
    DWORD ExceptionCode;                ///< a Windows exception code on every system: 0xC0000005 is an access violation
    DWORD ExceptionFlags;               ///< 0 is a fault that may go on
    _EXCEPTION_RECORD* ExceptionRecord; ///< deliberately always null
    void* ExceptionAddress;             ///< of the instruction
    DWORD NumberParameters;             ///< how many of the last field count
    /// Of an access violation and an in-page error: 0 for reading, 1 for writing, 8 for executing; and the address that
    /// was to be accessed.
    std::uint64_t ExceptionInformation[15];
};

/// The registers at that moment.
struct _CONTEXT
{
    /// The registers by their names.
    DWORD MxCsr;
    DWORD EFlags;
    std::uint64_t Rax;
    std::uint64_t Rcx;
    std::uint64_t Rdx;
    std::uint64_t Rbx;
    std::uint64_t Rsp;
    std::uint64_t Rbp;
    std::uint64_t Rsi;
    std::uint64_t Rdi;
    std::uint64_t R8;
    std::uint64_t R9;
    std::uint64_t R10;
    std::uint64_t R11;
    std::uint64_t R12;
    std::uint64_t R13;
    std::uint64_t R14;
    std::uint64_t R15;
    std::uint64_t Rip;
    /// The low halves of the vector registers, where a number is.
    std::uint64_t Xmm[16];
};

/// A fault, as a filter gets it.
struct _EXCEPTION_POINTERS
{
    _EXCEPTION_RECORD* ExceptionRecord; ///< what happened
    _CONTEXT* ContextRecord;            ///< with which registers
};

#endif

namespace utility::platform
{

/// What is to be done about a fault: 0 leaves it to the system, -1 goes on where it happened.
#ifdef _WIN32
using FaultDisposition = LONG;
#else
using FaultDisposition = std::int32_t;
#endif

/// What is called for a fault that nobody has handled, on the thread that faulted.
using FaultFilter = FaultDisposition (*)(_EXCEPTION_POINTERS*);

/// What is called for a fault on a thread that has asked for it, ahead of the filter, with the exception's code. It
/// throws, or returns to let the fault go on.
using FaultTranslator = void (*)(unsigned int code, _EXCEPTION_POINTERS*);

}
