#pragma once

// Boxes that tell the user something.
//
//     if (!boost::filesystem::exists("part.igs"))
//         ShowSystemErrorMessage(2); // that the file is not found, in the user's language
//     ZeloMessageBox(L"The tool is worn.", 0x30, 0);
//
// Each has the name of the program as its title, and waits until the user has seen it. On Linux it is on the process's
// terminal if it is in its foreground, until Enter; otherwise, with a display, `zenity` or `kdialog` shows it; and
// where there is none of all these the text goes to the debugger's output (see platform/DebuggerSink.h) and nobody
// waits. A display that takes a connection and says nothing for three seconds is none.
//
// Any thread may call. Nothing throws but for lack of memory.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

/// The framework's message box; which button ends it is not told. The style is that of a message box on Windows: 0x10
/// has the sign of a failure, 0x30 of a warning, 0x40 of an information, on both systems. `help` is the number of a
/// help topic for the window that owns the box, 0 for none; Linux has no such window. A null text is an empty one.
UTILITY_API void ZeloMessageBox(const wchar_t* text, unsigned int style, unsigned int help);

/// The same with one of the numbered strings, in the display language; a number without a string has an empty text.
UTILITY_API void ZeloMessageBox(unsigned int textId, unsigned int style, unsigned int help);

/// Shows the system's message for an error (a Windows error number on every system), in the language of the calling
/// thread, with the sign of an information. An error without a message has an empty text.
UTILITY_API void ShowSystemErrorMessage(DWORD error);
