#include "utility/platform/Files.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

using support::ImportedCall;
using utility::platform::Files;

extern "C" decltype(&::CreateFileW) __imp_CreateFileW;
extern "C" decltype(&::UnmapViewOfFile) __imp_UnmapViewOfFile;
extern "C" decltype(&::VirtualAlloc) __imp_VirtualAlloc;

namespace
{

/// The numbers that a file was opened with last.
struct Opening
{
    DWORD access;
    DWORD share;
    DWORD disposition;
    DWORD flags;
} opening;

HANDLE WINAPI Record(LPCWSTR, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD flags, HANDLE)
{
    opening = {access, share, disposition, flags};
    return INVALID_HANDLE_VALUE;
}

/// Whether somebody else, who shares all, may open a file.
bool MayBeOpened(const boost::filesystem::path& path, DWORD access)
{
    const HANDLE file = ::CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
    return file != INVALID_HANDLE_VALUE && ::CloseHandle(file);
}

}

TEST(WindowsFilesTest, WriterSharesItsFileWithReadersThatBearOne)
{
    const support::TemporaryFolder folder;
    const HANDLE writer = Files().OpenForWriting(folder / "a");
    EXPECT_TRUE(MayBeOpened(folder / "a", GENERIC_READ));
    EXPECT_FALSE(MayBeOpened(folder / "a", GENERIC_WRITE));
    EXPECT_FALSE(MayBeOpened(folder / "a", DELETE));
    EXPECT_TRUE(Files().Close(writer));
}

TEST(WindowsFilesTest, ReaderSharesItsFileWithReadersAndWithWhoDeletesIt)
{
    const support::TemporaryFolder folder;
    const HANDLE reader = Files().OpenForReading(folder.File("a", "bytes"));
    EXPECT_TRUE(MayBeOpened(folder / "a", GENERIC_READ));
    EXPECT_FALSE(MayBeOpened(folder / "a", GENERIC_WRITE));
    EXPECT_TRUE(MayBeOpened(folder / "a", DELETE));
    EXPECT_TRUE(Files().Close(reader));
}

TEST(WindowsFilesTest, AreOpenedToBeReadAndWrittenFromStartToEnd)
{
    const ImportedCall call(__imp_CreateFileW, &Record);
    Files().OpenForReading(L"a");
    EXPECT_EQ(opening.access, 0x80000000u);
    EXPECT_EQ(opening.share, 5u);
    EXPECT_EQ(opening.disposition, 3u);
    EXPECT_EQ(opening.flags, 0x08000000u);
    Files().OpenForWriting(L"a");
    EXPECT_EQ(opening.access, 0xC0000000u);
    EXPECT_EQ(opening.share, 1u);
    EXPECT_EQ(opening.disposition, 4u);
    EXPECT_EQ(opening.flags, 0x08000000u);
}

TEST(WindowsFilesTest, ReasonOfAFailedViewOutlivesTheCleanUp)
{
    const support::TemporaryFolder folder;
    const HANDLE file = Files().OpenForReading(folder.File("a", std::string(4096, 'x')));
    const HANDLE mapping = Files().MapReadOnly(file);
    static const void* unmapped = nullptr;
    const auto noMemory = [](void*, SIZE_T, DWORD, DWORD) -> void*
    {
        ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    };
    const auto unmap = [](const void* view) -> BOOL
    {
        unmapped = view;
        ::SetLastError(ERROR_SUCCESS);
        return TRUE;
    };
    {
        const ImportedCall allocating(__imp_VirtualAlloc, noMemory);
        const ImportedCall unmapping(__imp_UnmapViewOfFile, unmap);
        EXPECT_EQ(Files().ViewAll(mapping, 4096), nullptr);
        EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY));
    }
    EXPECT_TRUE(::UnmapViewOfFile(unmapped));
    EXPECT_TRUE(Files().Close(mapping));
    EXPECT_TRUE(Files().Close(file));
}
