#include "utility/files/BackupFile.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/TracedChild.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/MemoryMappedFile.h"
#include "utility/framework/FileException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

class PosixBackupFileTest : public ::testing::Test
{
protected:
    /// 0 if so many bytes are saved, 1 if they cannot be written, 2 if they cannot be swapped.
    int Save(std::size_t size) const
    {
        try
        {
            CBackupFile backup(m_file);
            CMemoryMappedFile file(backup.GetTempFilename(), 0);
            file.WriteFile(std::string(size, 'x').data(), size);
            file.CommitAndClose();
            backup.SetReplaceFile(true);
            return 0;
        }
        catch (CFileException* failure)
        {
            failure->Delete();
            return 1;
        }
        catch (const boost::filesystem::filesystem_error&)
        {
            return 2;
        }
    }

    std::string Bytes() const { return support::TemporaryFolder::BytesOf(m_file); }
    std::ptrdiff_t Entries() const { return std::distance(boost::filesystem::directory_iterator(m_folder.Path()), {}); }

    const support::TemporaryFolder m_folder;
    const boost::filesystem::path m_file = m_folder.File("part.nc", "old");
};

}

TEST_F(PosixBackupFileTest, SwapTakesTheCallsThatItsHeaderLists)
{
    const support::TracedChild child([this] { return Save(3); });
    if (!child.obstacle.empty())
        GTEST_SKIP() << child.obstacle;
    ASSERT_EQ(child.exitCode, 0);
    const auto closed =
        std::ranges::find(child.calls, SYS_close, [](const support::SystemCall& call) { return call.number; });
    std::vector<long> numbers;
    for (auto each = closed + 1; each < child.calls.end(); ++each)
    {
        // The new file is flushed once more where its last change has a tick for its time.
        const bool isFlushAgain =
            each->number == SYS_fsync && each + 1 < child.calls.end() && (each + 1)->number == SYS_rename;
        if (each->number != SYS_getrandom && !isFlushAgain) // for the backup's name
            numbers.push_back(each->number);
    }
    const std::vector<long> expected = {SYS_newfstatat, SYS_openat,     SYS_newfstatat, SYS_listxattr,
                                        SYS_fgetxattr,  SYS_newfstatat, SYS_geteuid,    SYS_link,
                                        SYS_newfstatat, SYS_rename,     SYS_openat,     SYS_fsync,
                                        SYS_close,      SYS_close,      SYS_newfstatat, SYS_unlink};
    EXPECT_EQ(numbers, expected);
}

TEST_F(PosixBackupFileTest, FileIsNeverMissingNorHalfForAnotherProgram)
{
    support::Child saver(
        [this]
        {
            for (int i = 0; i < 300; ++i)
            {
                if (Save(i % 2 == 0 ? 10000 : 3) != 0)
                    return 1;
            }
            return 0;
        });
    std::size_t looks = 0;
    bool isDone = false;
    std::thread waiter(
        [&]
        {
            EXPECT_EQ(saver.ExitCode(), 0);
            __atomic_store_n(&isDone, true, __ATOMIC_RELEASE);
        });
    while (!__atomic_load_n(&isDone, __ATOMIC_ACQUIRE))
    {
        const std::string bytes = Bytes();
        EXPECT_TRUE(bytes == "old" || bytes == "xxx" || bytes == std::string(10000, 'x')) << bytes.size();
        ++looks;
    }
    waiter.join();
    EXPECT_GT(looks, 100u);
    EXPECT_EQ(Entries(), 1);
}

TEST_F(PosixBackupFileTest, FullDiskLeavesTheOldVersionWhole)
{
    support::Child child(
        [this]
        {
            if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                ::mount("none", m_folder.Path().c_str(), "tmpfs", 0, "size=64k") != 0)
                return 99;
            m_folder.File("part.nc", "old");
            if (Save(100000) != 1 || Bytes() != "old" || Entries() != 1)
                return 1;
            return Save(10) == 0 && Bytes() == "xxxxxxxxxx" && Entries() == 1 ? 0 : 2;
        });
    const int code = child.ExitCode();
    if (code == 99)
        GTEST_SKIP() << "The user lacks the right to mount file systems";
    EXPECT_EQ(code, 0);
}

TEST_F(PosixBackupFileTest, DiskWithoutRoomForANameLeavesTheOldVersionWhole)
{
    support::Child child(
        [this]
        {
            // Room for the folder, the old version and the new one: a second name takes no more.
            for (const char* const limit : {"nr_inodes=2", "nr_inodes=3"})
            {
                if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                    ::mount("none", m_folder.Path().c_str(), "tmpfs", 0, limit) != 0)
                    return 99;
                m_folder.File("part.nc", "old");
                const int saved = Save(3);
                if (Bytes() != (saved == 0 ? "xxx" : "old") || Entries() != 1)
                    return 1;
            }
            return 0;
        });
    const int code = child.ExitCode();
    if (code == 99)
        GTEST_SKIP() << "The user lacks the right to mount file systems";
    EXPECT_EQ(code, 0);
}

TEST_F(PosixBackupFileTest, LimitOfTheFileSizeLeavesTheOldVersionWhole)
{
    support::Child child(
        [this]
        {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{1000, 1000};
            if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
                return 3;
            return Save(1001) == 1 && Bytes() == "old" && Entries() == 1 ? 0 : 4;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixBackupFileTest, FolderThatMayNotBeWrittenLeavesTheOldVersionWhole)
{
    support::Child child(
        [this]
        {
            ::chmod(m_folder.Path().c_str(), 0555);
            if (::geteuid() == 0 && ::setuid(3) != 0)
                return 3;
            return Save(3) == 1 && Bytes() == "old" && Entries() == 1 ? 0 : 4;
        });
    EXPECT_EQ(child.ExitCode(), 0);
    ::chmod(m_folder.Path().c_str(), 0755);
}

TEST_F(PosixBackupFileTest, LinkThatLeadsNowhereIsReplacedItself)
{
    remove(m_file);
    create_symlink("nothing", m_file);
    EXPECT_EQ(Save(3), 0);
    EXPECT_FALSE(is_symlink(m_file));
    EXPECT_EQ(Bytes(), "xxx");
    remove(m_file);
    create_symlink("part.nc", m_file);
    EXPECT_EQ(Save(3), 0);
    EXPECT_EQ(Bytes(), "xxx");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(PosixBackupFileTest, FolderThatCannotBeLookedIntoIsToldByWhoeverWritesAndEndsNoProgram)
{
    create_symlink("loop", m_folder / "loop");
    support::Child child(
        [this]
        {
            try
            {
                const CBackupFile backup(m_folder / "loop/part.nc");
                const CMemoryMappedFile file(backup.GetTempFilename(), 0);
                return 1;
            }
            catch (CFileException* failure)
            {
                failure->Delete();
                return 0;
            }
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixBackupFileTest, PipeOrDeviceIsNotReplacedNorIsALinkToOne)
{
    remove(m_file);
    ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0);
    EXPECT_EQ(Save(3), 2);
    EXPECT_EQ(status(m_file).type(), boost::filesystem::fifo_file);
    rename(m_file, m_folder / "pipe");
    create_symlink("pipe", m_file);
    EXPECT_EQ(Save(3), 2);
    EXPECT_TRUE(is_symlink(m_file));
    EXPECT_EQ(status(m_file).type(), boost::filesystem::fifo_file);
}

TEST_F(PosixBackupFileTest, FileOfAnotherThatMayNotBeReplacedGetsNoSecondNameThatStays)
{
    support::Child child(
        [this]
        {
            ::chmod(m_folder.Path().c_str(), 01777); // where only its owner removes a file
            ::chmod(m_file.c_str(), 0666);
            if (::setuid(3) != 0)
                return 99;
            return Save(3) == 2 && Bytes() == "old" && hard_link_count(m_file) == 1 ? 0 : 4;
        });
    const int code = child.ExitCode();
    if (code == 99)
        GTEST_SKIP() << "The user lacks the right to be another one";
    EXPECT_EQ(code, 0);
}
