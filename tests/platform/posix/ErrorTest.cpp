#include "utility/platform/posix/error/Errno.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/failures/Failures.h"
#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <unistd.h>

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

TEST(LatestErrorTest, IsThatOfTheCallThatFailedLastWhoeverMadeIt)
{
    SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(LatestError(), ERROR_ACCESS_DENIED);
    errno = 0;
    SetLastError(ERROR_BAD_EXE_FORMAT);
    EXPECT_EQ(::access("/missing", F_OK), -1);
    EXPECT_EQ(LatestError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(LastError(), ERROR_BAD_EXE_FORMAT);
    SetLastError(ERROR_BAD_EXE_FORMAT);
    EXPECT_EQ(LatestError(), ERROR_BAD_EXE_FORMAT);
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(::access("/missing", F_OK), -1);
    EXPECT_EQ(LatestError(), ERROR_FILE_NOT_FOUND);
    errno = 0;
    EXPECT_EQ(LatestError(), ERROR_SUCCESS);
}

TEST(LatestErrorTest, IsWhatAFailureOfTheHostsOwnCallSays)
{
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(::access("/missing", F_OK), -1);
    COSException failure;
    wchar_t text[256];
    wchar_t expected[256];
    ASSERT_EQ(failure.GetErrorMessage(text, 256, nullptr), 1);
    ASSERT_EQ(COSException(ERROR_FILE_NOT_FOUND).GetErrorMessage(expected, 256, nullptr), 1);
    EXPECT_STREQ(text, expected);
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
