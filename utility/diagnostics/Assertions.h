#pragma once

// How a program says that something happened that must not happen. The library has the function; the macro is the
// program's own, and the debugger stops in its line:
//
//     #define HOST_ASSERT(x) if (static bool off; !(x) && ZeloAssertFailed(__FILE__, __LINE__, 0, off)) asm("int3")
//
//     HOST_ASSERT(count >= 0);
//
// Any thread may call. While one assertion is being reported, another one, on whichever thread, asks nobody: it stops
// the process in the debugger, which ends it where there is none.

#include "utility/platform/Export.h"

/// Reports a failed assertion, and says whether to break into the debugger now.
///
/// With a severity below 4 the programmer is asked, in a box, to abort (ends the process), to retry (gives true) or to
/// ignore (gives false). With a severity of 4 or more, or with `ignored` set, a line goes to the debugger's output and
/// the result is false. With a severity up to 4, Control held at the end sets `ignored`, which normally is a static
/// beside the assertion: it shows no box from then on. A request to quit that waits in the calling thread's message
/// queue stays there, and does not close the box.
///
/// `file` is in the system's narrow encoding and may be null; `line` 0 stands for none. Throws nothing but what a sink
/// of the debugger's output does, and std::bad_alloc where the text for it or the answer of a dialog program needs
/// memory.
///
/// On Linux the box is a question on the terminal, or a dialog of `zenity` or `kdialog`; with no terminal and no
/// display it is answered by Ignore, and its text goes to the debugger's output. Control held is Ctrl+I as the
/// terminal's answer.
UTILITY_API bool ZeloAssertFailed(char const* file, int line, int severity, bool& ignored);
