#include "utility/platform/Processes.h"

#include "tests/support/windows/ThreadInput.h"

#include <gtest/gtest.h>

#include <string_view>

using support::WaitingQuit;
using utility::platform::Processes;
using utility::platform::ProcessService;

TEST(ProcessesTest, QuitMessageIsTakenOnceWithItsExitCode)
{
    EXPECT_EQ(Processes().TakeQuitMessage(), std::nullopt);
    ::PostQuitMessage(42);
    EXPECT_EQ(Processes().TakeQuitMessage(), 42);
    EXPECT_EQ(Processes().TakeQuitMessage(), std::nullopt);
}

TEST(ProcessesTest, QuitMessageThatIsPostedArrivesInTheQueue)
{
    Processes().PostQuitMessage(-7);
    EXPECT_EQ(WaitingQuit(), -7);
}

TEST(ProcessesTest, TakingAQuitMessageLeavesTheOthers)
{
    ::PostThreadMessageW(::GetCurrentThreadId(), WM_APP, 5, 6);
    EXPECT_EQ(Processes().TakeQuitMessage(), std::nullopt);
    MSG message;
    EXPECT_TRUE(::PeekMessageW(&message, nullptr, WM_APP, WM_APP, PM_REMOVE));
}

TEST(ProcessesTest, ProgramPathIsThatOfTheTests)
{
    char path[ProcessService::pathSize];
    ASSERT_TRUE(Processes().ProgramPath(path));
    EXPECT_TRUE(std::string_view(path).ends_with("\\UtilityTests.exe")) << path;
}

TEST(ProcessesDeathTest, EndOfTheProcessIsExitCodeThree)
{
    EXPECT_EXIT(Processes().EndProcess(), ::testing::ExitedWithCode(3), "");
}
