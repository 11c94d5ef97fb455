#include "utility/platform/posix/files/MappedFile.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"
#include "utility/platform/Files.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

namespace platform = utility::platform;
using utility::platform::posix::MappedFile;

TEST(MappedFileTest, HoldsTheBytesOfTheFileAndKeepsWritersOutMeanwhile)
{
    const support::TemporaryFolder folder;
    const std::wstring path = platform::WideFromPath(folder.File("a", "bytes"));
    {
        const MappedFile file(path.c_str());
        ASSERT_EQ(file.Content().size(), 5u);
        EXPECT_EQ(std::memcmp(file.Content().data(), "bytes", 5), 0);
        EXPECT_EQ(platform::Files().OpenForWriting(path.c_str()), INVALID_HANDLE_VALUE);
        EXPECT_EQ(MappedFile(path.c_str()).Content().size(), 5u);
    }
    const HANDLE writer = platform::Files().OpenForWriting(path.c_str());
    EXPECT_NE(writer, INVALID_HANDLE_VALUE);
    platform::Files().Close(writer);
}

TEST(MappedFileTest, FileThatCannotBeReadIsEmptyAndSaysWhy)
{
    const support::TemporaryFolder folder;
    EXPECT_TRUE(MappedFile(platform::WideFromPath(folder / "missing").c_str()).Content().empty());
    EXPECT_EQ(platform::LastError(), 2u);
    EXPECT_TRUE(MappedFile(platform::WideFromPath(folder.File("empty", "")).c_str()).Content().empty());
    EXPECT_EQ(platform::LastError(), 87u);
    EXPECT_TRUE(MappedFile(platform::WideFromPath(folder.Path()).c_str()).Content().empty());
    EXPECT_EQ(platform::LastError(), 5u);
}
