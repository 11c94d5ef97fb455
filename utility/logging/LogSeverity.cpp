#include "utility/logging/LogSeverity.h"

namespace utility::detail
{

constinit std::atomic<LogSeverity> logLevel = LogSeverityInformation;
constinit std::atomic<bool> logDebugMessages = false;

}

using namespace utility::detail;

LogSeverity GetLogLevel() noexcept { return logLevel.load(std::memory_order_relaxed); }

void SetLogLevel(LogSeverity level) noexcept { logLevel.store(level, std::memory_order_relaxed); }

bool LogDebugMessages() noexcept { return logDebugMessages.load(std::memory_order_relaxed); }

void SetLogDebugMessages(bool enable) noexcept { logDebugMessages.store(enable, std::memory_order_relaxed); }
