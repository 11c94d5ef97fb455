#include "utility/platform/Debugger.h"

#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

std::string received;

/// The system raises an exception to hand a text to the debugger: a wide one, or where that is unknown a narrow one.
LONG CALLBACK Receive(EXCEPTION_POINTERS* fault)
{
    constexpr DWORD wideText = 0x4001000A;
    constexpr DWORD narrowText = 0x40010006;
    const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
    if (record.ExceptionCode == wideText)
    {
        for (const auto* text = reinterpret_cast<const wchar_t*>(record.ExceptionInformation[1]); *text != 0; ++text)
            received += static_cast<char>(*text);
        return EXCEPTION_CONTINUE_EXECUTION;
    }
    if (record.ExceptionCode != narrowText)
        return EXCEPTION_CONTINUE_SEARCH;
    received += reinterpret_cast<const char*>(record.ExceptionInformation[1]);
    return EXCEPTION_CONTINUE_EXECUTION;
}

}

TEST(WindowsDebuggerTest, HandsTheTextToTheDebugger)
{
    received.clear();
    void* const handler = ::AddVectoredExceptionHandler(1, Receive);
    utility::platform::Debugger().Output(L"one line\n");
    ::RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(received, "one line\n");
}
