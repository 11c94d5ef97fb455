#include "utility/diagnostics/ThreadName.h"

#include "tests/support/RecordingDebugger.h"
#include "utility/platform/Debugger.h"
#include "utility/platform/Threads.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

TEST(ThreadNameTest, DebuggerIsToldTheNumberAndTheName)
{
    support::RecordingDebugger debugger;
    debugger.isPresent = true;
    SetThreadName(7, "tool paths");
    EXPECT_EQ(debugger.questions, 1);
    EXPECT_EQ(debugger.names, (decltype(debugger.names){{7, "tool paths"}}));
}

TEST(ThreadNameTest, WithoutADebuggerItLeavesNoTrace)
{
    support::RecordingDebugger debugger;
    SetThreadName(7, "tool paths");
    EXPECT_TRUE(debugger.names.empty());
}

TEST(ThreadNameTest, SystemsOwnWayOfTellingItIsSwallowed)
{
    // As if there was a debugger: what nobody takes ends nothing.
    utility::platform::Debugger().NameThread(0x7FFFFFFF, "nobody");
    utility::platform::Debugger().NameThread(utility::platform::ThreadNumber(), "tool paths");
}

#ifndef _WIN32 // where the debugger alone has it

TEST(ThreadNameTest, SystemKeepsItsFirstFifteenBytes)
{
    const auto name = []
    {
        std::string text;
        std::getline(std::ifstream("/proc/thread-self/comm"), text);
        return text;
    };
    const std::string before = name();
    const DWORD thread = utility::platform::ThreadNumber();
    utility::platform::Debugger().NameThread(thread, "tool paths of 1234");
    EXPECT_EQ(name(), "tool paths of 1");
    utility::platform::Debugger().NameThread(thread, before.c_str());
    EXPECT_EQ(name(), before);
}

#endif
