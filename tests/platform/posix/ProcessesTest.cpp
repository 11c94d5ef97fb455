#include "utility/platform/Processes.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <string_view>

using support::Child;
using utility::platform::Processes;
using utility::platform::ProcessService;

TEST(ProcessesTest, ThreadHasNoQuitMessage)
{
    EXPECT_EQ(Processes().TakeQuitMessage(), std::nullopt);
    Processes().PostQuitMessage(42);
    EXPECT_EQ(Processes().TakeQuitMessage(), std::nullopt);
}

TEST(ProcessesTest, ProgramPathIsThatOfTheTests)
{
    char path[ProcessService::pathSize];
    ASSERT_TRUE(Processes().ProgramPath(path));
    EXPECT_TRUE(std::string_view(path).ends_with("/UtilityTests")) << path;
    EXPECT_EQ(path[0], '/');
}

TEST(ProcessesTest, ProgramPathThatTheSystemDoesNotTellIsAFailure)
{
    const support::FailingCall failing("readlink", EACCES);
    char path[ProcessService::pathSize];
    EXPECT_FALSE(Processes().ProgramPath(path));
    EXPECT_TRUE(failing.HasFailed());
}

TEST(ProcessesTest, EndOfTheProcessIsTheAbortSignal)
{
    Child child(
        []
        {
            Processes().EndProcess();
            return 0;
        });
    EXPECT_EQ(child.Signal(), SIGABRT);
}

TEST(ProcessesTest, ProcessThatIgnoresTheAbortSignalEndsWithCodeThree)
{
    Child child(
        []
        {
            ::signal(SIGABRT, SIG_IGN);
            Processes().EndProcess();
            return 0;
        });
    EXPECT_EQ(child.ExitCode(), 3);
}
