#include "utility/diagnostics/Assertions.h"

#include "tests/support/windows/BoxAnswerer.h"
#include "tests/support/windows/ThreadInput.h"

#include <gtest/gtest.h>

#include <string>

using support::BoxAnswerer;
using support::HoldControl;
using support::WaitingQuit;

TEST(WindowsAssertionsDeathTest, AssertionThatIsAbortedEndsTheProcess)
{
    EXPECT_EXIT(
        {
            BoxAnswerer answerer(IDABORT);
            bool ignored = false;
            ZeloAssertFailed("part.cpp", 12, 0, ignored);
        },
        ::testing::ExitedWithCode(3), "");
}

TEST(WindowsAssertionsTest, QuitMessagePendingAtAnAssertionSurvivesTheBox)
{
    ::PostQuitMessage(42);
    BoxAnswerer answerer(IDIGNORE);
    bool ignored = false;
    EXPECT_FALSE(ZeloAssertFailed("part.cpp", 12, 0, ignored));
    EXPECT_EQ(answerer.Title(), L"Selvane Production Software Debug Library");
    EXPECT_NE(answerer.Text().find(L"\nFile: part.cpp\nLine: 12\nSeverity: 0\n"), std::wstring::npos);
    EXPECT_EQ(WaitingQuit(), 42);
}

TEST(WindowsAssertionsTest, RetryOfAnAssertionTellsTheCallerToBreak)
{
    BoxAnswerer answerer(IDRETRY);
    bool ignored = false;
    EXPECT_TRUE(ZeloAssertFailed("part.cpp", 12, 0, ignored));
}

TEST(WindowsAssertionsTest, ControlHeldWhenAnAssertionIsIgnoredSwitchesItOff)
{
    bool ignored = false;
    {
        BoxAnswerer answerer(IDIGNORE);
        HoldControl(true);
        EXPECT_FALSE(ZeloAssertFailed("part.cpp", 12, 0, ignored));
        HoldControl(false);
    }
    EXPECT_TRUE(ignored);
    EXPECT_FALSE(ZeloAssertFailed("part.cpp", 12, 0, ignored));
}
