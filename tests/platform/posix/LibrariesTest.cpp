#include "utility/platform/Libraries.h"

#include "tests/support/posix/Child.h"
#include "utility/system/Libraries.h"

#include <gtest/gtest.h>

#include <boost/filesystem/path.hpp>
#include <dlfcn.h>
#include <string>

using utility::platform::Libraries;

namespace
{

/// How an address of a library that is loaded, asked for with these flags and unloaded is known afterwards: 1 for a
/// library that has stayed, 0 for one that has gone.
int StaysWith(DWORD flags)
{
    support::Child child(
        [=]
        {
            const HINSTANCE library = Libraries().Load(UTILITY_VERSION_LIBRARY);
            void* const address = reinterpret_cast<void*>(Libraries().Find(library, "DllGetVersion"));
            if (address == nullptr || GetModuleHandleExW(address, flags) == nullptr)
                return 2;
            Libraries().Free(library);
            return GetModuleHandleExW(address, 2) != nullptr ? 1 : 0;
        });
    return child.ExitCode();
}

}

TEST(PosixLibrariesTest, ModuleThatIsHeldStaysLoaded)
{
    EXPECT_EQ(StaysWith(0), 1);
    EXPECT_EQ(StaysWith(1), 1);
    EXPECT_EQ(StaysWith(2), 0);
}

TEST(PosixLibrariesTest, LibraryThatIsLoadedIsFoundByItsName)
{
    const HINSTANCE library = Libraries().Loaded(L"libc.so.6");
    ASSERT_NE(library, nullptr);
    EXPECT_NE(Libraries().Find(library, "getpid"), nullptr);
    EXPECT_EQ(Libraries().Find(library, "no such function"), nullptr);
    Libraries().Free(library);
    EXPECT_EQ(Libraries().Loaded(L"ntdll"), nullptr);
    EXPECT_EQ(Libraries().Loaded(L"no such library"), nullptr);
}

TEST(PosixLibrariesTest, SystemsLibraryIsAvailableByItsNameAlone)
{
    EXPECT_TRUE(IsDLLAvailable("libm.so.6"));
    EXPECT_FALSE(IsDLLAvailable("/etc/passwd"));
    EXPECT_FALSE(IsDLLAvailable("/"));
    DWORD major = 0;
    DWORD minor = 0;
    EXPECT_EQ(GetDLLVersion("libm.so.6", major, minor), static_cast<HRESULT>(0x80004005));
    EXPECT_LT(GetBrowserVersion(major, minor), 0);
    EXPECT_FALSE(CheckBrowserVersion());
}
