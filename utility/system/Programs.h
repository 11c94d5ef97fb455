#pragma once

// Two ways of starting another program.
//
//     wchar_t convert[] = L"convert \"part 7.igs\" part7.stl";
//     QLMExecute(convert, true);              // and waits for its end
//     QLMShellExecute(L"part7.pdf", nullptr); // in the program that the desktop has for it
//
// Any thread may call. Only a lack of memory is thrown.
//
// On Linux a command line means what it means on Windows: it is split by the rules that programs use there (see
// platform/formats/CommandLine.h), and no shell has a part in it. The program is looked for along PATH, or by its path.
// It is no child of this process: no SIGCHLD tells of it, and nothing of it is left when it has ended.

#include "utility/platform/Export.h"

/// Starts a program and, with `wait`, waits for its end; otherwise it is a group of its own, which Ctrl-C does not
/// reach. Whether that fails is deliberately not told. The text must be writable on Windows, whatever its type says:
/// the system may write into it.
UTILITY_API void QLMExecute(const wchar_t* commandLine, bool wait);

/// Opens a file as the desktop does, or starts a program with parameters, which may be null. If that fails, a message
/// box says why, and the result is false.
///
/// On Linux what has parameters or may be run is started, and what else there is, an address of the net too, goes to
/// `xdg-open`, of which only the start is known.
UTILITY_API bool QLMShellExecute(const wchar_t* file, const wchar_t* parameters);
