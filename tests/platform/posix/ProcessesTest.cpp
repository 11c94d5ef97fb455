#include "utility/platform/Processes.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "utility/platform/Memory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <string_view>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

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

// A sanitizer is not ready for a process whose first thread has ended.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

TEST(ProcessesTest, ProgramAndItsMemoryAreKnownAfterTheFirstThreadHasEnded)
{
    Child child(
        []
        {
            std::thread(
                []
                {
                    char path[ProcessService::pathSize];
                    while (::readlink("/proc/self/exe", path, sizeof(path)) > 0)
                        std::this_thread::yield();
                    MEMORYSTATUSEX status = {};
                    status.dwLength = sizeof(status);
                    utility::platform::MemoryRegion region;
                    const auto space = utility::platform::Memory().OpenAddressSpace();
                    const bool isKnown = Processes().ProgramPath(path) && utility::platform::Memory().Status(status) &&
                                         status.ullAvailVirtual < status.ullTotalVirtual &&
                                         space->RegionAt(0, region) && region.size < status.ullTotalVirtual;
                    ::_exit(isKnown ? 1 : 2);
                })
                .detach();
            ::syscall(SYS_exit, 0);
            return 0;
        });
    EXPECT_EQ(child.ExitCode(), 1);
}

#endif

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
