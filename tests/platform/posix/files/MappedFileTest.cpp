#include "utility/platform/posix/files/MappedFile.h"

#include "tests/support/ForwardingFiles.h"
#include "tests/support/Substitute.h"
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

TEST(MappedFileTest, ReasonOutlivesTheCleanUp)
{
    const support::TemporaryFolder folder;
    const auto path = folder.File("a", "bytes");
    support::ForwardingFiles files;
    const support::Substitute<platform::FileService> scope(platform::FilesSlot(), files);
    for (const char* const call : {"Length", "MapReadOnly", "ViewAll"})
    {
        files.failing = {call};
        EXPECT_TRUE(MappedFile(path).Content().empty()) << call;
        EXPECT_EQ(platform::LastError(), ERROR_NOT_ENOUGH_MEMORY) << call;
    }
}

TEST(MappedFileTest, FileOfMoreThanFourGigabytesIsHeldWhole)
{
    const support::TemporaryFolder folder;
    const auto path = folder.File("a", "");
    constexpr std::uint64_t size = 0x100000005;
    folder.WriteAt(path, size - 4, "last");
    const MappedFile file(path);
    ASSERT_EQ(file.Content().size(), size);
    EXPECT_EQ(std::memcmp(&file.Content().back() - 3, "last", 4), 0);
}
