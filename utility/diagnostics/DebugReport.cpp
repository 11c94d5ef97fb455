#include "utility/diagnostics/internal/DebugReport.h"

#include "utility/platform/Boxes.h"
#include "utility/platform/Debugger.h"
#include "utility/platform/Processes.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

namespace utility
{

namespace
{

constexpr const char* typeNames[] = {"Warning", "Error", "Assertion Failed"};

// With their null. What a report says of its own fits around the longest message.
constexpr std::size_t reportSize = 4096;
constexpr std::size_t messageSize = 4076;

/// -1 while none is being reported.
std::atomic<std::int32_t> assertionsUnderReport = -1;

/// What does not fit, or cannot be formatted, is replaced as a whole.
template <std::size_t size>
void PrintArguments(char (&text)[size], const char* format, std::va_list arguments)
{
    const int length = std::vsnprintf(text, size, format, arguments);
    if (length < 0 || static_cast<std::size_t>(length) >= size)
        std::strcpy(text, "ZeloDbgReport: String too long or IO Error");
}

template <std::size_t size>
void Print(char (&text)[size], const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    PrintArguments(text, format, arguments);
    va_end(arguments);
}

/// Cuts a text to its end where it is too long for a line of the box.
const char* Shortened(char* text)
{
    constexpr std::size_t longest = 64;
    const std::size_t length = std::strlen(text);
    if (length <= longest)
        return text;
    text += length - longest;
    std::fill_n(text, 3, '.');
    return text;
}

int Report(int type, int severity, bool showBox, const char* file, int line, const char* module, const char* format,
           std::va_list arguments)
{
    char message[messageSize] = "";
    if (format != nullptr)
        PrintArguments(message, format, arguments);
    if (showBox)
        return ZeloDbgMessage(type, file, line == 0 ? nullptr : std::to_string(line).c_str(), severity, module,
                              message);

    const bool isAssertion = type == reportAssertion;
    const char* const intro = !isAssertion ? "" : format == nullptr ? "Assertion failed!" : "Assertion failed: ";
    const char* const end = isAssertion ? "\n" : "";
    char text[reportSize];
    if (file == nullptr)
        Print(text, "%s%s%s", intro, message, end);
    else
        Print(text, "%s(%d) : %s%s%s", file, line, intro, message, end);
    platform::Debugger().Output(text);
    return 0;
}

}

int ZeloDbgReport(int type, int severity, bool showBox, const char* file, int line, const char* module,
                  const char* format, ...)
{
    if (type < 0 || type >= std::ssize(typeNames))
        return -1;
    const bool isAssertion = type == reportAssertion;
    if (isAssertion && ++assertionsUnderReport > 0)
    {
        char text[reportSize];
        Print(text, "Second Chance Assertion Failed: File %s, Line %d\n", file, line);
        platform::Debugger().Output(text);
        --assertionsUnderReport;
        platform::Debugger().Break();
        return -1;
    }
    std::va_list arguments;
    va_start(arguments, format);
    const int answer = Report(type, severity, showBox, file, line, module, format, arguments);
    va_end(arguments);
    if (isAssertion)
        --assertionsUnderReport;
    return answer;
}

int ZeloDbgMessage(int type, const char* file, const char* lineText, int severity, const char* module,
                   const char* message)
{
    char program[platform::ProcessService::pathSize];
    if (!platform::Processes().ProgramPath(program))
        std::strcpy(program, "<program name unknown>");
    const auto ifGiven = [](const char* part, const char* text) { return part == nullptr ? "" : text; };
    const bool hasMessage = *message != '\0';
    char text[reportSize];
    // The module's name is deliberately shortened where it is.
    Print(text, "Debug %s!\n\nProgram: %s%s%s%s%s%s%s%s%d%s%s%s\n\n(Press Retry to debug the application)",
          typeNames[type], Shortened(program), ifGiven(module, "\nModule: "),
          module == nullptr ? "" : Shortened(const_cast<char*>(module)), ifGiven(file, "\nFile: "), ifGiven(file, file),
          ifGiven(lineText, "\nLine: "), ifGiven(lineText, lineText), "\nSeverity: ", severity,
          hasMessage ? "\n\n" : "", hasMessage && type == reportAssertion ? "Expression: " : "", message);
    switch (platform::Boxes().AskAbortRetryIgnore("Selvane Production Software Debug Library", text))
    {
    case platform::BoxAnswer::abort:
        platform::Processes().EndProcess();
        return 0;
    case platform::BoxAnswer::retry:
        return 1;
    default:
        return 0;
    }
}

}
