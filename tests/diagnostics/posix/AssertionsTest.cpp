#include "utility/diagnostics/Assertions.h"

#include "tests/support/posix/Child.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

using support::Child;

TEST(PosixAssertionsTest, AssertionIsSwitchedOffByControlIOnTheTerminal)
{
    Child child(
        []
        {
            bool ignored = false;
            const bool first = ZeloAssertFailed("part.cpp", 12, 0, ignored);
            const bool second = ZeloAssertFailed("part.cpp", 12, 0, ignored);
            return !first && !second && ignored ? 1 : 0;
        },
        Child::Terminal::foreground);
    const std::string question = child.ReadUntil("from now on: ");
    EXPECT_NE(question.find("File: part.cpp\r\nLine: 12\r\nSeverity: 0\r\n"), std::string::npos) << question;
    child.Type("\t\n");
    EXPECT_EQ(child.ExitCode(), 1);
}

TEST(PosixAssertionsTest, AssertionThatIsAbortedOnTheTerminalEndsTheProcess)
{
    Child child(
        []
        {
            bool ignored = false;
            ZeloAssertFailed("part.cpp", 12, 0, ignored);
            return 0;
        },
        Child::Terminal::foreground);
    child.ReadUntil("from now on: ");
    child.Type("a\n");
    EXPECT_EQ(child.Signal(), SIGABRT);
}
