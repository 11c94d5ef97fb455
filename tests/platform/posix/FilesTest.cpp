#include "utility/platform/Files.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/LeasedFile.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/MemoryMappedFile.h"
#include "utility/framework/FileException.h"
#include "utility/platform/Debugger.h"
#include "utility/platform/Error.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/files/MappedFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using support::FailingCall;
using utility::platform::Files;
using utility::platform::LastError;

TEST(PosixFilesTest, FileIsNoMappingAndAMappingNoFile)
{
    const support::TemporaryFolder folder;
    const HANDLE file = Files().OpenForReading(folder.File("a", "bytes"));
    const HANDLE mapping = Files().MapReadOnly(file);
    ASSERT_NE(mapping, nullptr);
    std::uint64_t length = 0;
    EXPECT_FALSE(Files().Length(mapping, length));
    EXPECT_EQ(LastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Files().ViewAll(file, 5), nullptr);
    EXPECT_EQ(LastError(), ERROR_INVALID_HANDLE);
    EXPECT_TRUE(Files().Close(mapping));
    EXPECT_TRUE(Files().Close(file));
}

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

TEST(PosixFilesTest, PipeWithASlowReaderTakesAllThatIsWritten)
{
    const support::TemporaryFolder folder;
    const auto path = folder / "pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const HANDLE file = Files().OpenForWriting(path);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    const std::string bytes(200000, 'x');
    std::string received;
    const int end = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::thread reader(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            char part[5000];
            ssize_t count = 0;
            while (received.size() < bytes.size() && (count = ::read(end, part, sizeof(part))) > 0)
                received.append(part, static_cast<std::size_t>(count));
        });
    DWORD written = 0;
    EXPECT_TRUE(Files().Write(file, bytes.data(), static_cast<DWORD>(bytes.size()), written));
    EXPECT_EQ(written, bytes.size());
    EXPECT_TRUE(Files().Close(file));
    reader.join();
    ::close(end);
    EXPECT_TRUE(received == bytes);
}

TEST(PosixFilesTest, DeviceMayBeWrittenBySeveralAtOnce)
{
    const CMemoryMappedFile first(L"/dev/null", 0);
    const CMemoryMappedFile second(L"/dev/null", 0);
    EXPECT_TRUE(second.WriteFile("bytes", 5));
}

namespace
{

/// A pipe between a test and its child. Either side waits until the other has said a word.
class Signal
{
public:
    Signal() { EXPECT_EQ(::pipe(m_ends), 0); }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;
    ~Signal()
    {
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }

    void Give() const { EXPECT_EQ(::write(m_ends[1], "x", 1), 1); }
    void Await() const
    {
        char word = 0;
        EXPECT_EQ(::read(m_ends[0], &word, 1), 1);
    }

private:
    int m_ends[2];
};

}

TEST(PosixFilesTest, FileThatAnotherProgramHasALeaseOnIsWaitedFor)
{
    const support::TemporaryFolder folder;
    const auto path = folder.File("a", "bytes");
    support::LeasedFile leased(path);
    const HANDLE file = Files().OpenForReading(path);
    EXPECT_NE(file, INVALID_HANDLE_VALUE) << LastError();
    EXPECT_TRUE(Files().Close(file));
    EXPECT_TRUE(leased.WasGivenUp());
}

TEST(PosixFilesTest, ProcessForkedMeanwhileDoesNotKeepAFileThatWasClosed)
{
    const support::TemporaryFolder folder;
    const auto path = folder.File("a", "bytes");
    CMemoryMappedFile reader(path);
    CMemoryMappedFile writer(folder / "b", 0);
    const Signal end;
    support::Child child(
        [&]
        {
            end.Await();
            return 0;
        });
    const auto expectFree = [](const boost::filesystem::path& each)
    {
        const HANDLE file = Files().OpenForWriting(each);
        EXPECT_NE(file, INVALID_HANDLE_VALUE) << each;
        Files().Close(file);
    };
    // The view that there still is is of the other one.
    EXPECT_TRUE(writer.Close(0));
    expectFree(folder / "b");
    EXPECT_TRUE(reader.Close(0));
    expectFree(path);
    end.Give();
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST(PosixFilesTest, ProcessForkedMeanwhileDoesNotGiveUpTheFileByClosingIt)
{
    const support::TemporaryFolder folder;
    const HANDLE file = Files().OpenForWriting(folder / "a");
    support::Child child([&] { return Files().Close(file) ? 0 : 1; });
    EXPECT_EQ(child.ExitCode(), 0);
    EXPECT_EQ(Files().OpenForReading(folder / "a"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_SHARING_VIOLATION);
    EXPECT_TRUE(Files().Close(file));
}

TEST(PosixFilesTest, MappedFileTakesOneDescriptor)
{
    const support::TemporaryFolder folder;
    const std::ptrdiff_t descriptors = support::OpenDescriptors();
    const CMemoryMappedFile file(folder.File("a", "bytes"));
    EXPECT_TRUE(file.IsValid());
    EXPECT_EQ(support::OpenDescriptors(), descriptors + 1);
}

TEST(PosixFilesTest, WhatIsWrittenToAStreamThatTheHostClosedReachesNoFile)
{
    const support::TemporaryFolder folder;
    const auto read = folder.File("a", "bytes");
    support::Child child(
        [&]
        {
            for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                ::close(standard);
            const CMemoryMappedFile reader(read);
            CMemoryMappedFile writer(folder / "b", 0);
            const bool isWritten = writer.WriteFile("part", 4);
            utility::platform::Debugger().Output("debug");
            const bool isAlone = ::fcntl(STDIN_FILENO, F_GETFD) < 0 && ::write(STDOUT_FILENO, "debug", 5) < 0;
            return reader.IsValid() && isWritten && isAlone && writer.Close(0) ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
    EXPECT_EQ(support::TemporaryFolder::BytesOf(folder / "b"), "part");
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

TEST(PosixFilesTest, ViewOfMoreThanFourGigabytesIsMappedAndUnmappedWhole)
{
    const support::TemporaryFolder folder;
    const auto path = folder.File("a", "");
    // The second fills its last page.
    for (const std::uint64_t size : {std::uint64_t{0x100002005}, std::uint64_t{0x200003000}})
    {
        folder.WriteAt(path, size - 4, "last");
        const HANDLE file = Files().OpenForReading(path);
        const HANDLE mapping = Files().MapReadOnly(file);
        auto* const view = static_cast<char*>(Files().ViewAll(mapping, size));
        ASSERT_NE(view, nullptr);
        EXPECT_STREQ(view + size - 4, "last");
        EXPECT_TRUE(Files().UnmapView(view));
        const auto pageSize = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
        for (const std::uint64_t offset : {std::uint64_t{0}, size / 2, size})
            EXPECT_NE(::msync(view + offset / pageSize * pageSize, pageSize, MS_ASYNC), 0) << offset;
        EXPECT_TRUE(Files().Close(mapping));
        EXPECT_TRUE(Files().Close(file));
    }
}

// What fails below

namespace
{

/// A file in a folder of the test's own. Once all failures are over, nothing is left open and the file can be had.
class FailingFilesTest : public ::testing::Test
{
protected:
    ~FailingFilesTest() override
    {
        EXPECT_EQ(support::OpenDescriptors(), m_descriptors);
        const HANDLE file = Files().OpenForWriting(m_path);
        EXPECT_NE(file, INVALID_HANDLE_VALUE);
        EXPECT_TRUE(Files().Close(file));
    }

    std::string Bytes() const { return support::TemporaryFolder::BytesOf(m_path); }

    const support::TemporaryFolder m_folder;
    const boost::filesystem::path m_path = m_folder.File("a", "bytes");
    const std::ptrdiff_t m_descriptors = support::OpenDescriptors();
};

/// The same with the file open to be written.
class FailingWriterTest : public FailingFilesTest
{
protected:
    ~FailingWriterTest() override { Files().Close(m_file); }

    const HANDLE m_file = Files().OpenForWriting(m_path);
    DWORD m_written = 77;
};

/// How many mappings the process has.
std::ptrdiff_t Mappings()
{
    std::ifstream maps("/proc/self/maps");
    return std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
}

}

TEST_F(FailingFilesTest, FileThatCannotBeOpenedSaysWhy)
{
    const FailingCall failing("open", EMFILE, FailingCall::always);
    EXPECT_EQ(Files().OpenForReading(m_path), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_TOO_MANY_OPEN_FILES);
    EXPECT_EQ(Files().OpenForWriting(m_path), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_TOO_MANY_OPEN_FILES);
}

TEST_F(FailingFilesTest, FileOfWhichNothingIsToldIsClosedAndSaysWhy)
{
    const FailingCall failing("fstat", EIO, FailingCall::always);
    const FailingCall alsoFailing("close", ENOSPC, FailingCall::always);
    EXPECT_EQ(Files().OpenForReading(m_path), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_GEN_FAILURE);
    EXPECT_TRUE(alsoFailing.HasFailed());
}

TEST_F(FailingFilesTest, NewFileIsThereOrNotAtAllWhicheverCallFails)
{
    const auto path = m_folder / "new";
    for (const char* const call : {"open", "fstat", "fcntl", "close"})
    {
        bool fails = true;
        for (int at = 1; fails; ++at)
        {
            const FailingCall failing(call, EIO, at);
            const HANDLE file = Files().OpenForWriting(path);
            fails = failing.HasFailed();
            EXPECT_EQ(boost::filesystem::exists(path), file != INVALID_HANDLE_VALUE) << call << at;
            EXPECT_TRUE(fails || file != INVALID_HANDLE_VALUE) << call << at;
            Files().Close(file);
            boost::filesystem::remove(path);
        }
    }
}

TEST_F(FailingFilesTest, FileThatAnotherMadeMeanwhileIsOpenedAndKept)
{
    // As it is where it was not there at the first look.
    const FailingCall looking("open", ENOENT);
    const HANDLE file = Files().OpenForWriting(m_path);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Files().Close(file));
    EXPECT_EQ(Bytes(), "bytes");
}

TEST_F(FailingFilesTest, FileIsMadeBehindALinkToNothing)
{
    boost::filesystem::create_symlink(m_folder / "new", m_folder / "link");
    errno = 0;
    const HANDLE file = Files().OpenForWriting(m_folder / "link");
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_EQ(errno, 0);
    EXPECT_TRUE(Files().Close(file));
    EXPECT_TRUE(boost::filesystem::is_symlink(m_folder / "link"));
    EXPECT_TRUE(boost::filesystem::exists(m_folder / "new"));
}

TEST_F(FailingFilesTest, LockOfAnotherIsASharingViolationByEitherOfItsNames)
{
    for (const int name : {EAGAIN, EACCES})
    {
        const FailingCall failing("fcntl", name);
        EXPECT_EQ(Files().OpenForReading(m_path), INVALID_HANDLE_VALUE);
        EXPECT_EQ(LastError(), ERROR_SHARING_VIOLATION);
    }
}

TEST_F(FailingFilesTest, FileSystemWithoutLocksLetsEverybodyIn)
{
    const FailingCall failing("fcntl", ENOLCK);
    const HANDLE first = Files().OpenForWriting(m_path);
    EXPECT_TRUE(failing.HasFailed());
    const HANDLE second = Files().OpenForWriting(m_path);
    EXPECT_NE(first, INVALID_HANDLE_VALUE);
    EXPECT_NE(second, INVALID_HANDLE_VALUE);
    Files().Close(first);
    Files().Close(second);
}

TEST_F(FailingFilesTest, InterruptedOpenGoesOnAndTakesTheLock)
{
    const FailingCall opening("open", EINTR);
    const FailingCall locking("fcntl", EINTR);
    const HANDLE file = Files().OpenForWriting(m_path);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(opening.HasFailed());
    EXPECT_TRUE(locking.HasFailed());
    EXPECT_EQ(Files().OpenForReading(m_path), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_SHARING_VIOLATION);
    EXPECT_TRUE(Files().Close(file));
}

TEST_F(FailingWriterTest, WriteInPartsIsAWholeWrite)
{
    const support::ShortWrites three(3);
    EXPECT_TRUE(Files().Write(m_file, "0123456789", 10, m_written));
    EXPECT_EQ(m_written, 10u);
    EXPECT_EQ(Bytes(), "0123456789");
}

TEST_F(FailingWriterTest, InterruptedWriteGoesOn)
{
    const support::ShortWrites three(3);
    const FailingCall failing("write", EINTR, 2);
    EXPECT_TRUE(Files().Write(m_file, "0123456789", 10, m_written));
    EXPECT_TRUE(failing.HasFailed());
    EXPECT_EQ(m_written, 10u);
    EXPECT_EQ(Bytes(), "0123456789");
}

TEST_F(FailingWriterTest, WriteThatFailsHalfWayTellsWhyAndHowFarItCame)
{
    const support::ShortWrites three(3);
    const FailingCall failing("write", ENOSPC, 2);
    EXPECT_FALSE(Files().Write(m_file, "0123456789", 10, m_written));
    EXPECT_EQ(LastError(), ERROR_DISK_FULL);
    EXPECT_EQ(m_written, 3u);
    EXPECT_EQ(Bytes(), "012es");
    EXPECT_TRUE(Files().Write(m_file, "345", 3, m_written));
    EXPECT_EQ(Bytes(), "012345");
}

TEST_F(FailingWriterTest, WriteThatTakesNothingEnds)
{
    const support::ShortWrites none(0);
    EXPECT_TRUE(Files().Write(m_file, "x", 1, m_written));
    EXPECT_EQ(m_written, 0u);
    EXPECT_EQ(Bytes(), "bytes");
}

TEST_F(FailingWriterTest, ReasonOfAFailedWriteOutlivesThatNothingMoreIsTold)
{
    const FailingCall writing("write", EIO);
    const FailingCall asking("fcntl", EBADF);
    EXPECT_FALSE(Files().Write(m_file, "x", 1, m_written));
    EXPECT_TRUE(asking.HasFailed());
    EXPECT_EQ(LastError(), ERROR_GEN_FAILURE);
    EXPECT_EQ(m_written, 0u);
}

TEST_F(FailingWriterTest, FlushThatFailsSaysWhyAndTheNextMayDoIt)
{
    const FailingCall failing("fsync", EIO);
    EXPECT_FALSE(Files().FlushToDisk(m_file));
    EXPECT_EQ(LastError(), ERROR_GEN_FAILURE);
    EXPECT_TRUE(Files().FlushToDisk(m_file));
}

TEST_F(FailingWriterTest, InterruptedFlushGoesOn)
{
    const FailingCall failing("fsync", EINTR);
    EXPECT_TRUE(Files().FlushToDisk(m_file));
    EXPECT_TRUE(failing.HasFailed());
}

TEST_F(FailingWriterTest, LengthThatCannotBeChangedStays)
{
    Files().Seek(m_file, 2, nullptr, FILE_BEGIN);
    {
        const FailingCall failing("lseek", EIO);
        EXPECT_FALSE(Files().TruncateHere(m_file));
        EXPECT_EQ(LastError(), ERROR_GEN_FAILURE);
    }
    const FailingCall failing("ftruncate", ENOSPC);
    EXPECT_FALSE(Files().TruncateHere(m_file));
    EXPECT_EQ(LastError(), ERROR_DISK_FULL);
    EXPECT_EQ(Bytes(), "bytes");
    EXPECT_TRUE(Files().TruncateHere(m_file));
    EXPECT_EQ(Bytes(), "by");
}

TEST_F(FailingWriterTest, InterruptedChangeOfTheLengthGoesOn)
{
    const FailingCall failing("ftruncate", EINTR);
    EXPECT_TRUE(Files().TruncateHere(m_file));
    EXPECT_TRUE(failing.HasFailed());
    EXPECT_EQ(Bytes(), "");
}

TEST_F(FailingWriterTest, PositionThatCannotBeMovedSaysWhy)
{
    const FailingCall failing("lseek", EIO);
    EXPECT_EQ(Files().Seek(m_file, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(LastError(), ERROR_GEN_FAILURE);
}

TEST_F(FailingWriterTest, LengthThatIsNotToldLeavesTheCallersAlone)
{
    const FailingCall failing("fstat", EIO);
    std::uint64_t length = 77;
    EXPECT_FALSE(Files().Length(m_file, length));
    EXPECT_EQ(LastError(), ERROR_GEN_FAILURE);
    EXPECT_EQ(length, 77u);
}

TEST_F(FailingWriterTest, InformationThatIsNotToldLeavesTheCallersAlone)
{
    const FailingCall failing("fstat", EIO);
    BY_HANDLE_FILE_INFORMATION information = {};
    information.nNumberOfLinks = 77;
    EXPECT_FALSE(Files().Information(m_file, information));
    EXPECT_EQ(LastError(), ERROR_GEN_FAILURE);
    EXPECT_EQ(information.nNumberOfLinks, 77u);
}

TEST_F(FailingWriterTest, CreationTimeThatTheSystemDoesNotKnowIsTheLastChange)
{
    const FailingCall failing("statx", ENOSYS);
    BY_HANDLE_FILE_INFORMATION information = {};
    EXPECT_TRUE(Files().Information(m_file, information));
    EXPECT_TRUE(failing.HasFailed());
    // The file was made and never touched again.
    EXPECT_EQ(information.ftCreationTime.dwHighDateTime, information.ftLastWriteTime.dwHighDateTime);
    EXPECT_EQ(information.ftCreationTime.dwLowDateTime, information.ftLastWriteTime.dwLowDateTime);
}

TEST_F(FailingFilesTest, FileThatFailsToCloseIsClosed)
{
    const HANDLE file = Files().OpenForWriting(m_path);
    const FailingCall failing("close", EIO);
    EXPECT_FALSE(Files().Close(file));
    EXPECT_EQ(LastError(), ERROR_GEN_FAILURE);
}

TEST_F(FailingFilesTest, InterruptedCloseHasClosedTheFile)
{
    const HANDLE file = Files().OpenForWriting(m_path);
    const FailingCall failing("close", EINTR);
    EXPECT_TRUE(Files().Close(file));
    EXPECT_TRUE(failing.HasFailed());
}

TEST_F(FailingFilesTest, FileThatCannotBeMappedSaysWhy)
{
    const HANDLE file = Files().OpenForReading(m_path);
    {
        const FailingCall failing("fstat", EIO);
        EXPECT_EQ(Files().MapReadOnly(file), nullptr);
        EXPECT_EQ(LastError(), ERROR_GEN_FAILURE);
    }
    const HANDLE mapping = Files().MapReadOnly(file);
    EXPECT_NE(mapping, nullptr);
    EXPECT_TRUE(Files().Close(mapping));
    EXPECT_TRUE(Files().Close(file));
}

TEST_F(FailingFilesTest, ViewThatCannotBeHadLeavesNoMemoryBehind)
{
    // One that fills its last page takes two mappings, either of which may fail.
    for (const std::size_t length : {std::size_t{5}, static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))})
    {
        const HANDLE file = Files().OpenForReading(m_folder.File("b", std::string(length, 'x')));
        const HANDLE mapping = Files().MapReadOnly(file);
        const std::ptrdiff_t mappings = Mappings();
        constexpr int rounds = 50;
        for (int round = 0; round < rounds; ++round)
        {
            const FailingCall failing("mmap", ENOMEM, 1 + round % (length == 5 ? 1 : 2));
            ASSERT_EQ(Files().ViewAll(mapping, length), nullptr);
            ASSERT_EQ(LastError(), ERROR_NOT_ENOUGH_MEMORY);
        }
        for (int round = 0; round < rounds; ++round)
        {
            const FailingCall failing("operator new", ENOMEM);
            ASSERT_EQ(Files().ViewAll(mapping, length), nullptr);
            ASSERT_EQ(LastError(), ERROR_NOT_ENOUGH_MEMORY);
        }
        EXPECT_LT(Mappings(), mappings + rounds / 2);
        const void* const view = Files().ViewAll(mapping, length);
        ASSERT_NE(view, nullptr);
        EXPECT_EQ(static_cast<const char*>(view)[length - 1], 'x');
        EXPECT_TRUE(Files().UnmapView(view));
        EXPECT_TRUE(Files().Close(mapping));
        EXPECT_TRUE(Files().Close(file));
    }
}

TEST_F(FailingFilesTest, ReasonOfAFailedViewOutlivesTheCleanUp)
{
    const HANDLE file = Files().OpenForReading(m_folder.File("b", std::string(4096, 'x')));
    const HANDLE mapping = Files().MapReadOnly(file);
    {
        const FailingCall viewing("mmap", ENODEV, 2);
        const FailingCall unmapping("munmap", ENOMEM);
        EXPECT_EQ(Files().ViewAll(mapping, 4096), nullptr);
        EXPECT_EQ(LastError(), utility::platform::posix::ErrorOfErrno(ENODEV));
        EXPECT_TRUE(unmapping.HasFailed());
    }
    EXPECT_TRUE(Files().Close(mapping));
    EXPECT_TRUE(Files().Close(file));
}

TEST_F(FailingFilesTest, ViewThatFailsToGoSaysWhy)
{
    const HANDLE file = Files().OpenForReading(m_path);
    const HANDLE mapping = Files().MapReadOnly(file);
    const void* const view = Files().ViewAll(mapping, 5);
    {
        const FailingCall failing("munmap", ENOMEM);
        EXPECT_FALSE(Files().UnmapView(view));
        EXPECT_EQ(LastError(), ERROR_NOT_ENOUGH_MEMORY);
    }
    EXPECT_TRUE(Files().UnmapView(view));
    EXPECT_TRUE(Files().Close(mapping));
    EXPECT_TRUE(Files().Close(file));
}

TEST_F(FailingFilesTest, MappedFileIsThereWholeOrNotAtAllWhicheverCallFails)
{
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const auto path = m_folder.File("b", std::string(page, 'x'));
    for (const char* const call : {"open", "fstat", "fcntl", "mmap", "operator new"})
    {
        bool fails = true;
        for (int at = 1; fails; ++at)
        {
            const FailingCall failing(call, ENOMEM, at);
            const utility::platform::posix::MappedFile file(path);
            fails = failing.HasFailed();
            // Locks are not for every file system.
            if (fails && file.Content().empty())
                EXPECT_EQ(LastError(), ERROR_NOT_ENOUGH_MEMORY) << call << at;
            else
                EXPECT_EQ(file.Content().size(), page) << call << at;
        }
    }
}
