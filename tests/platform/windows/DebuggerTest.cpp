#include "utility/platform/Debugger.h"

#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

std::wstring* received = nullptr;

/// The system raises this exception to hand a text to the debugger; without one it goes unnoticed.
LONG CALLBACK Receive(EXCEPTION_POINTERS* fault)
{
    constexpr DWORD wideText = 0x4001000A;
    const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
    if (record.ExceptionCode != wideText || record.NumberParameters < 2)
        return EXCEPTION_CONTINUE_SEARCH;
    *received += reinterpret_cast<const wchar_t*>(record.ExceptionInformation[1]);
    return EXCEPTION_CONTINUE_EXECUTION;
}

}

TEST(WindowsDebuggerTest, HandsTheTextToTheDebugger)
{
    std::wstring text;
    received = &text;
    void* const handler = ::AddVectoredExceptionHandler(1, Receive);
    utility::platform::Debugger().Output(L"90\u00B0 \u65E5\n");
    ::RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(text, L"90\u00B0 \u65E5\n");
}
