#include "utility/files/BinaryFile.h"

#include "tests/support/ForwardingFiles.h"
#include "tests/support/Substitute.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/framework/FileException.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

static_assert(std::is_base_of_v<CInputOutputFile, CBinaryFile>);
static_assert(sizeof(CBinaryFile) == sizeof(CInputOutputFile));

namespace
{

class BinaryFileTest : public ::testing::Test
{
protected:
    std::string Written()
    {
        file.Close(0);
        return folder.BytesOf(folder / "a");
    }

    support::TemporaryFolder folder;
    CBinaryFile file;
};

using namespace std::string_literals;

TEST_F(BinaryFileTest, TextHasNeitherLengthNorTerminator)
{
    ASSERT_TRUE(file.Open(folder / "a"));
    file << "MESH"
         << ""
         << "v2";
    EXPECT_EQ(Written(), "MESHv2");
}

TEST_F(BinaryFileTest, NumbersAreTheirBytesInOrderOfTheHost)
{
    ASSERT_TRUE(file.Open(folder / "a"));
    file << 1.0F << DWORD{0x12345678} << static_cast<unsigned short>(0x1234);
    EXPECT_EQ(Written(), "\x00\x00\x80\x3F\x78\x56\x34\x12\x34\x12"s);
}

TEST_F(BinaryFileTest, LongerFileIsCutWhereTheWritingEnded)
{
    ASSERT_TRUE(file.Open(folder.File("a", std::string(1000, 'x'))));
    file << "0123456789";
    EXPECT_EQ(boost::filesystem::file_size(folder / "a"), 1000u);
    EXPECT_EQ(Written(), "0123456789");
}

TEST_F(BinaryFileTest, FileIsOpenedByAWideNameToo)
{
    ASSERT_TRUE(file.Open(utility::platform::WideFromPath(folder / "a").c_str()));
    EXPECT_EQ(file.path(), folder / "a");
    EXPECT_TRUE(file.IsValid());
    file << "x";
    EXPECT_EQ(Written(), "x");
    ASSERT_TRUE(file.Open(utility::platform::WideFromPath(folder / "a")));
    file << "y";
    EXPECT_EQ(Written(), "y");
}

TEST_F(BinaryFileTest, CopyWritesToTheSameFile)
{
    ASSERT_TRUE(file.Open(folder / "a"));
    file << "a";
    CBinaryFile alias(file);
    alias << "b";
    file << "c";
    alias = CBinaryFile(); // only one of the two may be closed, and an assignment closes nothing
    EXPECT_EQ(Written(), "abc");
}

TEST_F(BinaryFileTest, EachInsertionIsOneWrite)
{
    support::ForwardingFiles files;
    const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), files);
    ASSERT_TRUE(file.Open(folder / "a"));
    files.calls.clear();
    file << ""
         << "MESH" << 1.0F << DWORD{1} << static_cast<unsigned short>(1);
    EXPECT_EQ(files.calls, std::vector<std::string>(5, "Write"));
    EXPECT_EQ(Written().size(), 14u);
}

TEST_F(BinaryFileTest, InsertionIntoAFileThatWasNeverOpenedThrows)
{
    try
    {
        file << "";
        FAIL() << "nothing was thrown";
    }
    catch (CFileException* failure)
    {
        const std::unique_ptr<CFileException> owner(failure);
        EXPECT_EQ(failure->m_lOsError, static_cast<std::int32_t>(ERROR_INVALID_HANDLE));
        EXPECT_TRUE(failure->m_strFileName.empty());
    }
}

TEST_F(BinaryFileTest, FailedWriteThrowsWithReasonAndName)
{
    support::ForwardingFiles files;
    const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), files);
    ASSERT_TRUE(file.Open(folder / "a"));
    files.failing = {"Write"};
    files.error = ERROR_DISK_FULL;
    try
    {
        file << 1.0F;
        FAIL() << "nothing was thrown";
    }
    catch (CFileException* failure)
    {
        const std::unique_ptr<CFileException> owner(failure);
        EXPECT_EQ(failure->m_lOsError, static_cast<std::int32_t>(ERROR_DISK_FULL));
        EXPECT_EQ(failure->m_strFileName, utility::platform::WideFromPath(folder / "a").c_str());
    }
}

TEST_F(BinaryFileTest, FolderIsNoFileToWrite)
{
    EXPECT_THROW(
        {
            try
            {
                file.Open(folder.Path());
            }
            catch (CFileException* failure)
            {
                const std::unique_ptr<CFileException> owner(failure);
                EXPECT_EQ(failure->m_cause, CFileException::accessDenied);
                throw 0;
            }
        },
        int);
    EXPECT_FALSE(file.IsValid());
}

}
