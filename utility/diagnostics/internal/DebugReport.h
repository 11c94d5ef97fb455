#pragma once

// The library's own reports to a programmer: in a box with Abort, Retry and Ignore, or quietly on the debugger's
// output. Texts are in the system's narrow encoding. Any thread may call.
// diagnostics/Assertions.h says what is thrown.

namespace utility
{

enum ReportType
{
    reportWarning,
    reportError,
    reportAssertion,
};

/// Reports something of one of the types above. `file` and `format` may be null, `line` 0; `format` and what follows
/// have the meaning that std::printf gives them. With `showBox` the box is shown, otherwise the text goes to the
/// debugger's output. Overlong text is replaced by a fixed one that says so.
///
/// Gives 1 for Retry, and 0 for Ignore and without a box; Abort ends the process. An unknown type gives -1 and does
/// nothing. So does an assertion that fails while another one is being reported, on any thread: it is said on the
/// debugger's output, and the process stops in the debugger.
int ZeloDbgReport(int type, int severity, bool showBox, const char* file, int line, const char* module,
                  const char* format, ...);

/// Shows the box. `file`, `lineText` and `module` may be null, `message` empty. 1 for Retry, 0 for Ignore; Abort ends
/// the process. A module name over 64 characters has to be writable: deliberately, it is shortened where it is.
int ZeloDbgMessage(int type, const char* file, const char* lineText, int severity, const char* module,
                   const char* message);

}
