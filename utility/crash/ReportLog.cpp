#include "utility/crash/ReportLog.h"

#include "utility/crash/internal/ReportLog.h"
#include "utility/crash/internal/UtcTime.h"
#include "utility/platform/CrashedProcess.h"
#include "utility/platform/formats/Utf8.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>

void KeepLogForExceptionReports() noexcept { utility::detail::KeepLog(); }

namespace utility::detail
{

namespace
{

// std::format is not there yet, and a stream would ask a locale.
template <class... Values>
std::string Formatted(const char* format, Values... values)
{
    char text[80];
    std::snprintf(text, std::size(text), format, values...);
    return text;
}

std::string Time(std::int64_t microseconds)
{
    // What is damaged has any number, and not each is a day.
    constexpr std::int64_t endOf9999 = 253'402'300'799'999'999;
    const std::chrono::microseconds limited(std::clamp(microseconds, -endOf9999, endOf9999));
    const UtcTime utc{std::chrono::sys_time<std::chrono::microseconds>(limited)};
    return Formatted("%04d-%02u-%02u %02d:%02d:%02d.%06d", utc.year, utc.month, utc.day, utc.Hours(), utc.Minutes(),
                     utc.Seconds(), static_cast<int>(utc.time.subseconds().count()));
}

std::string Name(LogSeverity severity)
{
    switch (severity)
    {
    case LogSeverityNone:
        return "none";
    case LogSeverityInformation:
        return "information";
    case LogSeverityWarning:
        return "warning";
    case LogSeverityError:
        return "error";
    case LogSeverityTiming:
        return "timing";
    default:
        return std::to_string(static_cast<std::int32_t>(severity));
    }
}

std::string Text(const KeptMessage& message)
{
    std::wstring text(message.Text());
    const bool isCut = message.IsCut();
    // The line feed that messages end in.
    if (!isCut && text.ends_with(L'\n'))
        text.pop_back();
    std::ranges::replace_if(
        text, [](wchar_t c) { return c < L' ' || (c >= L'\x7F' && c < L'\xA0') || c == 0x2028 || c == 0x2029; }, L' ');
    return platform::formats::Utf8FromWide(text) + (isCut ? "…" : "");
}

std::string Line(const KeptMessage& message)
{
    const std::string ahead =
        Formatted("%s %-11s %016llx %u ", Time(message.time).c_str(), Name(message.severity).c_str(),
                  static_cast<unsigned long long>(message.owner), message.thread);
    return ahead + Text(message) + '\n';
}

}

void WriteReportLog(std::uint64_t block, const ReadMemory& read, const boost::filesystem::path& report) noexcept
try
{
    const boost::filesystem::path path = boost::filesystem::path(report).replace_extension(".log.txt");
    if (const std::unique_ptr<std::ostream> file = platform::CrashedProcess().MakeLog(path))
        EachKeptMessage(block, read, [&file](const KeptMessage& message) { *file << Line(message); });
}
catch (const std::exception&)
{
    // Without memory for more.
}

void WriteReportLog(const boost::filesystem::path& report) noexcept
{
    if (TheKeptLog() == nullptr)
        return;
    const auto read = [](std::uint64_t address, void* bytes, std::size_t size)
    {
        std::memcpy(bytes, reinterpret_cast<const void*>(address), size);
        return true;
    };
    WriteReportLog(reinterpret_cast<std::uintptr_t>(TheKeptLog()), read, report);
}

}
