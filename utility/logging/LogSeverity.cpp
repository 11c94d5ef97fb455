#include "utility/logging/LogSeverity.h"

#include <atomic>

namespace
{

constinit std::atomic<LogSeverity> logLevel = LogSeverityInformation;
constinit std::atomic<bool> debugMessages = false;

}

LogSeverity GetLogLevel() noexcept { return logLevel.load(std::memory_order_relaxed); }

void SetLogLevel(LogSeverity level) noexcept { logLevel.store(level, std::memory_order_relaxed); }

bool LogDebugMessages() noexcept { return debugMessages.load(std::memory_order_relaxed); }

void SetLogDebugMessages(bool enable) noexcept { debugMessages.store(enable, std::memory_order_relaxed); }
