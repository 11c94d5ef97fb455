#include "utility/platform/posix/handles/Descriptor.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

using support::FailingCall;
using utility::platform::posix::AboveStandardStreams;

TEST(DescriptorTest, ThoseOfTheStandardStreamsAreMovedAndFreeAgain)
{
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    {
        support::Child child(
            [standard]
            {
                const int moved = AboveStandardStreams(standard);
                return moved > STDERR_FILENO && ::fcntl(moved, F_GETFD) == FD_CLOEXEC && ::fcntl(standard, F_GETFD) < 0
                           ? 0
                           : 1;
            });
        EXPECT_EQ(child.ExitCode(), 0) << standard;
    }
}

TEST(DescriptorTest, OthersStayAndSoDoesTheReasonForNone)
{
    EXPECT_EQ(AboveStandardStreams(3), 3);
    errno = ENOENT;
    EXPECT_EQ(AboveStandardStreams(-1), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST(DescriptorTest, OneThatCannotBeMovedIsClosedAndSaysWhy)
{
    support::Child child(
        []
        {
            const FailingCall full("fcntl", EMFILE);
            const FailingCall closing("close", EIO);
            const bool failed = AboveStandardStreams(STDIN_FILENO) == -1 && errno == EMFILE;
            return failed && ::fcntl(STDIN_FILENO, F_GETFD) < 0 ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}
