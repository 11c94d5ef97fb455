#include "utility/platform/FileSystem.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/windows/ImportedCall.h"
#include "utility/files/BackupFile.h"
#include "utility/files/Places.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <shlobj.h>
#include <string>
#include <utility>
#include <vector>

using boost::filesystem::path;
using support::ImportedCall;
using utility::platform::FileSystem;
using utility::platform::LastError;

extern "C" decltype(&::CoTaskMemFree) __imp_CoTaskMemFree;
extern "C" decltype(&::CreateFileW) __imp_CreateFileW;
extern "C" decltype(&::GetLongPathNameW) __imp_GetLongPathNameW;
extern "C" decltype(&::GetModuleFileNameW) __imp_GetModuleFileNameW;
extern "C" decltype(&::GetSystemDirectoryW) __imp_GetSystemDirectoryW;
extern "C" decltype(&::MoveFileExW) __imp_MoveFileExW;
extern "C" decltype(&::ReplaceFileW) __imp_ReplaceFileW;
extern "C" decltype(&::SHGetKnownFolderPath) __imp_SHGetKnownFolderPath;

namespace
{

/// What the calls of the system got last, and what they are to say.
struct
{
    std::vector<DWORD> reasons; ///< of the replacements to come; none is the system's own
    int replacements;
    std::wstring names[3];
    DWORD numbers[4];
    void* reserved[2];
    HANDLE reader; ///< of the target, which lets go of it behind the first replacement
} seen;

decltype(&::ReplaceFileW) systemReplaceFile = __imp_ReplaceFileW;

BOOL WINAPI Replace(LPCWSTR target, LPCWSTR replacement, LPCWSTR backup, DWORD flags, LPVOID exclude, LPVOID reserved)
{
    ++seen.replacements;
    seen.names[0] = target;
    seen.names[1] = replacement;
    seen.names[2] = backup;
    seen.numbers[0] = flags;
    seen.reserved[0] = exclude;
    seen.reserved[1] = reserved;
    if (seen.reasons.empty())
    {
        const BOOL isReplaced = systemReplaceFile(target, replacement, backup, flags, exclude, reserved);
        const DWORD reason = ::GetLastError();
        if (seen.reader != nullptr)
            ::CloseHandle(std::exchange(seen.reader, nullptr));
        ::SetLastError(reason);
        return isReplaced;
    }
    ::SetLastError(seen.reasons.front());
    // As the system leaves it: the old file has the backup's name already.
    if (seen.reasons.front() == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2)
    {
        ::MoveFileExW(target, backup, 0);
        ::SetLastError(ERROR_UNABLE_TO_MOVE_REPLACEMENT_2);
    }
    seen.reasons.erase(seen.reasons.begin());
    return FALSE;
}

class WindowsSwapTest : public ::testing::Test
{
protected:
    WindowsSwapTest() { seen = {}; }

    bool Swap() const { return FileSystem().Replace(m_target, m_replacement, m_backup); }

    static std::string Bytes(const path& file) { return support::TemporaryFolder::BytesOf(file); }

    const support::TemporaryFolder m_folder;
    const path m_target = m_folder.File("target", "old");
    const path m_replacement = m_folder.File("replacement", "new");
    const path m_backup = m_folder / "backup";
    const ImportedCall<decltype(&::ReplaceFileW)> m_call{__imp_ReplaceFileW, &Replace};
};

}

TEST_F(WindowsSwapTest, SystemIsAskedToWriteThroughAndToIgnoreWhatCannotBeMerged)
{
    ASSERT_TRUE(Swap()) << LastError();
    EXPECT_EQ(seen.names[0], m_target.native());
    EXPECT_EQ(seen.names[1], m_replacement.native());
    EXPECT_EQ(seen.names[2], m_backup.native());
    EXPECT_EQ(seen.numbers[0], 3u);
    EXPECT_EQ(seen.reserved[0], nullptr);
    EXPECT_EQ(seen.reserved[1], nullptr);
    EXPECT_EQ(seen.replacements, 1);
    EXPECT_EQ(Bytes(m_target), "new");
    EXPECT_EQ(Bytes(m_backup), "old");
}

TEST_F(WindowsSwapTest, FileThatAnotherProgramHoldsForAMomentIsTriedAgain)
{
    seen.reasons = {32, 5, 1175, 1176};
    EXPECT_TRUE(Swap());
    EXPECT_EQ(seen.replacements, 5);
    EXPECT_EQ(Bytes(m_target), "new");
}

TEST_F(WindowsSwapTest, FileThatStaysHeldIsRefusedForTheLastReason)
{
    seen.reasons = {32, 32, 32, 32, 1175};
    EXPECT_FALSE(Swap());
    EXPECT_EQ(LastError(), 1175u);
    EXPECT_EQ(seen.replacements, 5);
    EXPECT_EQ(Bytes(m_target), "old");
    EXPECT_EQ(Bytes(m_replacement), "new");
}

TEST_F(WindowsSwapTest, OtherReasonsAreFinal)
{
    for (const DWORD reason : {2, 3, 17, 112, 123})
    {
        seen.reasons = {static_cast<DWORD>(reason)};
        seen.replacements = 0;
        EXPECT_FALSE(Swap());
        EXPECT_EQ(LastError(), static_cast<DWORD>(reason));
        EXPECT_EQ(seen.replacements, 1);
    }
}

TEST_F(WindowsSwapTest, OldFileThatWasMovedAwayAlreadyComesBack)
{
    seen.reasons = {1177, 1177, 1177, 1177, 1177};
    EXPECT_FALSE(Swap());
    EXPECT_EQ(LastError(), 1177u);
    EXPECT_EQ(Bytes(m_target), "old");
    EXPECT_FALSE(exists(m_backup));
    seen.reasons = {1177};
    EXPECT_TRUE(Swap());
    EXPECT_EQ(Bytes(m_target), "new");
    EXPECT_EQ(Bytes(m_backup), "old");
}

TEST_F(WindowsSwapTest, FileThatAReaderLetsGoOfInAMomentIsReplaced)
{
    seen.reader = ::CreateFileW(m_target.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(seen.reader, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Swap());
    EXPECT_EQ(seen.replacements, 2);
    EXPECT_EQ(Bytes(m_target), "new");
}

TEST_F(WindowsSwapTest, FileThatAReaderKeepsIsOldAndWholeAndTheSaveSaysSo)
{
    const HANDLE reader =
        ::CreateFileW(m_target.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    const auto save = [&]
    {
        CBackupFile backup(m_target);
        copy_file(m_replacement, backup.GetTempFilename());
        backup.SetReplaceFile(true);
    };
    EXPECT_THROW(save(), boost::filesystem::filesystem_error);
    EXPECT_EQ(Bytes(m_target), "old");
    ::CloseHandle(reader);
}

TEST_F(WindowsSwapTest, PathBeyond260CharactersIsReplaced)
{
    path folder = L"\\\\?\\" + path(m_folder.Path()).make_preferred().native();
    const std::wstring long_name = L"\\" + std::wstring(150, L'x');
    folder += long_name;
    ASSERT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr));
    folder += long_name;
    ASSERT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr));
    const path file = folder.native() + L"\\part.nc";
    ASSERT_TRUE(::CopyFileW(m_target.c_str(), file.c_str(), TRUE));
    {
        CBackupFile backup(file);
        ASSERT_TRUE(::CopyFileW(m_replacement.c_str(), backup.GetTempFilename().c_str(), TRUE));
        backup.SetReplaceFile(true);
    }
    ASSERT_TRUE(::CopyFileW(file.c_str(), m_backup.c_str(), TRUE));
    EXPECT_EQ(Bytes(m_backup), "new");
    EXPECT_TRUE(::DeleteFileW(file.c_str()));
    EXPECT_TRUE(::RemoveDirectoryW(folder.c_str())); // nothing else was left
    EXPECT_TRUE(::RemoveDirectoryW(folder.parent_path().c_str()));
}

TEST(WindowsFileSystemTest, FilesAreMadeAndDeletedAndMovedByTheseNumbers)
{
    seen = {};
    const ImportedCall creating(
        __imp_CreateFileW,
        [](LPCWSTR, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD flags, HANDLE) -> HANDLE
        {
            const DWORD numbers[] = {access, share, disposition, flags};
            std::copy_n(numbers, 4, seen.numbers);
            return INVALID_HANDLE_VALUE;
        });
    EXPECT_FALSE(FileSystem().DeleteWhenUnused(L"a"));
    EXPECT_EQ(std::vector<DWORD>(seen.numbers, seen.numbers + 4),
              (std::vector<DWORD>{0x80000000, 5, OPEN_EXISTING, 0x4000000}));
    EXPECT_FALSE(FileSystem().CreateNew(L"a"));
    EXPECT_EQ(std::vector<DWORD>(seen.numbers, seen.numbers + 4), (std::vector<DWORD>{0x40000000, 3, 1, 128}));
    const ImportedCall moving(__imp_MoveFileExW,
                              [](LPCWSTR from, LPCWSTR to, DWORD flags) -> BOOL
                              {
                                  seen.names[0] = from;
                                  seen.names[1] = to;
                                  seen.numbers[0] = flags;
                                  return FALSE;
                              });
    EXPECT_FALSE(FileSystem().Move(L"from", L"to"));
    EXPECT_EQ(seen.names[0], L"from");
    EXPECT_EQ(seen.names[1], L"to");
    EXPECT_EQ(seen.numbers[0], 3u);
}

TEST(WindowsFileSystemTest, FileThatIsReadIsDeletedWhenTheLastReaderCloses)
{
    const support::TemporaryFolder folder;
    const path file = folder.File("a", "bytes");
    const HANDLE reader = ::CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(FileSystem().DeleteWhenUnused(file));
    char first = 0;
    DWORD count = 0;
    EXPECT_TRUE(::ReadFile(reader, &first, 1, &count, nullptr));
    EXPECT_EQ(first, 'b');
    ::CloseHandle(reader);
    EXPECT_FALSE(exists(file));
}

TEST(WindowsFileSystemTest, NameThatGrowsBetweenTheTwoRoundsIsAskedForAgain)
{
    // The name of a file that is renamed once while it is asked for.
    static int calls;
    calls = 0;
    const ImportedCall call(__imp_GetLongPathNameW,
                            [](LPCWSTR, LPWSTR buffer, DWORD size) -> DWORD
                            {
                                const std::wstring name(++calls == 1 ? 3 : 8, L'x');
                                if (size <= name.size())
                                    return static_cast<DWORD>(name.size() + 1);
                                std::copy_n(name.c_str(), name.size() + 1, buffer);
                                return static_cast<DWORD>(name.size());
                            });
    EXPECT_EQ(FileSystem().LongName(L"a"), L"xxxxxxxx");
    EXPECT_EQ(calls, 4);
}

TEST(WindowsFileSystemTest, NameThatIsGoneInTheSecondRoundIsEmpty)
{
    const ImportedCall call(__imp_GetLongPathNameW,
                            [](LPCWSTR, LPWSTR, DWORD size) -> DWORD { return size == 0 ? 5 : 0; });
    EXPECT_EQ(FileSystem().LongName(L"a"), L"");
}

TEST(WindowsFileSystemTest, DocumentsAreWhereTheSystemSaysAndItsTextIsGivenBack)
{
    static wchar_t text[] = L"C:\\documents";
    static int freed;
    freed = 0;
    const ImportedCall call(__imp_SHGetKnownFolderPath,
                            [](REFKNOWNFOLDERID, DWORD, HANDLE, PWSTR* folder) -> HRESULT
                            {
                                *folder = text;
                                return S_OK;
                            });
    const ImportedCall freeing(__imp_CoTaskMemFree, [](void* memory) { freed += memory == text ? 1 : 100; });
    EXPECT_EQ(FileSystem().DocumentsFolder(), L"C:\\documents");
    EXPECT_EQ(freed, 1);
}

TEST(WindowsFileSystemTest, DocumentsThatTheSystemDoesNotKnowAreNowhereWithItsReason)
{
    const ImportedCall call(__imp_SHGetKnownFolderPath,
                            [](REFKNOWNFOLDERID folder, DWORD flags, HANDLE user, PWSTR* text) -> HRESULT
                            {
                                EXPECT_EQ(folder, FOLDERID_Documents);
                                EXPECT_EQ(flags, 0u);
                                EXPECT_EQ(user, nullptr);
                                *text = nullptr;
                                return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
                            });
    EXPECT_EQ(FileSystem().DocumentsFolder(), "");
    EXPECT_EQ(LastError(), 2u);
}

TEST(WindowsFileSystemTest, ModulePathBeyond260CharactersIsWhole)
{
    static std::vector<DWORD> sizes;
    sizes.clear();
    const ImportedCall call(__imp_GetModuleFileNameW,
                            [](HMODULE, wchar_t* buffer, DWORD size) -> DWORD
                            {
                                sizes.push_back(size);
                                const DWORD length = std::min<DWORD>(size, 600);
                                std::fill_n(buffer, length, L'x');
                                return length;
                            });
    EXPECT_EQ(GetModuleFilename(nullptr), std::wstring(600, L'x'));
    EXPECT_EQ(sizes, (std::vector<DWORD>{260, 520, 1040}));
}

TEST(WindowsFileSystemTest, SystemFolderIsAskedForUntilItFits)
{
    static std::vector<UINT> sizes;
    sizes.clear();
    // It grows behind the first two questions.
    const ImportedCall call(__imp_GetSystemDirectoryW,
                            [](LPWSTR name, UINT size) -> UINT
                            {
                                sizes.push_back(size);
                                const std::wstring folder = sizes.size() < 3 ? L"C:\\short" : L"C:\\long\\system32";
                                if (size <= folder.size() || sizes.size() == 2)
                                    return sizes.size() == 2 ? 18 : static_cast<UINT>(folder.size()) + 1;
                                folder.copy(name, folder.size());
                                name[folder.size()] = L'\0';
                                return static_cast<UINT>(folder.size());
                            });
    EXPECT_EQ(FileSystem().SystemFolder(), L"C:\\long\\system32");
    EXPECT_EQ(sizes, (std::vector<UINT>{0, 9, 0, 17}));
}

TEST(WindowsFileSystemTest, SystemFolderThatIsNotToldIsEmpty)
{
    const ImportedCall call(__imp_GetSystemDirectoryW, [](LPWSTR, UINT) -> UINT { return 0; });
    EXPECT_EQ(FileSystem().SystemFolder(), L"");
}
