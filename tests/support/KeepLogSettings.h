#pragma once

#include "utility/logging/LogMessages.h"

namespace support
{

/// Puts the log level and the switch of the debug messages, which are the process's, back as they were.
class KeepLogSettings
{
public:
    KeepLogSettings() : m_level(GetLogLevel()), m_debugMessages(LogDebugMessages()) {}
    KeepLogSettings(const KeepLogSettings&) = delete;
    KeepLogSettings& operator=(const KeepLogSettings&) = delete;
    ~KeepLogSettings()
    {
        SetLogLevel(m_level);
        SetLogDebugMessages(m_debugMessages);
    }

private:
    LogSeverity m_level;
    bool m_debugMessages;
};

}
