#include "utility/files/MemoryMappedFile.h"

#include "tests/support/ForwardingFiles.h"
#include "tests/support/PathsWithoutLocale.h"
#include "tests/support/Substitute.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/TextFile.h"
#include "utility/framework/FileException.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

using utility::platform::FileService;
using utility::platform::FilesSlot;
using Calls = std::vector<std::string>;

namespace
{

/// Gives the tests what derived classes see.
struct OpenedFile : CMemoryMappedFile
{
    using CMemoryMappedFile::CloseFile;
    using CMemoryMappedFile::CloseFileMapping;
    using CMemoryMappedFile::CloseFileView;
    using CMemoryMappedFile::CMemoryMappedFile;
    using CMemoryMappedFile::GetFile;
    using CMemoryMappedFile::ThrowFileException;
};

/// Catches the failure that an action throws; null if it throws none.
template <class Action>
std::unique_ptr<CFileException> FailureOf(Action action)
{
    try
    {
        action();
    }
    catch (CFileException* failure)
    {
        return std::unique_ptr<CFileException>(failure);
    }
    return nullptr;
}

std::string BytesOf(const CMemoryMappedFile& file)
{
    return {static_cast<const char*>(file.GetBase()), file.GetFileSize()};
}

/// What holds of an object that is closed.
void ExpectClosed(OpenedFile& file)
{
    EXPECT_FALSE(file.IsValid());
    EXPECT_EQ(file.GetFile(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(file.GetBase(), nullptr);
    EXPECT_EQ(file.GetFileSize(), 0u);
    EXPECT_TRUE(file.Close(0));
}

class MemoryMappedFileTest : public ::testing::Test
{
protected:
    const support::TemporaryFolder m_folder;
};

/// With a file service that records and fails.
class MemoryMappedFileCallsTest : public MemoryMappedFileTest
{
protected:
    support::ForwardingFiles m_files;

private:
    const support::Substitute<FileService> m_scope{FilesSlot(), m_files};
};

}

TEST_F(MemoryMappedFileTest, HasNoVirtualOperations)
{
    static_assert(!std::is_polymorphic_v<CMemoryMappedFile>);
    static_assert(!std::has_virtual_destructor_v<CMemoryMappedFile>);
}

TEST_F(MemoryMappedFileTest, ReadsTheBytesOfAFile)
{
    const auto path = m_folder.File("a", "twelve bytes");
    CMemoryMappedFile file;
    ASSERT_TRUE(file.Open(path));
    EXPECT_TRUE(file.IsValid());
    EXPECT_EQ(BytesOf(file), "twelve bytes");
    EXPECT_EQ(file.path(), path);
    EXPECT_EQ(static_cast<const CMemoryMappedFile&>(file).GetBase(), file.GetBase());
}

TEST_F(MemoryMappedFileTest, WidePathAndPathObjectOpenTheSameFile)
{
    const auto path = m_folder.File("a", "bytes");
    const std::wstring wide = utility::platform::WideFromPath(path);
    const CMemoryMappedFile fromPath(path);
    const CMemoryMappedFile fromWide(wide.c_str());
    EXPECT_EQ(BytesOf(fromPath), "bytes");
    EXPECT_EQ(BytesOf(fromWide), "bytes");
    EXPECT_EQ(fromWide.path(), path);

    EXPECT_TRUE(CMemoryMappedFile(m_folder / "p", 0).IsValid());
    EXPECT_TRUE(CMemoryMappedFile((wide + L"w").c_str(), 0).IsValid());
    EXPECT_TRUE(exists(m_folder / "p"));
    EXPECT_TRUE(exists(m_folder / "aw"));
}

TEST_F(MemoryMappedFileTest, EmptyFileIsNotValidAndThrowsNothing)
{
    OpenedFile file;
    EXPECT_FALSE(file.Open(m_folder.File("empty", "")));
    ExpectClosed(file);
    EXPECT_FALSE(CMemoryMappedFile(m_folder / "empty").IsValid());
    EXPECT_TRUE(file.path().empty());
}

TEST_F(MemoryMappedFileTest, MissingFileThrowsWithCauseErrorAndPath)
{
    OpenedFile file;
    const auto path = m_folder / "missing";
    const auto failure = FailureOf([&] { file.Open(path); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->m_cause, CFileException::fileNotFound);
    EXPECT_EQ(failure->m_lOsError, 2);
    EXPECT_EQ(failure->m_strFileName, utility::platform::WideFromPath(path));
    ExpectClosed(file);
}

TEST_F(MemoryMappedFileTest, ConstructorsLetTheFailureThrough)
{
    const auto missing = m_folder / "missing";
    const auto beyond = m_folder / "folder/missing";
    EXPECT_TRUE(FailureOf([&] { const CMemoryMappedFile file(missing); }));
    EXPECT_TRUE(FailureOf([&] { const CMemoryMappedFile file(utility::platform::WideFromPath(missing).c_str()); }));
    EXPECT_TRUE(FailureOf([&] { const CMemoryMappedFile file(beyond, 0); }));
    EXPECT_TRUE(FailureOf([&] { const CMemoryMappedFile file(utility::platform::WideFromPath(beyond).c_str(), 0); }));
}

TEST_F(MemoryMappedFileTest, FolderThatIsMissingThrowsToAWriter)
{
    OpenedFile file;
    const auto path = m_folder / "folder/file";
    const auto failure = FailureOf([&] { file.Open(path, 10); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->m_cause, CFileException::badPath);
    EXPECT_EQ(failure->m_lOsError, 3);
    EXPECT_EQ(failure->m_strFileName, utility::platform::WideFromPath(path));
    ExpectClosed(file);
}

TEST_F(MemoryMappedFileTest, NameWithANullCharacterIsRefusedAndNotThatOfTheFileAheadOfIt)
{
    const auto path = m_folder.File("file", "bytes");
    const std::wstring name = utility::platform::WideFromPath(path) + std::wstring(L"\0.nc", 4);
    CMemoryMappedFile file;
    for (const auto& failure :
         {FailureOf([&] { file.Open(name); }), FailureOf([&] { file.Open(name, 0); }),
          FailureOf([&] { const CMemoryMappedFile reader(name); }),
          FailureOf([&] { const CMemoryMappedFile writer(name, 0); }), FailureOf([&] { CTextFile().Open(name); })})
        EXPECT_TRUE(failure && failure->m_cause == CFileException::badPath && failure->m_lOsError == 123);
    EXPECT_EQ(support::TemporaryFolder::BytesOf(path), "bytes");
}

TEST_F(MemoryMappedFileTest, NamesBeyondAsciiWorkInBothForms)
{
    const std::wstring path =
        utility::platform::WideFromPath(m_folder / "") + L"Zeichnung \u00E4\u00DF\u20AC \u65E5\u672C";
    CMemoryMappedFile writer(path.c_str(), 0);
    writer.WriteFile("bytes", 5);
    EXPECT_TRUE(writer.Close(0));
    const CMemoryMappedFile reader(writer.path());
    EXPECT_EQ(BytesOf(reader), "bytes");
    EXPECT_EQ(utility::platform::WideFromPath(reader.path()), path);
}

TEST_F(MemoryMappedFileTest, WideTextNamesAFileWhateverTheLocale)
{
    const std::wstring path = (m_folder / "a").wstring();
    const support::PathsWithoutLocale unconverted;
    EXPECT_TRUE(CMemoryMappedFile(path, 7).Close(7));
    EXPECT_TRUE(CMemoryMappedFile(path.c_str(), 7).Close(7));
    EXPECT_EQ(CMemoryMappedFile(path).GetFileSize(), 7u);
    EXPECT_EQ(CMemoryMappedFile(path.c_str()).GetFileSize(), 7u);
    CMemoryMappedFile file;
    EXPECT_TRUE(file.Open(path, 8));
    EXPECT_TRUE(file.Close(8));
    EXPECT_TRUE(file.Open(path));
    EXPECT_EQ(file.GetFileSize(), 8u);
}

TEST_F(MemoryMappedFileTest, CloseOfANeverOpenedObjectIsTrueAndChangesNothing)
{
    OpenedFile file;
    EXPECT_TRUE(file.Close(123));
    EXPECT_TRUE(file.CloseFileView());
    EXPECT_TRUE(file.CloseFileMapping());
    EXPECT_TRUE(file.CloseFile());
    ExpectClosed(file);
}

TEST_F(MemoryMappedFileTest, SecondCloseIsTrue)
{
    OpenedFile reader(m_folder.File("a", "bytes"));
    EXPECT_TRUE(reader.Close(0));
    ExpectClosed(reader);
    OpenedFile writer(m_folder / "b", 0);
    EXPECT_TRUE(writer.Close(0));
    ExpectClosed(writer);
}

TEST_F(MemoryMappedFileTest, PathStaysAfterTheClose)
{
    const auto path = m_folder.File("a", "bytes");
    CMemoryMappedFile file(path);
    file.Close(0);
    EXPECT_EQ(file.path(), path);
}

TEST_F(MemoryMappedFileTest, ObjectOpensAgainAfterAClose)
{
    CMemoryMappedFile file(m_folder.File("a", "bytes"));
    file.Close(0);
    ASSERT_TRUE(file.Open(m_folder / "b", 0));
    EXPECT_TRUE(file.WriteFile("more", 4));
    file.Close(0);
    ASSERT_TRUE(file.Open(m_folder / "b"));
    EXPECT_EQ(BytesOf(file), "more");
}

TEST_F(MemoryMappedFileTest, CloseOfAReaderLeavesTheFileAlone)
{
    const auto path = m_folder.File("a", "twelve bytes");
    CMemoryMappedFile(path).Close(5);
    EXPECT_EQ(m_folder.BytesOf(path), "twelve bytes");
}

TEST_F(MemoryMappedFileTest, WriterOfSizeZeroLeavesTheContentsAloneUntilTheClose)
{
    const auto path = m_folder.File("a", "twelve bytes");
    CMemoryMappedFile file(path, 0);
    EXPECT_EQ(file_size(path), 12u);
    EXPECT_EQ(file.GetFilePointer(), 0u);
    EXPECT_TRUE(file.Close(0));
    EXPECT_EQ(file_size(path), 0u);
}

TEST_F(MemoryMappedFileTest, DestructorEndsTheFileAtTheFilePosition)
{
    const auto path = m_folder.File("a", "twelve bytes");
    {
        const CMemoryMappedFile file(path, 0);
        file.WriteFile("TWELVE", 6);
    }
    EXPECT_EQ(m_folder.BytesOf(path), "TWELVE");
}

TEST_F(MemoryMappedFileTest, WriterWithASizeMakesAFileOfThatSize)
{
    CMemoryMappedFile file(m_folder / "a", 100);
    EXPECT_EQ(file_size(m_folder / "a"), 100u);
    EXPECT_EQ(file.GetFilePointer(), 0u);
}

TEST_F(MemoryMappedFileTest, CloseZeroEndsTheFileAfterWhatWasWritten)
{
    CMemoryMappedFile file(m_folder / "a", 100);
    file.WriteFile("ten bytes.", 10);
    EXPECT_TRUE(file.Close(0));
    EXPECT_EQ(m_folder.BytesOf(m_folder / "a"), "ten bytes.");
}

TEST_F(MemoryMappedFileTest, CloseWithASizeEndsTheFileThere)
{
    CMemoryMappedFile file(m_folder / "a", 100);
    file.WriteFile("ten bytes.", 10);
    EXPECT_TRUE(file.Close(50));
    EXPECT_EQ(m_folder.BytesOf(m_folder / "a"), "ten bytes." + std::string(40, '\0'));
}

TEST_F(MemoryMappedFileTest, CloseTakesA64BitSize)
{
    CMemoryMappedFile file(m_folder / "a", 0);
    EXPECT_TRUE(file.Close(0x123456789));
    EXPECT_EQ(file_size(m_folder / "a"), 0x123456789u);
}

TEST_F(MemoryMappedFileTest, FileOfMoreThanFourGigabytesIsReadToItsEnd)
{
    const auto path = m_folder.File("a", "first");
    constexpr std::uint64_t size = 0x100002005;
    m_folder.WriteAt(path, size - 4, "last");
    CMemoryMappedFile file(path);
    ASSERT_TRUE(file.IsValid());
    ASSERT_EQ(file.GetFileSize(), size);
    const auto* const base = static_cast<const char*>(file.GetBase());
    EXPECT_EQ(std::string(base, 5), "first");
    EXPECT_STREQ(base + size - 4, "last");
    EXPECT_TRUE(file.IsValidPtr(base + size - 1));
    EXPECT_FALSE(file.IsValidPtr(base + size));
    _BY_HANDLE_FILE_INFORMATION information = {};
    EXPECT_TRUE(file.GetFileInformation(&information));
    EXPECT_EQ(information.nFileSizeHigh, 1u);
    EXPECT_EQ(information.nFileSizeLow, 0x2005u);
    EXPECT_TRUE(file.Close(0));
}

TEST_F(MemoryMappedFileTest, SizeAbove31BitsIsASignedDistance)
{
    const auto path = m_folder.File("a", "twelve bytes");
    CMemoryMappedFile file(path, 0x80000000);
    // The seek to a negative position fails, so that the file is cut where the position is.
    EXPECT_EQ(file_size(path), 0u);
}

TEST_F(MemoryMappedFileTest, WriterHasNoViewHoweverMuchIsWritten)
{
    CMemoryMappedFile file(m_folder / "a", 100);
    file.WriteFile("ten bytes.", 10);
    EXPECT_TRUE(file.IsValid());
    EXPECT_EQ(file.GetFileSize(), 0u);
    EXPECT_EQ(file.GetBase(), nullptr);
    EXPECT_FALSE(file.IsValidPtr(nullptr));
}

TEST_F(MemoryMappedFileTest, IsValidPtrExcludesTheEnd)
{
    CMemoryMappedFile file(m_folder.File("a", "twelve bytes"));
    const auto* const base = static_cast<const char*>(file.GetBase());
    EXPECT_FALSE(file.IsValidPtr(base - 1));
    EXPECT_TRUE(file.IsValidPtr(base));
    EXPECT_TRUE(file.IsValidPtr(base + 11));
    EXPECT_FALSE(file.IsValidPtr(base + 12));
    EXPECT_FALSE(file.IsValidPtr(nullptr));
    file.Close(0);
    EXPECT_FALSE(file.IsValidPtr(base));
    EXPECT_FALSE(file.IsValidPtr(nullptr));
}

TEST_F(MemoryMappedFileTest, FilePointerMovesFromStartPositionAndEnd)
{
    CMemoryMappedFile file(m_folder / "a", 100);
    EXPECT_EQ(file.SetFilePointer(30, FILE_BEGIN), 30u);
    EXPECT_EQ(file.SetFilePointer(-10, FILE_CURRENT), 20u);
    EXPECT_EQ(file.GetFilePointer(), 20u);
    EXPECT_EQ(file.SetFilePointer(-1, FILE_END), 99u);
    EXPECT_EQ(file.SetFilePointer(-1, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(file.GetFilePointer(), 99u);
}

TEST_F(MemoryMappedFileTest, FilePointerOfAClosedObjectIsTheFailureValue)
{
    CMemoryMappedFile file;
    EXPECT_EQ(file.GetFilePointer(), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(file.SetFilePointer(0, FILE_BEGIN), INVALID_SET_FILE_POINTER);
}

TEST_F(MemoryMappedFileTest, SizeToWriteCountsByItsLow32Bits)
{
    CMemoryMappedFile file(m_folder / "a", 0);
    EXPECT_TRUE(file.WriteFile("ten bytes.", 0x700000003));
    EXPECT_TRUE(file.WriteFile("ten bytes.", 0x100000000));
    file.Close(0);
    EXPECT_EQ(m_folder.BytesOf(m_folder / "a"), "ten");
}

TEST_F(MemoryMappedFileTest, WriteToAClosedObjectThrows)
{
    const CMemoryMappedFile file;
    const auto failure = FailureOf([&] { file.WriteFile("x", 1); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->m_cause, CFileException::invalidFile);
    EXPECT_EQ(failure->m_lOsError, 6);
    EXPECT_EQ(failure->m_strFileName, L"");
}

TEST_F(MemoryMappedFileTest, WriteToAReaderThrows)
{
    const auto path = m_folder.File("a", "bytes");
    const CMemoryMappedFile file(path);
    const auto failure = FailureOf([&] { file.WriteFile("x", 1); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->m_cause, CFileException::accessDenied);
    EXPECT_EQ(failure->m_strFileName, utility::platform::WideFromPath(path));
}

TEST_F(MemoryMappedFileTest, FileInformationOfReaderAndWriter)
{
    _BY_HANDLE_FILE_INFORMATION information = {};
    EXPECT_TRUE(CMemoryMappedFile(m_folder.File("a", "twelve bytes")).GetFileInformation(&information));
    EXPECT_EQ(information.nFileSizeLow, 12u);
    EXPECT_TRUE(CMemoryMappedFile(m_folder / "b", 100).GetFileInformation(&information));
    EXPECT_EQ(information.nFileSizeLow, 100u);
}

TEST_F(MemoryMappedFileTest, ThrowFileExceptionCarriesCauseErrorAndPath)
{
    const OpenedFile file;
    const auto failure = FailureOf([&] { file.ThrowFileException(ERROR_SHARING_VIOLATION, L"some/path"); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->m_cause, CFileException::sharingViolation);
    EXPECT_EQ(failure->m_lOsError, 32);
    EXPECT_EQ(failure->m_strFileName, L"some/path");
}

TEST_F(MemoryMappedFileTest, CopyAliasesTheHandles)
{
    OpenedFile source(m_folder.File("a", "bytes"));
    {
        const OpenedFile copy(source);
        EXPECT_EQ(copy.GetFile(), source.GetFile());
        EXPECT_EQ(copy.GetBase(), source.GetBase());
        EXPECT_EQ(copy.GetFileSize(), source.GetFileSize());
        EXPECT_EQ(copy.path(), source.path());
        EXPECT_NE(&copy.path(), &source.path());
    }
    // The copy's death has closed the handles behind the back of the source.
    EXPECT_TRUE(source.IsValid());
    EXPECT_NE(source.GetFile(), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(source.Close(0));
    ExpectClosed(source);
}

TEST_F(MemoryMappedFileTest, CopyOfAWriterWritesAtTheSamePosition)
{
    OpenedFile source(m_folder / "a", 0);
    OpenedFile copy;
    copy = source;
    source.WriteFile("one ", 4);
    copy.WriteFile("two", 3);
    EXPECT_EQ(source.GetFilePointer(), 7u);
    EXPECT_TRUE(copy.Close(0));
    EXPECT_EQ(m_folder.BytesOf(m_folder / "a"), "one two");
    EXPECT_FALSE(source.Close(0));
}

TEST_F(MemoryMappedFileTest, AssignmentDeliberatelyClosesNothing)
{
    OpenedFile target(m_folder.File("a", "bytes"));
    OpenedFile keeper(target);
    target = OpenedFile();
    ExpectClosed(target);
    EXPECT_EQ(BytesOf(keeper), "bytes");
    EXPECT_TRUE(keeper.Close(0));
}

TEST_F(MemoryMappedFileCallsTest, Reader)
{
    CMemoryMappedFile file(m_folder.File("a", "bytes"));
    EXPECT_EQ(m_files.calls, (Calls{"OpenForReading", "Length", "MapReadOnly", "ViewAll"}));
    m_files.calls.clear();
    EXPECT_TRUE(file.Close(7));
    EXPECT_EQ(m_files.calls, (Calls{"UnmapView", "Close", "Close"}));
}

TEST_F(MemoryMappedFileCallsTest, WriterOfSizeZero)
{
    CMemoryMappedFile file(m_folder / "a", 0);
    EXPECT_EQ(m_files.calls, (Calls{"OpenForWriting"}));
    m_files.calls.clear();
    EXPECT_TRUE(file.Close(0));
    EXPECT_EQ(m_files.calls, (Calls{"TruncateHere", "FlushToDisk", "Close"}));
}

TEST_F(MemoryMappedFileCallsTest, WriterWithASize)
{
    CMemoryMappedFile file(m_folder / "a", 100);
    EXPECT_EQ(m_files.calls, (Calls{"OpenForWriting", "Seek", "TruncateHere", "Seek"}));
    m_files.calls.clear();
    EXPECT_TRUE(file.Close(50));
    EXPECT_EQ(m_files.calls, (Calls{"Seek", "TruncateHere", "FlushToDisk", "Close"}));
}

TEST_F(MemoryMappedFileCallsTest, ClosedObjectMakesNone)
{
    {
        const CMemoryMappedFile file;
        _BY_HANDLE_FILE_INFORMATION information;
        EXPECT_FALSE(file.GetFileInformation(&information));
    }
    EXPECT_EQ(m_files.calls, Calls());
}

TEST_F(MemoryMappedFileCallsTest, DestructorClosesLikeCloseZero)
{
    {
        const CMemoryMappedFile file(m_folder / "a", 0);
        m_files.calls.clear();
    }
    EXPECT_EQ(m_files.calls, (Calls{"TruncateHere", "FlushToDisk", "Close"}));
}

TEST_F(MemoryMappedFileCallsTest, ClosersGoFromTheInsideOut)
{
    OpenedFile file(m_folder.File("a", "bytes"));
    m_files.calls.clear();
    EXPECT_TRUE(file.CloseFileView());
    EXPECT_EQ(m_files.calls, (Calls{"UnmapView"}));
    EXPECT_EQ(file.GetBase(), nullptr);
    EXPECT_TRUE(file.IsValid());
    EXPECT_TRUE(file.CloseFileMapping());
    EXPECT_EQ(m_files.calls, (Calls{"UnmapView", "Close"}));
    EXPECT_TRUE(file.IsValid());
    EXPECT_TRUE(file.CloseFileMapping());
    EXPECT_TRUE(file.CloseFile());
    EXPECT_EQ(m_files.calls, (Calls{"UnmapView", "Close", "Close"}));
    ExpectClosed(file);
}

TEST_F(MemoryMappedFileCallsTest, ClosersGiveTheResultOfTheirOwnCall)
{
    m_files.failing = {"UnmapView"};
    OpenedFile view(m_folder.File("a", "bytes"));
    EXPECT_FALSE(view.CloseFileView());
    EXPECT_TRUE(view.CloseFileView());
    EXPECT_TRUE(view.CloseFile());
    OpenedFile mapping(m_folder / "a");
    EXPECT_TRUE(mapping.CloseFileMapping());
    EXPECT_TRUE(mapping.CloseFile());

    m_files.failing = {"Close"};
    OpenedFile both(m_folder / "a");
    EXPECT_FALSE(both.CloseFileMapping());
    EXPECT_FALSE(both.CloseFile());
    EXPECT_TRUE(both.CloseFile());
}

TEST_F(MemoryMappedFileCallsTest, CloseFileOfAWriterDoesNotFlush)
{
    OpenedFile file(m_folder / "a", 0);
    m_files.calls.clear();
    EXPECT_TRUE(file.CloseFile());
    EXPECT_EQ(m_files.calls, (Calls{"Close"}));
}

TEST_F(MemoryMappedFileCallsTest, WriterOverAnOpenReaderFlushesTheViewFirst)
{
    OpenedFile file(m_folder.File("a", "bytes"));
    const OpenedFile alias(file); // keeps the handle that the second open loses
    ASSERT_TRUE(file.Open(m_folder / "b", 0));
    m_files.calls.clear();
    EXPECT_TRUE(file.Close(9));
    EXPECT_EQ(m_files.calls,
              (Calls{"FlushView", "Seek", "TruncateHere", "FlushToDisk", "UnmapView", "Close", "Close"}));
    EXPECT_TRUE(m_files.Close(alias.GetFile()));
    // The alias is left with dead handles, whose closing fails without a word.
}

TEST_F(MemoryMappedFileCallsTest, FailedOpenOfAnOpenObjectLosesTheFileAndKeepsTheRest)
{
    OpenedFile file(m_folder.File("a", "bytes"));
    OpenedFile alias(file);
    EXPECT_TRUE(FailureOf([&] { file.Open(m_folder / "missing"); }));
    EXPECT_EQ(file.GetFile(), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(file.IsValid());
    m_files.calls.clear();
    EXPECT_TRUE(file.Close(0));
    EXPECT_EQ(m_files.calls, Calls());
    EXPECT_EQ(BytesOf(file), "bytes");
    EXPECT_TRUE(alias.Close(0));
}

TEST_F(MemoryMappedFileCallsTest, FailedWriteThrowsWithThePath)
{
    const auto path = m_folder / "a";
    const CMemoryMappedFile file(path, 0);
    m_files.failing = {"Write"};
    m_files.error = ERROR_DISK_FULL;
    const auto failure = FailureOf([&] { file.WriteFile("x", 1); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->m_cause, CFileException::diskFull);
    EXPECT_EQ(failure->m_lOsError, 112);
    EXPECT_EQ(failure->m_strFileName, utility::platform::WideFromPath(path));
    EXPECT_TRUE(file.IsValid());
}

TEST_F(MemoryMappedFileTest, ShortWriteIsDeliberatelyNotSeen)
{
    struct ShortWrites : support::ForwardingFiles
    {
        bool Write(HANDLE file, const void* data, DWORD, DWORD& written) override
        {
            return System().Write(file, data, 1, written);
        }
    } files;
    const support::Substitute<FileService> scope(FilesSlot(), files);
    CMemoryMappedFile file(m_folder / "a", 0);
    EXPECT_TRUE(file.WriteFile("ten bytes.", 10));
    EXPECT_EQ(file.GetFilePointer(), 1u);
}

TEST_F(MemoryMappedFileCallsTest, FailedInformationIsFalse)
{
    const CMemoryMappedFile file(m_folder.File("a", "bytes"));
    m_files.failing = {"Information"};
    _BY_HANDLE_FILE_INFORMATION information;
    EXPECT_FALSE(file.GetFileInformation(&information));
}

struct ReadOpenFailure
{
    const char* call;
    Calls calls;
};

class MemoryMappedFileOpenFailureTest : public MemoryMappedFileCallsTest,
                                        public ::testing::WithParamInterface<ReadOpenFailure>
{
};

TEST_P(MemoryMappedFileOpenFailureTest, GivesFalseAndCleansUp)
{
    m_files.failing = {GetParam().call};
    OpenedFile file;
    EXPECT_FALSE(file.Open(m_folder.File("a", "bytes")));
    EXPECT_EQ(m_files.calls, GetParam().calls);
    EXPECT_EQ(utility::platform::LastError(), ERROR_NOT_ENOUGH_MEMORY);
    ExpectClosed(file);
    EXPECT_TRUE(file.path().empty());
    // Nothing was left open: a writer is let in.
    EXPECT_TRUE(CMemoryMappedFile(m_folder / "a", 0).IsValid());
}

INSTANTIATE_TEST_SUITE_P(
    Calls, MemoryMappedFileOpenFailureTest,
    ::testing::Values(ReadOpenFailure{"Length", {"OpenForReading", "Length", "Close"}},
                      ReadOpenFailure{"MapReadOnly", {"OpenForReading", "Length", "MapReadOnly", "Close"}},
                      ReadOpenFailure{"ViewAll",
                                      {"OpenForReading", "Length", "MapReadOnly", "ViewAll", "Close", "Close"}}),
    [](const auto& failure) { return failure.param.call; });

TEST_F(MemoryMappedFileCallsTest, FailureAtEveryCallOfAReaderLeavesNothingOpen)
{
    const auto path = m_folder.File("a", "bytes");
    for (std::size_t n = 1; n <= 7; ++n)
    {
        m_files.calls.clear();
        m_files.failAt = n;
        OpenedFile file;
        bool opened = false;
        const auto failure = FailureOf([&] { opened = file.Open(path); });
        EXPECT_EQ(failure != nullptr, n == 1) << n;
        EXPECT_EQ(opened, n > 4) << n;
        EXPECT_EQ(file.Close(0), n != 7) << n;
        m_files.failAt = 0;
        ExpectClosed(file);
        EXPECT_FALSE(FailureOf([&] { CMemoryMappedFile(path, 0).Close(5); })) << n;
    }
}

TEST_F(MemoryMappedFileCallsTest, FailureAtEveryCallOfAWriterLeavesNothingOpen)
{
    const auto path = m_folder / "a";
    for (std::size_t n = 1; n <= 8; ++n)
    {
        m_files.calls.clear();
        m_files.failAt = n;
        OpenedFile file;
        bool opened = false;
        const auto failure = FailureOf([&] { opened = file.Open(path, 100); });
        EXPECT_EQ(failure != nullptr, n == 1) << n;
        EXPECT_EQ(opened, n != 1) << n;
        EXPECT_EQ(file.Close(50), n != 8) << n;
        m_files.failAt = 0;
        ExpectClosed(file);
        EXPECT_FALSE(FailureOf([&] { CMemoryMappedFile(path, 0).Close(5); })) << n;
    }
}
