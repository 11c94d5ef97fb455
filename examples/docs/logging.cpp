#include "utility/Utility.h"

#include <iostream>

namespace
{

/// Whoever messages are for: an address and nothing more.
const int job = 7;

void Show(const wchar_t* text) { std::cout << from_utf(text, 65001); }

void ShowMessages()
{
    boost::circular_buffer_space_optimized<CLogMessage> messages;
    CLogMessages::instance(&job).pop(messages);
    for (const CLogMessage& message : messages)
    {
        std::cout << message.m_eSeverity << ' ';
        Show(message.m_strMessage.c_str());
    }
}

}

int main()
{
    LogFile(LogSeverityWarning, &job) << L"Tool " << 12 << L" lacks " << 0.25 << L" mm";
    DbgLogFile(LogSeverityInformation, &job) << L"not kept";
    SetLogDebugMessages(true);
    DbgLogFile(LogSeverityInformation, &job) << L"kept";
    SetLogLevel(LogSeverityWarning);
    LogFile(LogSeverityInformation, &job) << L"not kept either";
    LogFile(LogSeverityTiming, &job) << L"machined in " << FormatMachiningTime(3725.9);
    ShowMessages();

    // A ring: the oldest message gives its place to the newest.
    CLogMessages::instance(&job).SetLogCapacity(2);
    for (int block = 10; block <= 50; block += 10)
        LogFile(LogSeverityError, &job) << L"N" << block;
    ShowMessages();

    // The debugger's output, which a host may take for itself.
    utility::platform::SetDebuggerSink(&Show);
    dbg() << L"cache " << 3 << L" of " << 4 << L'\n';
    utility::platform::SetDebuggerSink(nullptr);
}
