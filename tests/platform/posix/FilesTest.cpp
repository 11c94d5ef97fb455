#include "utility/platform/Files.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/files/MemoryMappedFile.h"
#include "utility/framework/FileException.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using utility::platform::Files;
using utility::platform::LastError;

TEST(PosixFilesTest, FullDiskIsToldByTheFailureOfTheWrite)
{
    const CMemoryMappedFile file(L"/dev/full", 0);
    try
    {
        file.WriteFile("x", 1);
        FAIL() << "nothing thrown";
    }
    catch (CFileException* failure)
    {
        const std::unique_ptr<CFileException> owner(failure);
        EXPECT_EQ(failure->m_cause, CFileException::diskFull);
        EXPECT_EQ(failure->m_lOsError, 112);
        EXPECT_EQ(failure->m_strFileName, L"/dev/full");
    }
}

TEST(PosixFilesTest, PipeWithoutAWriterDoesNotHoldUpTheCaller)
{
    const support::TemporaryFolder folder;
    const auto path = folder / "pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    CMemoryMappedFile file;
    EXPECT_FALSE(file.Open(path));
}

TEST(PosixFilesTest, DescriptorZeroIsAHandleLikeAnyOther)
{
    const support::TemporaryFolder folder;
    const auto path = folder.File("a", "bytes");
    const int input = ::dup(STDIN_FILENO);
    ::close(STDIN_FILENO);
    {
        const CMemoryMappedFile file(path);
        EXPECT_TRUE(file.IsValid());
        struct stat status;
        EXPECT_EQ(::fstat(STDIN_FILENO, &status), 0);
        EXPECT_EQ(status.st_size, 5);
    }
    if (input >= 0)
    {
        ::dup2(input, STDIN_FILENO);
        ::close(input);
    }
}

TEST(PosixFilesTest, HandlesAreNotInheritedByProgramsStarted)
{
    const support::TemporaryFolder folder;
    const CMemoryMappedFile reader(folder.File("a", "bytes"));
    const CMemoryMappedFile writer(folder / "b", 0);
    const std::string names = folder.File("names", "").string();
    ASSERT_EQ(std::system(("ls -l /proc/self/fd > '" + names + "'").c_str()), 0);
    const std::string open = support::TemporaryFolder::BytesOf(names);
    EXPECT_NE(open.find("names"), std::string::npos);
    EXPECT_EQ(open.find((folder / "a").string()), std::string::npos);
    EXPECT_EQ(open.find((folder / "b").string()), std::string::npos);
}

TEST(PosixFilesTest, LinkThatGoesRoundIsError1921)
{
    const support::TemporaryFolder folder;
    boost::filesystem::create_symlink(folder / "loop", folder / "loop");
    EXPECT_EQ(Files().OpenForReading(folder / "loop"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_CANT_RESOLVE_FILENAME);
}

TEST(PosixFilesTest, NameThatIsTooLongIsError206)
{
    const support::TemporaryFolder folder;
    const boost::filesystem::path path = folder.Path() / std::string(300, 'x');
    EXPECT_EQ(Files().OpenForWriting(path), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_FILENAME_EXCED_RANGE);
}
