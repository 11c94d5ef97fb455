// Whatever step of a save fails, the file is the old one or the new one, whole.

#include "tests/support/SafeSave.h"

#include "tests/support/ForwardingFiles.h"
#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/Substitute.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

class SafeSaveTest : public ::testing::Test
{
protected:
    /// Whether the save ends without a failure.
    bool IsSaved() const
    {
        try
        {
            Save(m_file, [](CTextFile& file) { file << "new " << 1 << '\n'; });
            return true;
        }
        catch (CFileException* failure)
        {
            failure->Delete();
        }
        catch (const boost::filesystem::filesystem_error&)
        {
        }
        return false;
    }

    std::string Bytes() const { return support::TemporaryFolder::BytesOf(m_file); }
    std::ptrdiff_t Entries() const { return std::distance(boost::filesystem::directory_iterator(m_folder.Path()), {}); }

    const support::TemporaryFolder m_folder;
    const boost::filesystem::path m_file = m_folder.File("moves.nc", "old");
};

}

TEST_F(SafeSaveTest, NewVersionIsThereWhole)
{
    EXPECT_TRUE(IsSaved());
    EXPECT_EQ(Bytes(), "new 1\n");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(SafeSaveTest, ProgramSaysWhatItCouldNotWrite)
{
    std::string file = m_file.string();
    std::string nowhere = (m_folder / "folder/moves.nc").string();
    char program[] = "safe_save";
    char* arguments[] = {program, file.data()};
    EXPECT_EQ(SafeSave(2, arguments), 0);
    EXPECT_EQ(Bytes(), "N10 G01 X12.500\n");
    arguments[1] = nowhere.data();
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(SafeSave(2, arguments), 1);
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("cannot write "), std::string::npos);
    remove(m_file);
    create_directory(m_file);
    arguments[1] = file.data();
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(SafeSave(2, arguments), 1);
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("moves.nc"), std::string::npos);
}

TEST_F(SafeSaveTest, WriterThatThrowsLeavesTheOldVersion)
{
    const auto write = [](CTextFile& file)
    {
        file << "ne";
        throw std::runtime_error("no more");
    };
    EXPECT_THROW(Save(m_file, write), std::runtime_error);
    EXPECT_EQ(Bytes(), "old");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(SafeSaveTest, OldVersionStaysWhicheverStepOfTheWritingFails)
{
    std::vector<std::string> steps;
    for (std::size_t at = 1;; ++at)
    {
        support::ForwardingFiles files;
        files.failAt = at;
        files.error = ERROR_DISK_FULL;
        const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), files);
        const bool isSaved = IsSaved();
        if (files.calls.size() < at)
        {
            EXPECT_TRUE(isSaved);
            break;
        }
        steps.push_back(files.calls[at - 1]);
        EXPECT_FALSE(isSaved) << steps.back();
        EXPECT_EQ(Bytes(), "old") << steps.back();
        EXPECT_EQ(Entries(), 1) << steps.back();
    }
    EXPECT_EQ(steps, (std::vector<std::string>{"OpenForWriting", "Write", "Write", "Write", "TruncateHere",
                                               "FlushToDisk", "Close"}));
    EXPECT_EQ(Bytes(), "new 1\n");
}

TEST_F(SafeSaveTest, NewVersionIsThereWhicheverStepOfTheSwapFails)
{
    for (const char* const step : {"Replace", "FlushName", "DeleteWhenUnused"})
    {
        for (const DWORD reason : {1175, 1176, 1177, 5, 0, 32, 2, 112})
        {
            m_folder.File("moves.nc", "old");
            support::ForwardingFileSystem system;
            system.failing = {step};
            system.error = static_cast<DWORD>(reason);
            EXPECT_TRUE(IsSaved()) << step << reason;
            EXPECT_EQ(Bytes(), "new 1\n");
            EXPECT_EQ(Entries(), 1);
        }
    }
}
