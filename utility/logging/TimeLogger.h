#pragma once

// A trail of the time that the steps of a work took, a line for each, kept in a text or written to the log.
//
//     CTimeLogger timing;
//     ReadPart();
//     timing.LogNextTime(L"read");
//     ComputePaths();
//     timing.LogNextTime(L"tool paths");
//     timing.PrintTimeLog(database);
//
// A line has the local time at which the step began, how long it took in milliseconds, and the caller's words, as
// "14:03:27.512           184 read". An object belongs to one thread at a time. Only a failed allocation throws.

#include "utility/platform/Export.h"

#include <cstdint>
#include <string>

/// Of the host application; never looked into.
class CPlanDatabase;

class UTILITY_API CTimeLogger
{
public:
    /// The first step begins now.
    CTimeLogger();

    /// The line for the step that ends now, without a line feed; the next step begins. A step's milliseconds are cut
    /// to 32 bits.
    std::wstring LogNextTimeStr(const std::wstring& text);

    /// The same, added to the trail.
    void LogNextTime(const std::wstring& text);

    /// The trail so far, each line with its line feed.
    std::wstring GetTimeLog() const;

    /// The same as a message for debugging of severity LogSeverityTiming to the log of this owner.
    void PrintNextTime(const CPlanDatabase* database, const std::wstring& text);

    /// Writes the whole trail as one such message and empties it, also where the log does not take the message.
    void PrintTimeLog(const CPlanDatabase* database);

private:
    std::int64_t m_nStartTicks;
    std::int64_t m_nLastTicks;
    std::wstring m_strLog;
};

/// A time in seconds as hours, minutes and seconds, joined by the time separator of the user's locale; the fraction is
/// cut off. Hours have two digits or more. A negative time has its sign at each part that is not 0.
[[nodiscard]] UTILITY_API std::wstring FormatMachiningTime(double seconds);
