#include "utility/platform/Debugger.h"

#include "tests/support/GlobalLocale.h"
#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <sys/prctl.h>
#include <sys/ptrace.h>

using support::Child;
using utility::platform::Debugger;

TEST(PosixDebuggerTest, WritesUtf8ToTheErrorStream)
{
    ::testing::internal::CaptureStderr();
    Debugger().Output(L"90\u00B0 \u65E5\n");
    Debugger().Output(L"");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "90\xC2\xB0 \xE6\x97\xA5\n");
}

TEST(PosixDebuggerTest, WritesNarrowTextToTheErrorStreamAsItIs)
{
    ::testing::internal::CaptureStderr();
    Debugger().Output("90\xC2\xB0 \xFF\n");
    Debugger().Output("");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "90\xC2\xB0 \xFF\n");
}

TEST(PosixDebuggerTest, InterruptedTextIsWrittenAllTheSame)
{
    const support::FailingCall failing("write", EINTR);
    ::testing::internal::CaptureStderr();
    Debugger().Output("text\n");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "text\n");
    EXPECT_TRUE(failing.HasFailed());
}

TEST(PosixDebuggerTest, TextThatNobodyTakesIsLost)
{
    const support::FailingCall failing("write", EIO);
    ::testing::internal::CaptureStderr();
    Debugger().Output("lost\n");
    Debugger().Output("text\n");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "text\n");
}

TEST(PosixDebuggerTest, IsThereForAProcessThatIsTraced)
{
    Child traced([] { return ::ptrace(PTRACE_TRACEME) == 0 && Debugger().IsPresent() ? 1 : 0; });
    EXPECT_EQ(traced.ExitCode(), 1);
}

TEST(PosixDebuggerTest, IsThereWhateverTheGlobalLocaleTakesForAGroupOfDigits)
{
    Child traced(
        []
        {
            const support::GlobalLocale scope(support::GroupingLocale('\n'));
            return ::ptrace(PTRACE_TRACEME) == 0 && Debugger().IsPresent() ? 1 : 0;
        });
    EXPECT_EQ(traced.ExitCode(), 1);
}

TEST(PosixDebuggerTest, IsNotThereForANewProcess)
{
    Child untraced([] { return Debugger().IsPresent() ? 1 : 0; });
    EXPECT_EQ(untraced.ExitCode(), 0);
}

TEST(PosixDebuggerTest, IsNotThereForAProcessWithTheNameOfWhatTellsIt)
{
    Child untraced([] { return ::prctl(PR_SET_NAME, "TracerPid: 7") != 0 || Debugger().IsPresent() ? 1 : 0; });
    EXPECT_EQ(untraced.ExitCode(), 0);
}

TEST(PosixDebuggerTest, BreakIsATrap)
{
    Child breaking(
        []
        {
            Debugger().Break();
            return 0;
        });
    EXPECT_EQ(breaking.Signal(), SIGTRAP);
}

TEST(PosixDebuggerTest, BreakThatSomebodyHandlesGoesOn)
{
    static volatile std::sig_atomic_t handled;
    handled = 0;
    const auto earlier = std::signal(SIGTRAP, [](int) { handled = 1; });
    Debugger().Break();
    std::signal(SIGTRAP, earlier);
    EXPECT_EQ(handled, 1);
}
