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
    const DWORD thread = utility::platform::ThreadNumber();
    std::string before;
    std::getline(std::ifstream("/proc/self/comm"), before);
    utility::platform::Debugger().NameThread(thread, "tool paths of 1234");
    std::string now;
    if (std::getline(std::ifstream("/proc/thread-self/comm"), now))
    {
        EXPECT_EQ(now, "tool paths of 1");
    }
    utility::platform::Debugger().NameThread(thread, before.c_str());
    utility::platform::Debugger().NameThread(0x7FFFFFFF, "nobody");
}
