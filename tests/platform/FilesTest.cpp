#include "utility/platform/Files.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <chrono>

namespace platform = utility::platform;
using utility::platform::Files;

namespace
{

class FilesTest : public ::testing::Test
{
protected:
    FilesTest() { platform::SetLastError(0xABCDEF); }

    boost::filesystem::path Path(const char* name) const { return m_folder / name; }
    boost::filesystem::path File(const char* name, const std::string& bytes) const
    {
        return m_folder.File(name, bytes);
    }

    /// Checks that an open failed, and for which reason.
    static void ExpectRefused(HANDLE file, DWORD reason)
    {
        const DWORD error = platform::LastError();
        EXPECT_EQ(file, INVALID_HANDLE_VALUE);
        EXPECT_EQ(error, reason);
        if (file != INVALID_HANDLE_VALUE)
            Files().Close(file);
    }

    /// Checks that a call failed, and for which reason.
    static void ExpectFailed(bool result, DWORD reason)
    {
        EXPECT_EQ(platform::LastError(), reason);
        EXPECT_FALSE(result);
    }

    const support::TemporaryFolder m_folder;
};

/// A file open to write.
class WrittenFileTest : public FilesTest
{
protected:
    WrittenFileTest() : m_file(Files().OpenForWriting(Path("a"))) {}
    ~WrittenFileTest() override { Files().Close(m_file); }

    std::uint64_t Length()
    {
        std::uint64_t length = 77;
        EXPECT_TRUE(Files().Length(m_file, length));
        return length;
    }

    HANDLE m_file;
};

std::string BytesOfView(const void* view, std::size_t length) { return {static_cast<const char*>(view), length}; }

}

TEST_F(FilesTest, SecondReaderIsLetIn)
{
    const boost::filesystem::path path = File("a", "bytes");
    const HANDLE first = Files().OpenForReading(path);
    const HANDLE second = Files().OpenForReading(path);
    EXPECT_NE(first, INVALID_HANDLE_VALUE);
    EXPECT_NE(second, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Files().Close(first));
    EXPECT_TRUE(Files().Close(second));
}

TEST_F(FilesTest, WriterIsRefusedWhileAReaderIsThere)
{
    const boost::filesystem::path path = File("a", "bytes");
    const HANDLE reader = Files().OpenForReading(path);
    ExpectRefused(Files().OpenForWriting(path), ERROR_SHARING_VIOLATION);
    EXPECT_TRUE(Files().Close(reader));
    const HANDLE writer = Files().OpenForWriting(path);
    EXPECT_NE(writer, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Files().Close(writer));
}

TEST_F(FilesTest, EverybodyIsRefusedWhileAWriterIsThere)
{
    const boost::filesystem::path path = File("a", "bytes");
    const HANDLE writer = Files().OpenForWriting(path);
    ExpectRefused(Files().OpenForReading(path), ERROR_SHARING_VIOLATION);
    ExpectRefused(Files().OpenForWriting(path), ERROR_SHARING_VIOLATION);
    EXPECT_TRUE(Files().Close(writer));
    const HANDLE reader = Files().OpenForReading(path);
    EXPECT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Files().Close(reader));
}

TEST_F(FilesTest, FileBeingReadMayBeRenamedAndDeleted)
{
    const HANDLE file = Files().OpenForReading(File("a", "bytes"));
    const HANDLE mapping = Files().MapReadOnly(file);
    void* const view = Files().ViewAll(mapping, 5);
    ASSERT_NE(view, nullptr);
    boost::system::error_code failure;
    boost::filesystem::rename(m_folder / "a", m_folder / "b", failure);
    EXPECT_FALSE(failure) << failure.message();
    EXPECT_FALSE(exists(m_folder / "a"));
    EXPECT_TRUE(exists(m_folder / "b"));
    boost::filesystem::remove(m_folder / "b", failure);
    EXPECT_FALSE(failure) << failure.message();
    EXPECT_EQ(BytesOfView(view, 5), "bytes");
    EXPECT_TRUE(Files().UnmapView(view));
    EXPECT_TRUE(Files().Close(mapping));
    EXPECT_TRUE(Files().Close(file));
    EXPECT_FALSE(exists(m_folder / "b"));
}

TEST_F(FilesTest, WriterMakesTheFileAndKeepsItsBytes)
{
    const HANDLE made = Files().OpenForWriting(Path("new"));
    EXPECT_NE(made, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Files().Close(made));
    EXPECT_EQ(file_size(m_folder / "new"), 0u);
    EXPECT_TRUE(Files().Close(Files().OpenForWriting(File("old", "bytes"))));
    EXPECT_EQ(m_folder.BytesOf(m_folder / "old"), "bytes");
}

TEST_F(FilesTest, MissingFileIsError2) { ExpectRefused(Files().OpenForReading(Path("missing")), 2); }

TEST_F(FilesTest, MissingFolderIsError3)
{
    ExpectRefused(Files().OpenForReading(Path("folder/file")), 3);
    ExpectRefused(Files().OpenForWriting(Path("folder/file")), 3);
    ExpectRefused(Files().OpenForReading(Path("folder/deeper/file")), 3);
}

TEST_F(FilesTest, FileInPlaceOfAFolderIsError3)
{
    File("a", "bytes");
    ExpectRefused(Files().OpenForReading(Path("a/b")), 3);
    ExpectRefused(Files().OpenForWriting(Path("a/b")), 3);
}

TEST_F(FilesTest, EmptyPathIsError3)
{
    ExpectRefused(Files().OpenForReading(L""), 3);
    ExpectRefused(Files().OpenForWriting(L""), 3);
}

TEST_F(FilesTest, PathWithANullCharacterIsError123AndNotTheFileOfItsBeginning)
{
    boost::filesystem::path::string_type path = File("a", "bytes").native();
    path += boost::filesystem::path::value_type();
    path += boost::filesystem::path("b").native();
    ExpectRefused(Files().OpenForReading(path), ERROR_INVALID_NAME);
    platform::SetLastError(0);
    ExpectRefused(Files().OpenForWriting(path), ERROR_INVALID_NAME);
}

TEST_F(FilesTest, FolderIsError5)
{
    boost::filesystem::create_directory(m_folder / "folder");
    ExpectRefused(Files().OpenForReading(Path("folder")), 5);
    ExpectRefused(Files().OpenForWriting(Path("folder")), 5);
}

TEST_F(FilesTest, EmptyFileIsNotMapped)
{
    const HANDLE file = Files().OpenForReading(File("a", ""));
    std::uint64_t length = 77;
    EXPECT_TRUE(Files().Length(file, length));
    EXPECT_EQ(length, 0u);
    platform::SetLastError(0xABCDEF);
    EXPECT_EQ(Files().MapReadOnly(file), nullptr);
    EXPECT_NE(platform::LastError(), 0xABCDEFu);
    EXPECT_TRUE(Files().Close(file));
}

class ViewTest : public FilesTest, public ::testing::WithParamInterface<std::size_t>
{
};

TEST_P(ViewTest, HasAllBytesAndOneReadableBehindThem)
{
    std::string bytes(GetParam(), 'x');
    bytes.front() = 'a';
    bytes.back() = 'z';
    const HANDLE file = Files().OpenForReading(File("a", bytes));
    const HANDLE mapping = Files().MapReadOnly(file);
    ASSERT_NE(mapping, nullptr);
    void* const view = Files().ViewAll(mapping, bytes.size());
    ASSERT_NE(view, nullptr);
    // The view outlives both handles.
    EXPECT_TRUE(Files().Close(mapping));
    EXPECT_TRUE(Files().Close(file));
    EXPECT_EQ(BytesOfView(view, bytes.size()), bytes);
    EXPECT_EQ(static_cast<const volatile char*>(view)[bytes.size()], '\0');
    EXPECT_TRUE(Files().FlushView(view));
    EXPECT_TRUE(Files().UnmapView(view));
    ExpectFailed(Files().UnmapView(view), ERROR_INVALID_ADDRESS);
}

INSTANTIATE_TEST_SUITE_P(Sizes, ViewTest, ::testing::Values(1, 2, 4095, 4096, 4097, 8192, 65535, 65536, 65537, 131072),
                         ::testing::PrintToStringParamName());

TEST_F(FilesTest, TwoViewsOfOneFileAreUnmappedEachForItself)
{
    const boost::filesystem::path path = File("a", std::string(4096, 'x'));
    const HANDLE file = Files().OpenForReading(path);
    const HANDLE mapping = Files().MapReadOnly(file);
    void* const first = Files().ViewAll(mapping, 4096);
    void* const second = Files().ViewAll(mapping, 4096);
    EXPECT_NE(first, second);
    EXPECT_TRUE(Files().UnmapView(first));
    EXPECT_EQ(BytesOfView(second, 4096), std::string(4096, 'x'));
    EXPECT_TRUE(Files().UnmapView(second));
    EXPECT_TRUE(Files().Close(mapping));
    EXPECT_TRUE(Files().Close(file));
}

TEST_F(FilesTest, UnknownAddressIsNotUnmapped)
{
    const std::string noView(4096, 'x');
    ExpectFailed(Files().UnmapView(noView.data()), ERROR_INVALID_ADDRESS);
    platform::SetLastError(0);
    ExpectFailed(Files().UnmapView(nullptr), ERROR_INVALID_ADDRESS);
}

TEST_F(WrittenFileTest, WritesAtThePosition)
{
    DWORD written = 77;
    EXPECT_TRUE(Files().Write(m_file, "one two", 7, written));
    EXPECT_EQ(written, 7u);
    EXPECT_EQ(Files().Seek(m_file, 4, nullptr, FILE_BEGIN), 4u);
    EXPECT_TRUE(Files().Write(m_file, "T", 1, written));
    EXPECT_EQ(written, 1u);
    EXPECT_EQ(Files().Seek(m_file, 0, nullptr, FILE_CURRENT), 5u);
    EXPECT_TRUE(Files().Write(m_file, "", 0, written));
    EXPECT_EQ(written, 0u);
    EXPECT_TRUE(Files().FlushToDisk(m_file));
    EXPECT_TRUE(Files().Close(m_file));
    EXPECT_EQ(m_folder.BytesOf(m_folder / "a"), "one Two");
    m_file = Files().OpenForWriting(Path("a"));
}

TEST_F(WrittenFileTest, IsReadByItsWriterToo)
{
    DWORD written = 0;
    EXPECT_TRUE(Files().Write(m_file, "bytes", 5, written));
    const HANDLE mapping = Files().MapReadOnly(m_file);
    ASSERT_NE(mapping, nullptr);
    void* const view = Files().ViewAll(mapping, 5);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(BytesOfView(view, 5), "bytes");
    EXPECT_TRUE(Files().UnmapView(view));
    EXPECT_TRUE(Files().Close(mapping));
}

TEST_F(WrittenFileTest, TruncateCutsAndExtendsAtThePosition)
{
    DWORD written = 0;
    Files().Write(m_file, "ten bytes.", 10, written);
    Files().Seek(m_file, -4, nullptr, FILE_CURRENT);
    EXPECT_TRUE(Files().TruncateHere(m_file));
    EXPECT_EQ(Length(), 6u);
    EXPECT_EQ(Files().Seek(m_file, 0, nullptr, FILE_CURRENT), 6u);
    Files().Seek(m_file, 94, nullptr, FILE_END);
    EXPECT_EQ(Length(), 6u);
    EXPECT_TRUE(Files().TruncateHere(m_file));
    EXPECT_EQ(Length(), 100u);
}

TEST_F(WrittenFileTest, SeekHas64BitsWithAHighHalf)
{
    std::int32_t high = 0x12;
    EXPECT_EQ(Files().Seek(m_file, static_cast<std::int32_t>(0x87654321), &high, FILE_BEGIN), 0x87654321u);
    EXPECT_EQ(high, 0x12);
    EXPECT_TRUE(Files().TruncateHere(m_file));
    EXPECT_EQ(Length(), 0x1287654321u);
    high = -1;
    EXPECT_EQ(Files().Seek(m_file, -0x21, &high, FILE_CURRENT), 0x87654300u);
    EXPECT_EQ(high, 0x12);
    high = 0;
    EXPECT_EQ(Files().Seek(m_file, 0, &high, FILE_END), 0x87654321u);
    EXPECT_EQ(high, 0x12);
    BY_HANDLE_FILE_INFORMATION information;
    EXPECT_TRUE(Files().Information(m_file, information));
    EXPECT_EQ(information.nFileSizeHigh, 0x12u);
    EXPECT_EQ(information.nFileSizeLow, 0x87654321u);
}

TEST_F(WrittenFileTest, SeekAheadOfTheStartFailsAndStaysWhereItIs)
{
    Files().Seek(m_file, 5, nullptr, FILE_BEGIN);
    EXPECT_EQ(Files().Seek(m_file, -6, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(platform::LastError(), ERROR_NEGATIVE_SEEK);
    EXPECT_EQ(Files().Seek(m_file, 0, nullptr, FILE_CURRENT), 5u);
}

TEST_F(WrittenFileTest, SeekFromNowhereFails)
{
    EXPECT_EQ(Files().Seek(m_file, 0, nullptr, 3), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(platform::LastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(FilesTest, ReaderIsNotWritten)
{
    const HANDLE file = Files().OpenForReading(File("a", "bytes"));
    DWORD written = 0;
    ExpectFailed(Files().Write(file, "x", 1, written), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(Files().TruncateHere(file));
    EXPECT_TRUE(Files().Close(file));
    EXPECT_EQ(m_folder.BytesOf(m_folder / "a"), "bytes");
}

TEST_F(FilesTest, EverythingFailsOnAClosedHandle)
{
    const HANDLE file = Files().OpenForReading(File("a", "bytes"));
    EXPECT_TRUE(Files().Close(file));
    ExpectFailed(Files().Close(file), ERROR_INVALID_HANDLE);
    platform::SetLastError(0);
    std::uint64_t length = 0;
    ExpectFailed(Files().Length(file, length), ERROR_INVALID_HANDLE);
    platform::SetLastError(0);
    ExpectFailed(Files().MapReadOnly(file) != nullptr, ERROR_INVALID_HANDLE);
    platform::SetLastError(0);
    ExpectFailed(Files().ViewAll(file, 5) != nullptr, ERROR_INVALID_HANDLE);
    platform::SetLastError(0);
    ExpectFailed(Files().Seek(file, 0, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER, ERROR_INVALID_HANDLE);
    platform::SetLastError(0);
    ExpectFailed(Files().TruncateHere(file), ERROR_INVALID_HANDLE);
    platform::SetLastError(0);
    DWORD written = 0;
    ExpectFailed(Files().Write(file, "x", 1, written), ERROR_INVALID_HANDLE);
    platform::SetLastError(0);
    ExpectFailed(Files().FlushToDisk(file), ERROR_INVALID_HANDLE);
    platform::SetLastError(0);
    BY_HANDLE_FILE_INFORMATION information;
    ExpectFailed(Files().Information(file, information), ERROR_INVALID_HANDLE);
}

namespace
{

std::uint64_t Joined(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

BY_HANDLE_FILE_INFORMATION InformationOf(const boost::filesystem::path& path)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    const HANDLE file = Files().OpenForReading(path);
    EXPECT_TRUE(Files().Information(file, information));
    EXPECT_TRUE(Files().Close(file));
    return information;
}

std::uint64_t IndexOf(const BY_HANDLE_FILE_INFORMATION& information)
{
    return Joined(information.nFileIndexHigh, information.nFileIndexLow);
}

/// In units of 100 ns since 1601.
std::uint64_t Now()
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count() / 100) +
           116444736000000000;
}

}

TEST_F(FilesTest, InformationTellsTheSizeAndOneLink)
{
    const auto information = InformationOf(File("a", "twelve bytes"));
    EXPECT_EQ(information.nFileSizeLow, 12u);
    EXPECT_EQ(information.nFileSizeHigh, 0u);
    EXPECT_EQ(information.nNumberOfLinks, 1u);
    EXPECT_EQ(information.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY), 0u);
    EXPECT_NE(information.dwFileAttributes, 0u);
}

TEST_F(FilesTest, InformationTellsTheSameFileFromAnother)
{
    const boost::filesystem::path path = File("a", "bytes");
    const auto first = InformationOf(path);
    const auto again = InformationOf(path);
    const auto other = InformationOf(File("b", "bytes"));
    EXPECT_EQ(IndexOf(first), IndexOf(again));
    EXPECT_NE(IndexOf(first), IndexOf(other));
    EXPECT_EQ(first.dwVolumeSerialNumber, other.dwVolumeSerialNumber);
}

TEST_F(FilesTest, InformationTellsTheTimes)
{
    constexpr std::uint64_t minute = 600000000;
    const auto information = InformationOf(File("a", "bytes"));
    const std::uint64_t now = Now();
    for (const FILETIME& time : {information.ftCreationTime, information.ftLastAccessTime, information.ftLastWriteTime})
    {
        EXPECT_GT(Joined(time.dwHighDateTime, time.dwLowDateTime), now - minute);
        EXPECT_LT(Joined(time.dwHighDateTime, time.dwLowDateTime), now + minute);
    }
}

TEST_F(FilesTest, InformationTellsAReadOnlyFile)
{
    const boost::filesystem::path path = File("a", "bytes");
    using boost::filesystem::perms;
    boost::filesystem::permissions(m_folder / "a", perms::owner_read);
    const auto information = InformationOf(path);
    boost::filesystem::permissions(m_folder / "a", perms::owner_read | perms::owner_write);
    EXPECT_EQ(information.dwFileAttributes & FILE_ATTRIBUTE_READONLY, FILE_ATTRIBUTE_READONLY);
}
