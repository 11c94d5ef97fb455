#include "utility/platform/CrashedProcess.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <shlobj.h>
#include <string>
#include <tlhelp32.h>
#include <windows.h>

using support::ImportedCall;
using utility::platform::CrashedProcess;

extern "C" decltype(&::CreateToolhelp32Snapshot) __imp_CreateToolhelp32Snapshot;
extern "C" decltype(&::FormatMessageW) __imp_FormatMessageW;
extern "C" decltype(&::SHCreateDirectoryExW) __imp_SHCreateDirectoryExW;
extern "C" decltype(&::SHGetFolderPathW) __imp_SHGetFolderPathW;

TEST(WindowsCrashedProcessTest, SystemTellsItsVersionAndThatItDid)
{
    utility::platform::SystemVersion version;
    std::int32_t result = -1;
    EXPECT_TRUE(CrashedProcess().QueryVersion(version, result));
    EXPECT_EQ(result, 0);
    EXPECT_GE(version.major, 6U);
    EXPECT_NE(version.build, 0U);
    EXPECT_NE(version.productType, 0U);
}

TEST(WindowsCrashedProcessTest, SystemDescribesAnExceptionAsItDoesForAnybody)
{
    constexpr DWORD noMemory = 0xC0000017;
    std::wstring expected(128, L'\0');
    const DWORD length =
        ::FormatMessageW(0xA00, ::GetModuleHandleW(L"ntdll.dll"), noMemory, 0, expected.data(), 128, nullptr);
    std::wstring text(128, L'\0');
    EXPECT_EQ(CrashedProcess().DescribeException(noMemory, text), length != 0);
    EXPECT_EQ(text, expected);
}

TEST(WindowsCrashedProcessTest, ReportsGoToTheLocalDataOfTheUser)
{
    EXPECT_TRUE(CrashedProcess().LocalDataFolder().is_absolute());
    EXPECT_EQ(CrashedProcess().LocalDataFolder().filename(), L"Local");
}

TEST(WindowsCrashedProcessTest, SystemIsAskedForTheFolderOfTheUserAndToMakeIt)
{
    const ImportedCall call(__imp_SHGetFolderPathW,
                            [](HWND, int folder, HANDLE, DWORD kind, wchar_t* path) -> HRESULT
                            {
                                EXPECT_EQ(folder, 0x801C);
                                EXPECT_EQ(kind, 0U);
                                path[0] = L'D';
                                path[1] = L'\0';
                                return 0;
                            });
    EXPECT_EQ(CrashedProcess().LocalDataFolder(), L"D");
}

TEST(WindowsCrashedProcessTest, ThereIsNoFolderOfTheUserWhereTheSystemHasNone)
{
    const ImportedCall call(__imp_SHGetFolderPathW, [](HWND, int, HANDLE, DWORD, wchar_t*) { return E_FAIL; });
    EXPECT_TRUE(CrashedProcess().LocalDataFolder().empty());
}

TEST(WindowsCrashedProcessTest, FolderIsThereIfTheSystemSaysSoAndNotElse)
{
    static int result;
    const ImportedCall call(__imp_SHCreateDirectoryExW,
                            [](HWND, const wchar_t*, const SECURITY_ATTRIBUTES*) { return result; });
    for (const int good : {0, 183})
    {
        result = good;
        EXPECT_TRUE(CrashedProcess().MakeFolders(L"C:\\a")) << good;
    }
    for (const int bad : {3, 5, 80, 161, 206, 1223})
    {
        result = bad;
        EXPECT_FALSE(CrashedProcess().MakeFolders(L"C:\\a")) << bad;
    }
}

TEST(WindowsCrashedProcessTest, SystemIsAskedForAnExceptionInItsOwnTableAndInNoCertainLanguage)
{
    const ImportedCall call(
        __imp_FormatMessageW,
        [](DWORD flags, const void* module, DWORD code, DWORD language, wchar_t*, DWORD size, va_list*) -> DWORD
        {
            EXPECT_EQ(flags, 0xA00U);
            EXPECT_EQ(module, ::GetModuleHandleW(L"ntdll.dll"));
            EXPECT_EQ(code, 0xC0000017U);
            EXPECT_EQ(language, 0U);
            EXPECT_EQ(size, 128U);
            ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        });
    std::wstring text(128, L'\0');
    EXPECT_FALSE(CrashedProcess().DescribeException(0xC0000017, text));
    EXPECT_EQ(utility::platform::LastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
}

TEST(WindowsCrashedProcessTest, ModulesAreThoseOfAPictureOfThisProcess)
{
    const ImportedCall call(__imp_CreateToolhelp32Snapshot,
                            [](DWORD flags, DWORD process) -> HANDLE
                            {
                                EXPECT_EQ(flags, 8U);
                                EXPECT_EQ(process, 0U);
                                return INVALID_HANDLE_VALUE;
                            });
    EXPECT_TRUE(CrashedProcess().Modules().empty());
}

TEST(WindowsCrashedProcessTest, ReportIsNobodyElsesToReadEitherUntilItIsWritten)
{
    const support::TemporaryFolder folder;
    const boost::filesystem::path file = folder / "report.xml";
    const auto open = [&]
    {
        const HANDLE opened = ::CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                            OPEN_EXISTING, 0, nullptr);
        const DWORD reason = opened == INVALID_HANDLE_VALUE ? ::GetLastError() : 0;
        ::CloseHandle(opened);
        return reason;
    };
    {
        const auto report = CrashedProcess().OpenReport(file);
        EXPECT_EQ(open(), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_EQ(open(), 0U);
}
