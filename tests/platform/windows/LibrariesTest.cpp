#include "utility/platform/Libraries.h"

#include "tests/support/windows/ImportedCall.h"
#include "utility/system/Libraries.h"
#include "utility/system/Machine.h"

#include <gtest/gtest.h>

#include <string>

using support::ImportedCall;
using utility::platform::Libraries;

extern "C" decltype(&::ActivateActCtx) __imp_ActivateActCtx;
extern "C" decltype(&::DeactivateActCtx) __imp_DeactivateActCtx;
extern "C" decltype(&::GetSystemInfo) __imp_GetSystemInfo;
extern "C" decltype(&::LoadLibraryExW) __imp_LoadLibraryExW;

TEST(WindowsLibrariesTest, LibraryIsLoadedWithAnAlteredSearchPath)
{
    static std::wstring name;
    static DWORD flags;
    const auto load = [](LPCWSTR file, HANDLE, DWORD with) -> HMODULE
    {
        name = file;
        flags = with;
        return nullptr;
    };
    const ImportedCall call(__imp_LoadLibraryExW, load);
    EXPECT_FALSE(IsDLLAvailable(L"C:\\tools\\tools.dll"));
    EXPECT_EQ(name, L"C:\\tools\\tools.dll");
    EXPECT_EQ(flags, 8u);
}

TEST(WindowsLibrariesTest, LibraryIsLoadedInTheContextOfThisModuleAndTheReasonOfAFailureStays)
{
    static std::string called;
    called.clear();
    const ImportedCall activate(__imp_ActivateActCtx,
                                [](HANDLE, ULONG_PTR* cookie)
                                {
                                    *cookie = 24;
                                    called += "activate ";
                                    return TRUE;
                                });
    const ImportedCall deactivate(__imp_DeactivateActCtx,
                                  [](DWORD, ULONG_PTR cookie)
                                  {
                                      called += cookie == 24 ? "deactivate " : "another ";
                                      ::SetLastError(1);
                                      return TRUE;
                                  });
    const ImportedCall load(__imp_LoadLibraryExW,
                            [](LPCWSTR, HANDLE, DWORD) -> HMODULE
                            {
                                called += "load ";
                                ::SetLastError(ERROR_MOD_NOT_FOUND);
                                return nullptr;
                            });
    EXPECT_EQ(Libraries().Load(L"C:\\tools\\tools.dll"), nullptr);
    EXPECT_EQ(::GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_EQ(called, "activate load deactivate ");
}

TEST(WindowsLibrariesTest, LibrariesOfTheSystemAreThereAndTellTheirVersions)
{
    EXPECT_TRUE(IsDLLAvailable(L"comctl32.dll"));
    DWORD major = 0;
    DWORD minor = 0;
    EXPECT_GE(GetDLLVersion(L"comctl32.dll", major, minor), 0);
    EXPECT_GE(major, 5u);
    EXPECT_EQ(GetDLLVersion(L"kernel32.dll", major, minor), static_cast<HRESULT>(0x80004005));
}

TEST(WindowsLibrariesTest, BrowserIsNewEnough)
{
    DWORD major = 0;
    DWORD minor = 0;
    EXPECT_GE(GetBrowserVersion(major, minor), 0);
    EXPECT_GE(major, 5u);
    EXPECT_TRUE(CheckBrowserVersion());
}

TEST(WindowsLibrariesTest, ModuleThatIsLoadedIsFoundByItsName)
{
    const HINSTANCE module = Libraries().Loaded(L"ntdll");
    EXPECT_EQ(module, ::GetModuleHandleW(L"ntdll.dll"));
    Libraries().Free(module);
    EXPECT_EQ(Libraries().Loaded(L"no such library"), nullptr);
}

TEST(WindowsMachineTest, VersionIsThatOfTheSystem)
{
    _OSVERSIONINFOEXW info = {};
    EXPECT_EQ(GetVersionExZelo(info), 0);
    EXPECT_EQ(info.dwOSVersionInfoSize, 284u);
    EXPECT_GE(info.dwMajorVersion, 6u);
    EXPECT_EQ(info.dwPlatformId, DWORD{VER_PLATFORM_WIN32_NT});
}

TEST(WindowsMachineTest, ProcessorsAreAsTheSystemCountsThem)
{
    const ImportedCall call(__imp_GetSystemInfo, [](SYSTEM_INFO* info) { info->dwNumberOfProcessors = 37; });
    EXPECT_EQ(GetNumberOfProcessors(), 37u);
}
