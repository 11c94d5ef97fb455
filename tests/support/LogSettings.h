#pragma once

#include "utility/logging/LogMessages.h"

#include <list>

namespace support
{

/// Puts the settings of the log back to what a process begins with.
class LogSettings
{
public:
    LogSettings() { Reset(); }
    LogSettings(const LogSettings&) = delete;
    LogSettings& operator=(const LogSettings&) = delete;
    ~LogSettings() { Reset(); }

private:
    static void Reset()
    {
        SetLogLevel(LogSeverityInformation);
        SetLogDebugMessages(false);
        CLogMessages::SetDefaultLogCapacity(500);
    }
};

/// An owner that nobody had before: a store outlives its owner, so tests must not share one.
inline const void* NewOwner()
{
    static std::list<char> owners;
    return &owners.emplace_back();
}

}
