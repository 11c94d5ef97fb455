#include "utility/platform/posix/descriptors/Descriptor.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

using support::FailingCall;
using utility::platform::posix::AboveStandardStreams;
using utility::platform::posix::MakeFile;

TEST(DescriptorTest, ThoseOfTheStandardStreamsAreMovedAndFreeAgain)
{
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    {
        support::Child child(
            [standard]
            {
                for (const int other : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                {
                    if (other != standard)
                        ::close(other);
                }
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

TEST(DescriptorTest, FileIsMadeWhereThereIsNoneAndWithItsMode)
{
    const support::TemporaryFolder folder;
    const auto path = folder / "new";
    const int made = MakeFile(path.c_str(), 0600);
    EXPECT_EQ(::fcntl(made, F_GETFL) & O_ACCMODE, O_RDWR);
    EXPECT_EQ(::fcntl(made, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::close(made), 0);
    EXPECT_EQ(status(path).permissions(), boost::filesystem::owner_read | boost::filesystem::owner_write);
    EXPECT_EQ(MakeFile(path.c_str(), 0600), -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_TRUE(exists(path));
}

TEST(DescriptorTest, FileWhoseDescriptorCannotBeMovedIsNotMadeAndSaysWhy)
{
    const support::TemporaryFolder folder;
    const auto path = folder / "new";
    support::Child child(
        [&path]
        {
            ::close(STDIN_FILENO);
            const auto fails = [&path]
            {
                const FailingCall full("fcntl", EMFILE);
                return MakeFile(path.c_str(), 0600) == -1 && errno == EMFILE;
            };
            if (!fails() || ::fcntl(STDIN_FILENO, F_GETFD) >= 0 || exists(path))
                return 1;
            const FailingCall removing("unlink", EIO);
            const bool saysWhy = fails() && removing.HasFailed();
            boost::filesystem::remove(path);
            return saysWhy ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}
