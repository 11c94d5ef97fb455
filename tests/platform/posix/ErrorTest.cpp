#include "utility/platform/posix/error/Errno.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Types.h"

#include <gtest/gtest.h>

using namespace utility::platform;

struct ErrnoCase
{
    int value;
    DWORD error;
};

class ErrnoTest : public ::testing::TestWithParam<ErrnoCase>
{
};

TEST_P(ErrnoTest, HasAWindowsNumber)
{
    EXPECT_EQ(posix::ErrorOfErrno(GetParam().value), GetParam().error);
    errno = GetParam().value;
    EXPECT_FALSE(posix::Fail());
    EXPECT_EQ(LastError(), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ErrnoTest,
    ::testing::Values(ErrnoCase{0, 0}, ErrnoCase{ENOENT, 2}, ErrnoCase{ENOTDIR, 3}, ErrnoCase{EMFILE, 4},
                      ErrnoCase{ENFILE, 4}, ErrnoCase{EACCES, 5}, ErrnoCase{EPERM, 5}, ErrnoCase{EISDIR, 5},
                      ErrnoCase{EBADF, 6}, ErrnoCase{ENOMEM, 8}, ErrnoCase{EXDEV, 17}, ErrnoCase{EROFS, 19},
                      ErrnoCase{ESPIPE, 25}, ErrnoCase{EIO, 31}, ErrnoCase{ETXTBSY, 32}, ErrnoCase{EAGAIN, 33},
                      ErrnoCase{EOPNOTSUPP, 50}, ErrnoCase{ENOSYS, 50}, ErrnoCase{EEXIST, 80}, ErrnoCase{EINVAL, 87},
                      ErrnoCase{EPIPE, 109}, ErrnoCase{ENOSPC, 112}, ErrnoCase{EDQUOT, 112}, ErrnoCase{ENOTEMPTY, 145},
                      ErrnoCase{EBUSY, 170}, ErrnoCase{ENAMETOOLONG, 206}, ErrnoCase{EFBIG, 223},
                      ErrnoCase{EFAULT, 487}, ErrnoCase{ELOOP, 1921}, ErrnoCase{ENOTTY, 31}, ErrnoCase{-1, 31}));

TEST(ErrnoOfErrorTest, GoesBackToTheValueWithTheMessage)
{
    EXPECT_EQ(posix::ErrnoOfError(ERROR_SUCCESS), 0);
    EXPECT_EQ(posix::ErrnoOfError(ERROR_FILE_NOT_FOUND), ENOENT);
    EXPECT_EQ(posix::ErrnoOfError(ERROR_ACCESS_DENIED), EACCES);
    EXPECT_EQ(posix::ErrnoOfError(ERROR_DISK_FULL), ENOSPC);
    EXPECT_EQ(posix::ErrnoOfError(ERROR_GEN_FAILURE), EIO);
    EXPECT_EQ(posix::ErrnoOfError(0x2FFFFFFF), -1);
}

TEST(FailOnTest, TellsAMissingFolderFromAMissingFile)
{
    const support::TemporaryFolder folder;
    const auto reason = [](int value, const std::string& path)
    {
        errno = value;
        EXPECT_FALSE(posix::FailOn(path));
        return LastError();
    };
    EXPECT_EQ(reason(ENOENT, (folder / "file").string()), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(reason(ENOENT, (folder / "folder/file").string()), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(reason(ENOENT, "file"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(reason(ENOENT, "/file"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(reason(ENOENT, ""), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(reason(EACCES, (folder / "folder/file").string()), ERROR_ACCESS_DENIED);
}
