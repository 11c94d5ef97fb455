#include "utility/platform/FileSystem.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <string>

using boost::filesystem::path;
using utility::platform::FileSystem;
using utility::platform::LastError;

namespace
{

class FileSystemTest : public ::testing::Test
{
protected:
    std::string Bytes(const char* name) const { return support::TemporaryFolder::BytesOf(m_folder / name); }

    const support::TemporaryFolder m_folder;
};

}

TEST_F(FileSystemTest, SwapLeavesTheEarlierFileUnderTheBackupsName)
{
    const path target = m_folder.File("a", "old");
    const path replacement = m_folder.File("b", "new");
    ASSERT_TRUE(FileSystem().Replace(target, replacement, m_folder / "c")) << LastError();
    EXPECT_EQ(Bytes("a"), "new");
    EXPECT_EQ(Bytes("c"), "old");
    EXPECT_FALSE(exists(replacement));
}

TEST_F(FileSystemTest, SwapWithoutATargetOrAReplacementIsError2)
{
    const path file = m_folder.File("a", "bytes");
    EXPECT_FALSE(FileSystem().Replace(m_folder / "missing", file, m_folder / "c"));
    EXPECT_EQ(LastError(), 2u);
    EXPECT_FALSE(FileSystem().Replace(file, m_folder / "missing", m_folder / "c"));
    EXPECT_EQ(LastError(), 2u);
    EXPECT_EQ(Bytes("a"), "bytes");
    EXPECT_FALSE(exists(m_folder / "c"));
}

TEST_F(FileSystemTest, SwapWithAFolderIsError267)
{
    create_directory(m_folder / "a");
    EXPECT_FALSE(FileSystem().Replace(m_folder / "a", m_folder.File("b", "new"), m_folder / "c"));
    EXPECT_EQ(LastError(), 267u);
    EXPECT_TRUE(is_directory(m_folder / "a"));
    EXPECT_EQ(Bytes("b"), "new");
}

TEST_F(FileSystemTest, FileThatNobodyUsesIsDeletedAtOnce)
{
    EXPECT_TRUE(FileSystem().DeleteWhenUnused(m_folder.File("a", "bytes")));
    EXPECT_FALSE(exists(m_folder / "a"));
    EXPECT_FALSE(FileSystem().DeleteWhenUnused(m_folder / "a"));
    EXPECT_EQ(LastError(), 2u);
}

TEST_F(FileSystemTest, NameOfAFileIsFlushed) { EXPECT_TRUE(FileSystem().FlushName(m_folder.File("a", ""))); }

TEST_F(FileSystemTest, NewFileIsMadeOnlyOnce)
{
    EXPECT_TRUE(FileSystem().CreateNew(m_folder / "a"));
    EXPECT_FALSE(FileSystem().CreateNew(m_folder / "a"));
    EXPECT_EQ(LastError(), 80u);
    EXPECT_FALSE(FileSystem().CreateNew(m_folder.Path()));
    EXPECT_EQ(LastError(), 80u);
    EXPECT_FALSE(FileSystem().CreateNew(m_folder / "folder/a"));
    EXPECT_EQ(LastError(), 3u);
}

TEST_F(FileSystemTest, FileIsMovedInPlaceOfAnotherButNotOfAFolder)
{
    const path file = m_folder.File("a", "bytes");
    EXPECT_TRUE(FileSystem().Move(file, m_folder.File("b", "other")));
    EXPECT_EQ(Bytes("b"), "bytes");
    create_directory(m_folder / "folder");
    EXPECT_FALSE(FileSystem().Move(m_folder / "b", m_folder / "folder"));
    EXPECT_EQ(LastError(), 5u);
    EXPECT_EQ(Bytes("b"), "bytes");
}

TEST_F(FileSystemTest, FileThatIsMissingHasNoLength)
{
    std::uint64_t length = 7;
    EXPECT_FALSE(FileSystem().Length(m_folder / "missing", length));
    EXPECT_EQ(LastError(), 2u);
    EXPECT_EQ(length, 7u);
    EXPECT_FALSE(FileSystem().IsReadable(m_folder / "missing"));
    EXPECT_EQ(FileSystem().LongName(m_folder / "missing"), "");
    EXPECT_EQ(LastError(), 2u);
}

TEST_F(FileSystemTest, PathWithANullIsRefusedByEachOperation)
{
    const path good = m_folder.File("a", "bytes");
    const path bad = good / std::string("x\0y", 3);
    const auto refused = [](bool result)
    {
        const bool is123 = LastError() == 123;
        utility::platform::SetLastError(0);
        return !result && is123;
    };
    std::uint64_t length = 0;
    EXPECT_TRUE(refused(FileSystem().Replace(bad, good, good)));
    EXPECT_TRUE(refused(FileSystem().Replace(good, bad, good)));
    EXPECT_TRUE(refused(FileSystem().Replace(good, good, bad)));
    EXPECT_TRUE(refused(FileSystem().DeleteWhenUnused(bad)));
    EXPECT_TRUE(refused(FileSystem().Move(bad, good)));
    EXPECT_TRUE(refused(FileSystem().Move(good, bad)));
    EXPECT_TRUE(refused(FileSystem().CreateNew(bad)));
    EXPECT_TRUE(refused(FileSystem().IsReadable(bad)));
    EXPECT_TRUE(refused(FileSystem().Length(bad, length)));
    EXPECT_TRUE(refused(!FileSystem().LongName(bad).empty()));
    EXPECT_TRUE(refused(!FileSystem().ShortName(bad).empty()));
    EXPECT_EQ(Bytes("a"), "bytes");
}
