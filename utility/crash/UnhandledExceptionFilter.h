#pragma once

// Reports of faults. As long as the library is loaded, a fault that nobody handles leaves a file that says what
// happened, where, and with which values, and then goes on as it would have gone without: nothing is shown to the user.
//
//     CUnhandledExceptionFilter::g_bGenerateExceptionReport = false; // a program that wants none
//
// The file is text in the manner of XML, in the folder of the user's local application data (on Linux $XDG_DATA_HOME,
// or else ~/.local/share). Below that, "Selvane Production Software/Exception Reports/milling/1.2/20260131-235959.xml"
// is of a program `milling` of version 1.2, and of that time in UTC. It has the system, the modules, and the calls on
// the stack of the thread with their parameters and local variables, as far as debugging information tells; of a value
// no more than four bytes. Two reports in the same second have the same name: the later one is not written while the
// first is, and afterwards takes its place.
//
// On Linux the file is UTF-8, whatever the locale; bytes that are no UTF-8 are U+FFFD. The program UtilityCrashReport,
// which is installed beside the library, writes it from outside, so that it needs nothing of the process that may be
// damaged. Where that cannot be started the process does it itself. On Windows the file has the encoding of the global
// locale, and a question mark for each character that cannot be had in that; a second thread that crashes while it is
// written ends the process, and the report with it.
//
// A report never ends at a variable that is a pointer to a pointer: it breaks off there, on Linux after some seconds,
// and on Windows when somebody ends the process. What was written until then stays.
//
// Nothing here throws.

#include "utility/platform/ExceptionRecord.h"
#include "utility/platform/Export.h"

class UTILITY_API CUnhandledExceptionFilter
{
public:
    /// Takes the place of the process's filter, which it calls ahead of its own work. The library has one such object
    /// for as long as it is loaded.
    CUnhandledExceptionFilter();
    /// Deliberately takes over no more than what the other's earlier filter is.
    CUnhandledExceptionFilter& operator=(const CUnhandledExceptionFilter& other);
    /// Puts the earlier filter back.
    ~CUnhandledExceptionFilter();

    /// Calls the filter that was there before the library's, writes the report, and gives what that filter gave, or 0,
    /// with which the fault goes on, if there was none. Runs within a fault, on the thread that faulted.
    static utility::platform::FaultDisposition UnhandledExceptionFilter(_EXCEPTION_POINTERS* fault);

    /// Whether reports are written. The earlier filter is called in any case.
    static bool g_bGenerateExceptionReport;

private:
    UTILITY_LOCAL void GenerateExceptionReport(_EXCEPTION_POINTERS* fault);

    utility::platform::FaultFilter m_pPrevious;
};
