#include "utility/files/NamedFiles.h"

#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/framework/FileException.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <memory>

using utility::platform::WideFromPath;

namespace
{

class NamedFilesTest : public ::testing::Test
{
protected:
    const support::TemporaryFolder m_folder;
    const boost::filesystem::path m_path = m_folder.File("a", "bytes");
    const std::wstring m_wide = WideFromPath(m_path);
};

/// What RenameFile throws; null if it throws nothing.
template <class Name>
std::unique_ptr<CFileException> FailureOfRename(const Name& from, const Name& to)
{
    try
    {
        RenameFile(from, to);
    }
    catch (CFileException* failure)
    {
        return std::unique_ptr<CFileException>(failure);
    }
    return nullptr;
}

}

TEST_F(NamedFilesTest, RenamedFileHasItsNewNameAndNotTheOldOne)
{
    RenameFile(m_path, m_folder / "b");
    EXPECT_FALSE(exists(m_path));
    EXPECT_EQ(m_folder.BytesOf(m_folder / "b"), "bytes");
    RenameFile(WideFromPath(m_folder / "b"), m_wide);
    RenameFile(m_wide.c_str(), (m_wide + L"c").c_str());
    EXPECT_EQ(m_folder.BytesOf(m_folder / "ac"), "bytes");
}

TEST_F(NamedFilesTest, RenamedFileTakesThePlaceOfAnother)
{
    m_folder.File("b", "other");
    RenameFile(m_path, m_folder / "b");
    EXPECT_FALSE(exists(m_path));
    EXPECT_EQ(m_folder.BytesOf(m_folder / "b"), "bytes");
}

TEST_F(NamedFilesTest, FailedRenameThrowsWithTheEarlierName)
{
    const auto missing = FailureOfRename(m_folder / "missing", m_folder / "b");
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->m_cause, CFileException::fileNotFound);
    EXPECT_EQ(missing->m_lOsError, 2);
    EXPECT_EQ(missing->m_strFileName, WideFromPath(m_folder / "missing"));

    const auto beyond = FailureOfRename(m_path, m_folder / "folder/b");
    ASSERT_TRUE(beyond);
    EXPECT_EQ(beyond->m_lOsError, 3);
    EXPECT_EQ(beyond->m_strFileName, m_wide);
    EXPECT_EQ(m_folder.BytesOf(m_path), "bytes");
}

TEST_F(NamedFilesTest, FileIsMadeEmptyIfItIsNotThere)
{
    EXPECT_TRUE(CreateFileIfNotPresent(m_folder / "b"));
    EXPECT_TRUE(exists(m_folder / "b"));
    EXPECT_EQ(file_size(m_folder / "b"), 0u);
    EXPECT_TRUE(CreateFileIfNotPresent(m_wide + L"w"));
    EXPECT_TRUE(CreateFileIfNotPresent((m_wide + L"v").c_str()));
    EXPECT_TRUE(exists(m_folder / "aw"));
    EXPECT_TRUE(exists(m_folder / "av"));
}

TEST_F(NamedFilesTest, FileThatIsThereIsLeftAsItIs)
{
    EXPECT_TRUE(CreateFileIfNotPresent(m_path));
    EXPECT_EQ(m_folder.BytesOf(m_path), "bytes");
}

TEST_F(NamedFilesTest, TextWithANullCharacterNamesNoFile)
{
    const std::wstring other = WideFromPath(m_folder.File("b", "other"));
    const std::wstring behind(L"\0c", 2);
    for (const auto& failure : {FailureOfRename(m_wide, other + behind), FailureOfRename(m_wide + behind, other)})
        EXPECT_TRUE(failure && failure->m_lOsError == 123);
    EXPECT_EQ(m_folder.BytesOf(m_path), "bytes");
    EXPECT_EQ(m_folder.BytesOf(m_folder / "b"), "other");
    EXPECT_FALSE(CreateFileIfNotPresent(m_wide + behind));
    EXPECT_FALSE(IsFileReadable(m_wide + behind));
    EXPECT_EQ(GetFileSize(m_wide + behind), 0u);
}

TEST_F(NamedFilesTest, FileThatCannotBeMadeIsFalse)
{
    EXPECT_FALSE(CreateFileIfNotPresent(m_folder / "folder/b"));
    support::ForwardingFileSystem system;
    system.failing = {"CreateNew"};
    system.error = 183; // much the same, but of something else
    EXPECT_FALSE(CreateFileIfNotPresent(m_path));
    system.error = 80;
    EXPECT_TRUE(CreateFileIfNotPresent(m_path));
}

TEST_F(NamedFilesTest, FileThatIsThereIsReadable)
{
    EXPECT_TRUE(IsFileReadable(m_path));
    EXPECT_TRUE(IsFileReadable(m_wide));
    EXPECT_TRUE(IsFileReadable(m_wide.c_str()));
    EXPECT_FALSE(IsFileReadable(m_folder / "missing"));
}

TEST_F(NamedFilesTest, LengthOfAFileIsToldWithoutOpeningIt)
{
    EXPECT_EQ(GetFileSize(m_path), 5u);
    EXPECT_EQ(GetFileSize(m_wide), 5u);
    EXPECT_EQ(GetFileSize(m_wide.c_str()), 5u);
}

TEST_F(NamedFilesTest, LengthBeyondFourGigabytesIsWhole)
{
    m_folder.WriteAt(m_path, 0x123456789, "x");
    EXPECT_EQ(GetFileSize(m_path), 0x12345678Au);
}

TEST_F(NamedFilesTest, LengthOfAFileThatIsMissingIsZero) { EXPECT_EQ(GetFileSize(m_folder / "missing"), 0u); }

TEST_F(NamedFilesTest, LengthOfAFolderIsZero) { EXPECT_EQ(GetFileSize(m_folder.Path()), 0u); }
