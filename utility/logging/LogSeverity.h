#pragma once

// How grave log messages are, and which of them the log streams (logging/LogStream.h) store. Any thread may call.

#include "utility/platform/Export.h"

#include <atomic>
#include <cstdint>

/// How grave a message is. Only the order counts.
enum LogSeverity : std::int32_t
{
    LogSeverityNone = 0,        ///< below every level but itself
    LogSeverityInformation = 1, ///< worth knowing
    LogSeverityWarning = 2,     ///< may be wrong
    LogSeverityError = 4,       ///< is wrong
    LogSeverityTiming = 8,      ///< how long something took
};

/// The severity that a message needs to be stored by the log streams; LogSeverityInformation at first.
UTILITY_API LogSeverity GetLogLevel() noexcept;
UTILITY_API void SetLogLevel(LogSeverity level) noexcept;

/// Whether messages for debugging have the severity that they are written with, instead of LogSeverityNone; false at
/// first.
UTILITY_API bool LogDebugMessages() noexcept;
UTILITY_API void SetLogDebugMessages(bool enable) noexcept;

namespace utility::detail
{

/// What the functions above set, for those that test it inline.
UTILITY_API extern std::atomic<LogSeverity> logLevel;
UTILITY_API extern std::atomic<bool> logDebugMessages;

}
