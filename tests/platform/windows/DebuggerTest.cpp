#include "utility/platform/Debugger.h"

#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using utility::platform::Debugger;

extern "C" decltype(&::RaiseException) __imp_RaiseException;

namespace
{

constexpr DWORD wideText = 0x4001000A;
constexpr DWORD narrowText = 0x40010006;

std::string received;
int breaks = 0;

/// The system raises an exception to hand a text to the debugger: a wide one, or where that is unknown a narrow one.
LONG CALLBACK Receive(EXCEPTION_POINTERS* fault)
{
    const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
    switch (record.ExceptionCode)
    {
    case wideText:
        for (const auto* text = reinterpret_cast<const wchar_t*>(record.ExceptionInformation[1]); *text != 0; ++text)
            received += static_cast<char>(*text);
        return EXCEPTION_CONTINUE_EXECUTION;
    case narrowText:
        received += reinterpret_cast<const char*>(record.ExceptionInformation[1]);
        return EXCEPTION_CONTINUE_EXECUTION;
    case EXCEPTION_BREAKPOINT:
        ++breaks;
        // Behind the instruction, which has one byte.
        ++fault->ContextRecord->Rip;
        return EXCEPTION_CONTINUE_EXECUTION;
    default:
        return EXCEPTION_CONTINUE_SEARCH;
    }
}

/// Stands where a debugger would.
class WindowsDebuggerTest : public ::testing::Test
{
protected:
    WindowsDebuggerTest() : m_handler(::AddVectoredExceptionHandler(1, Receive))
    {
        received.clear();
        breaks = 0;
    }
    ~WindowsDebuggerTest() override { ::RemoveVectoredExceptionHandler(m_handler); }

private:
    void* m_handler;
};

/// What a debugger sees of a program that runs under it.
struct Seen
{
    DWORD exitCode = STILL_ACTIVE;
    int texts = 0;
    int breaks = 0;
};

constexpr const wchar_t* debugged = L"UTILITY_TESTS_DEBUGGED";

/// Runs one test again, in a process of its own where `debugged` is set.
Seen RunUnderDebugger(const std::wstring& test)
{
    wchar_t program[MAX_PATH];
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring command = L'"' + std::wstring(program) + L"\" --gtest_filter=" + test;
    ::SetEnvironmentVariableW(debugged, L"1");
    // What this process runs of the tests, and where it lists them, is not for that one.
    for (const wchar_t* const name : {L"GTEST_TOTAL_SHARDS", L"GTEST_SHARD_INDEX", L"GTEST_OUTPUT"})
        ::SetEnvironmentVariableW(name, nullptr);
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    PROCESS_INFORMATION process{};
    Seen seen;
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, DEBUG_ONLY_THIS_PROCESS, nullptr, nullptr,
                          &start, &process))
    {
        ADD_FAILURE() << "the process does not start: " << ::GetLastError();
        return seen;
    }
    for (DEBUG_EVENT event; ::WaitForDebugEvent(&event, 60000);)
    {
        DWORD handled = DBG_CONTINUE;
        if (event.dwDebugEventCode == OUTPUT_DEBUG_STRING_EVENT)
            ++seen.texts;
        else if (event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT)
        {
            const DWORD code = event.u.Exception.ExceptionRecord.ExceptionCode;
            seen.breaks += code == EXCEPTION_BREAKPOINT;
            handled = code == EXCEPTION_BREAKPOINT ? DBG_CONTINUE : DBG_EXCEPTION_NOT_HANDLED;
        }
        ::ContinueDebugEvent(event.dwProcessId, event.dwThreadId, handled);
        if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT)
        {
            seen.exitCode = event.u.ExitProcess.dwExitCode;
            break;
        }
    }
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return seen;
}

}

TEST_F(WindowsDebuggerTest, HandsWideTextToTheDebugger)
{
    Debugger().Output(L"one line\n");
    EXPECT_EQ(received, "one line\n");
}

TEST_F(WindowsDebuggerTest, HandsNarrowTextToTheDebugger)
{
    Debugger().Output("one line\n");
    EXPECT_EQ(received, "one line\n");
}

TEST_F(WindowsDebuggerTest, BreakIsABreakpoint)
{
    Debugger().Break();
    EXPECT_EQ(breaks, 1);
}

TEST(WindowsDebuggerSeesTest, TextsAndBreakOfAProgramThatKnowsOfIt)
{
    if (::GetEnvironmentVariableW(debugged, nullptr, 0) != 0)
    {
        ASSERT_TRUE(Debugger().IsPresent());
        Debugger().Output("here");
        Debugger().Break();
        return;
    }
    const Seen seen = RunUnderDebugger(L"WindowsDebuggerSeesTest.TextsAndBreakOfAProgramThatKnowsOfIt");
    ::SetEnvironmentVariableW(debugged, nullptr);
    EXPECT_EQ(seen.exitCode, 0u);
    EXPECT_EQ(seen.texts, 1);
    // The first is the system's own, before the program starts.
    EXPECT_EQ(seen.breaks, 2);
}

TEST(WindowsDebuggerSeesTest, NothingOfThisProgram) { EXPECT_EQ(Debugger().IsPresent(), ::IsDebuggerPresent() != 0); }

TEST(WindowsThreadNameTest, DebuggerIsGivenTheRecordWithACountOfSix)
{
    static DWORD code, flags, count;
    static ULONG_PTR given[6];
    const support::ImportedCall raise(__imp_RaiseException,
                                      [](DWORD raised, DWORD with, DWORD size, const ULONG_PTR* arguments)
                                      {
                                          code = raised;
                                          flags = with;
                                          count = size;
                                          std::memcpy(given, arguments, sizeof(given));
                                      });
    const char name[] = "tool paths";
    Debugger().NameThread(0x89ABCDEF, name);
    EXPECT_EQ(code, 0x406D1388u);
    EXPECT_EQ(flags, 0u);
    EXPECT_EQ(count, 6u);
    EXPECT_EQ(static_cast<DWORD>(given[0]), 0x1000u);
    EXPECT_EQ(given[1], reinterpret_cast<ULONG_PTR>(name));
    EXPECT_EQ(given[2], 0x89ABCDEFu) << "and 0 behind it";
    for (const ULONG_PTR each : {given[3], given[4], given[5]})
        EXPECT_EQ(each, 0u);
}
