#include "utility/logging/TimeLogger.h"

#include "utility/framework/String.h"
#include "utility/logging/internal/TimeLine.h"
#include "utility/logging/LogStream.h"
#include "utility/platform/Clock.h"
#include "utility/platform/Locale.h"

#include <boost/format.hpp>
#include <chrono>
#include <cwchar>
#include <limits>
#include <locale>

namespace
{

std::int64_t Now()
{
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>;
    return std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::int64_t Truncated(double value)
{
    constexpr double limit = 9223372036854775808.0;
    return value >= -limit && value < limit ? static_cast<std::int64_t>(value)
                                            : std::numeric_limits<std::int64_t>::min();
}

}

std::wstring utility::detail::TimeLine(std::int64_t begin, std::int64_t end, const std::wstring& text)
{
    const std::tm local = platform::LocalTime(begin / 10000000);
    wchar_t time[80];
    std::swprintf(time, 80, L"%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec);
    const auto milliseconds = static_cast<std::int32_t>(begin / 10000 % 1000);
    const auto step = static_cast<std::int32_t>((end - begin) / 10000);
    // Whatever the host's global locale, which may group digits.
    boost::wformat line(L"%s.%03d %13d %s", std::locale::classic());
    return (line % time % milliseconds % step % text).str();
}

CTimeLogger::CTimeLogger() : m_nStartTicks(Now()), m_nLastTicks(m_nStartTicks) {}

std::wstring CTimeLogger::LogNextTimeStr(const std::wstring& text)
{
    const std::int64_t now = Now();
    std::wstring line = utility::detail::TimeLine(m_nLastTicks, now, text);
    m_nLastTicks = now;
    return line;
}

void CTimeLogger::LogNextTime(const std::wstring& text) { m_strLog += LogNextTimeStr(text) + L'\n'; }

std::wstring CTimeLogger::GetTimeLog() const { return m_strLog; }

void CTimeLogger::PrintNextTime(const CPlanDatabase* database, const std::wstring& text)
{
    const std::wstring line = LogNextTimeStr(text);
    DbgLogFile(LogSeverityTiming, database) << line;
}

void CTimeLogger::PrintTimeLog(const CPlanDatabase* database)
{
    DbgLogFile(LogSeverityTiming, database) << m_strLog;
    m_strLog.clear();
}

std::wstring FormatMachiningTime(double seconds)
{
    auto& locale = utility::platform::Locale();
    wchar_t separator[256];
    if (locale.TimeSeparator(locale.UserDefault(), separator, 256) == 0)
        separator[0] = L'\0';
    const std::int64_t total = Truncated(seconds);
    CStringW text;
    text.Format(L"%02I64d%s%02d%s%02d", total / 3600, separator, static_cast<int>(total / 60 % 60), separator,
                static_cast<int>(total % 60));
    return text.GetString();
}
