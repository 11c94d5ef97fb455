#pragma once

// Faults of the processor as failures that can be caught, on the threads that ask for it.
//
//     const CSETranslator translator;
//     try
//     {
//         Read(part);
//     }
//     catch (CStructuredException* failure)
//     {
//         wchar_t text[256];
//         failure->GetErrorMessage(text, 256, nullptr);
//         failure->Delete();
//         Show(text);
//     }
//
// What is thrown: access violations, among them calls of nothing; divisions by zero, and floating-point exceptions that
// are not masked; illegal instructions; breakpoints; a stack that is exhausted, on Windows where the system leaves some
// for it; and the reading of a mapped file that another program has shortened. What a program sends itself, as abort
// does, is no fault of the processor. Each fault leaves a report (see crash/UnhandledExceptionFilter.h), also one that
// is caught. With a debugger attached nothing is translated: it sees the fault first.
//
// A host is to be compiled with -fnon-call-exceptions, as the library is; with CMake it links the target
// Utility::CatchableFaults, which says so. Without it destructors and handlers of the function that the fault is in are
// not known of, and the program ends. It ends too where the fault is within a callee that the compiler knows to throw
// nothing: noexcept functions, destructors, memcpy, strlen.
//
// On Linux an action that the host has set for the signal ahead of the library is called first, and has to return; one
// that it sets later takes the library's place, so that nothing is translated, and so does a signal that is ignored or
// blocked. After a stack overflow the stack is as large as it was once the failure is deleted, on the thread that
// caught it and no deeper than that; a thread whose stack has less than 512 KB has no room for it and ends the program.
//
// A translator is of its own thread alone, and the innermost one counts.

#include "utility/framework/Exception.h"
#include "utility/platform/ExceptionRecord.h"
#include "utility/platform/Export.h"

/// A fault of the processor, thrown as a pointer: whoever catches it calls Delete.
class UTILITY_API CStructuredException : public CException
{
public:
    /// Keeps the two pointers and not what they point to.
    CStructuredException(unsigned int code, _EXCEPTION_POINTERS* pointers);
    ~CStructuredException() override;

    /// The code with its name, and the instruction; of an access violation what it was to do with which address as
    /// well. Of addresses the low 32 bits. Empty for a code that has no name. A size of 0 is deliberately taken for the
    /// largest. Gives 1; `helpContext` may be null and otherwise receives 0.
    int GetErrorMessage(wchar_t* buffer, unsigned int bufferSize, unsigned int* helpContext) override;

    /// This object's own. The records that it points to, which GetErrorMessage reads, are those of the thread: they are
    /// there until its next fault, and as long as it lives.
    _EXCEPTION_POINTERS* GetExceptionPointers();

private:
    unsigned int m_nCode;
    _EXCEPTION_POINTERS m_pointers;
};

/// As long as it lives a fault on its thread is thrown as a CStructuredException*.
class UTILITY_API CSETranslator
{
public:
    /// Translates on the calling thread, unless a debugger is attached.
    CSETranslator();
    CSETranslator(const CSETranslator&) = delete;
    CSETranslator& operator=(const CSETranslator&) = delete;
    /// Puts back what was there, on the same thread.
    ~CSETranslator();

private:
    UTILITY_LOCAL static void SETranslator(unsigned int code, _EXCEPTION_POINTERS* pointers);

    bool m_bInstalled;
    utility::platform::FaultTranslator m_pPrevious = nullptr;
};

/// Whether a debugger is attached; on Linux, whether some process traces this one.
UTILITY_API bool ZeloIsDebuggerPresent();
