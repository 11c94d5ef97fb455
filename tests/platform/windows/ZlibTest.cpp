#include "utility/platform/Zlib.h"

#include "utility/codec/VRMLFile.h"
#include "utility/codec/ZEngine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <windows.h>
#include <zlib.h>

using utility::platform::Zlib;

namespace
{

// Each of these is for a process of its own, which has not used zlib yet.

bool IsZlibLoaded() { return ::GetModuleHandleW(L"zlib1.dll") != nullptr; }

[[noreturn]] void UseFirst()
{
    EXPECT_FALSE(IsZlibLoaded());
    Zlib();
    EXPECT_FALSE(IsZlibLoaded());
    CZEngine engine;
    EXPECT_FALSE(IsZlibLoaded());
    EXPECT_EQ(engine.DeflateEnd(), Z_STREAM_ERROR);
    EXPECT_TRUE(IsZlibLoaded());
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

[[noreturn]] void MakeFileFirst()
{
    EXPECT_FALSE(IsZlibLoaded());
    const CVRMLFile file;
    EXPECT_TRUE(IsZlibLoaded());
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

/// Ends with 3 for the exception of a delayed import whose library is not there, and anything else with another.
LONG WINAPI EndWithKind(EXCEPTION_POINTERS* exception)
{
    constexpr DWORD moduleNotFound = 0xC06D007E;
    std::_Exit(exception->ExceptionRecord->ExceptionCode == moduleNotFound ? 3 : 4);
}

template <class Use>
[[noreturn]] void UseWithout(Use use)
{
    ::SetUnhandledExceptionFilter(&EndWithKind);
    if (IsZlibLoaded())
        std::_Exit(5);
    use();
    std::_Exit(6);
}

/// While it lives, Wine finds no zlib for the programs that are started.
struct NoZlib
{
    NoZlib() { ::SetEnvironmentVariableW(L"WINEDLLOVERRIDES", L"zlib1="); }
    NoZlib(const NoZlib&) = delete;
    NoZlib& operator=(const NoZlib&) = delete;
    ~NoZlib() { ::SetEnvironmentVariableW(L"WINEDLLOVERRIDES", nullptr); }
};

}

class WindowsZlibTest : public testing::Test
{
protected:
    WindowsZlibTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(WindowsZlibTest, IsLoadedWithTheFirstCall) { EXPECT_EXIT(UseFirst(), testing::ExitedWithCode(0), ""); }

TEST_F(WindowsZlibTest, IsLoadedByTheConstructorOfAFile)
{
    EXPECT_EXIT(MakeFileFirst(), testing::ExitedWithCode(0), "");
}

TEST_F(WindowsZlibTest, WhereThereIsNoneTheFirstUseRaisesTheExceptionOfADelayedImport)
{
    const NoZlib scope;
    EXPECT_EXIT(UseWithout([] { CVRMLFile file; }), testing::ExitedWithCode(3), "");
    EXPECT_EXIT(UseWithout([] { CZEngine().DeflateInit(6); }), testing::ExitedWithCode(3), "");
    EXPECT_EXIT(UseWithout([] { CZEngine().InflateInit(); }), testing::ExitedWithCode(3), "");
}
