#pragma once

// Text for other programs to paste.
//
//     if (!SetClipboardText(L"G01 X12.5"))
//         Show(L"The clipboard cannot be had.");
//
// On Linux a program offers the text to the others, until somebody else puts something there: under Wayland `wl-copy`,
// on an X server `xclip` or else `xsel`, as UTF-8. They have five seconds to take the text. Nothing of them is left
// to the host, neither a child to wait for nor a broken pipe. Where there is no display, or one that takes a connection
// and says nothing for three seconds, or none of these programs, there is no clipboard.
//
// Any thread may call. Nothing throws but for lack of memory.

#include "utility/platform/Export.h"

/// Puts a text in the place of what the clipboard had; false if it has not been taken, or is null. Memory that
/// Windows has not taken over is deliberately lost.
UTILITY_API bool SetClipboardText(const wchar_t* text);
