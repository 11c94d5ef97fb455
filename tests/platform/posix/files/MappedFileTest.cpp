#include "utility/platform/posix/files/MappedFile.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"
#include "utility/platform/Files.h"

#include <gtest/gtest.h>

namespace platform = utility::platform;
using utility::platform::posix::MappedFile;

TEST(MappedFileTest, HoldsTheBytesOfTheFileAndKeepsWritersOutMeanwhile)
{
    const support::TemporaryFolder folder;
    const boost::filesystem::path path = folder.File("a", "bytes");
    {
        const MappedFile file(path);
        ASSERT_EQ(file.Content().size(), 5u);
        EXPECT_EQ(std::memcmp(file.Content().data(), "bytes", 5), 0);
        EXPECT_EQ(platform::Files().OpenForWriting(path), INVALID_HANDLE_VALUE);
        EXPECT_EQ(MappedFile(path).Content().size(), 5u);
    }
    const HANDLE writer = platform::Files().OpenForWriting(path);
    EXPECT_NE(writer, INVALID_HANDLE_VALUE);
    platform::Files().Close(writer);
}

TEST(MappedFileTest, FileThatCannotBeReadIsEmptyAndSaysWhy)
{
    const support::TemporaryFolder folder;
    EXPECT_TRUE(MappedFile(folder / "missing").Content().empty());
    EXPECT_EQ(platform::LastError(), 2u);
    EXPECT_TRUE(MappedFile(folder.File("empty", "")).Content().empty());
    EXPECT_EQ(platform::LastError(), 87u);
    EXPECT_TRUE(MappedFile(folder.Path()).Content().empty());
    EXPECT_EQ(platform::LastError(), 5u);
}
