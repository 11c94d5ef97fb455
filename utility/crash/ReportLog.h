#pragma once

// The log beside the report of a crash: what a program logged last often says more than its stack.
//
//     KeepLogForExceptionReports();
//     LogFile(LogSeverityInformation, database) << L"Tool change";
//
// From the call on, a report that the process leaves (crash/UnhandledExceptionFilter.h) has a second file beside it, of
// the same name with .log.txt in place of .xml: UTF-8 on every system, a message a line, the oldest first, each with
// its time in UTC, its severity, its owner's address, its thread and its text. Control characters in a text, line feeds
// among them, are blanks there.
//
// Of each owner its latest 32 messages are kept, also when somebody has collected them, of each message the first 240
// characters and a mark that there were more. That is for messages without an owner and for 31 owners; where there are
// more, the one that has been silent for the longest time gives its place. A message that another thread was just
// writing when the process crashed is left out.
//
// It costs each message that is stored the time to be copied once more, and up to 1 MB of memory, of which as much is
// taken as is written to. No lock is taken for it and nothing is allocated. Any thread may call, more than once too;
// there is no way back. Nothing throws.

#include "utility/platform/Export.h"

/// Keeps the latest messages of each owner from now on, for the reports of this process.
UTILITY_API void KeepLogForExceptionReports() noexcept;
