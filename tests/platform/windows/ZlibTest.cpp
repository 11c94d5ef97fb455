#include "utility/platform/Zlib.h"

#include "tests/support/windows/ImportedCall.h"
#include "utility/codec/VRMLFile.h"
#include "utility/codec/ZEngine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>
#include <windows.h>
#include <zlib.h>

using support::ImportedCall;
using utility::platform::Zlib;

extern "C" decltype(&::LoadLibraryA) __imp_LoadLibraryA;

namespace
{

// Each of these is for a process of its own, which has not used zlib yet. By which operation the first call of a
// delayed import asks for its library tells whose request it is: Wine's own libraries have zlib loaded as well.

int asked = 0;

[[noreturn]] void End() { std::exit(testing::Test::HasFailure() ? 1 : 0); }

HMODULE WINAPI CountAndLoad(LPCSTR name)
{
    asked += name == std::string_view("zlib1.dll") ? 1 : 0;
    return ::LoadLibraryExA(name, nullptr, 0);
}

HMODULE WINAPI FindNoZlib(LPCSTR name)
{
    if (name == std::string_view("zlib1.dll"))
        return nullptr;
    return ::LoadLibraryExA(name, nullptr, 0);
}

[[noreturn]] void UseFirst()
{
    const ImportedCall call(__imp_LoadLibraryA, &CountAndLoad);
    Zlib();
    CZEngine engine;
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(engine.DeflateEnd(), Z_STREAM_ERROR);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(engine.InflateEnd(), Z_STREAM_ERROR);
    EXPECT_EQ(asked, 1);
    End();
}

[[noreturn]] void MakeFileFirst()
{
    const ImportedCall call(__imp_LoadLibraryA, &CountAndLoad);
    const CVRMLFile file;
    EXPECT_EQ(asked, 1);
    End();
}

/// Ends with 3 for the exception of a delayed import whose library is not there, with 4 for any other.
LONG WINAPI EndWithKind(EXCEPTION_POINTERS* exception)
{
    constexpr DWORD moduleNotFound = 0xC06D007E;
    std::_Exit(exception->ExceptionRecord->ExceptionCode == moduleNotFound ? 3 : 4);
}

template <class Use>
[[noreturn]] void UseWithout(Use use)
{
    const ImportedCall call(__imp_LoadLibraryA, &FindNoZlib);
    ::SetUnhandledExceptionFilter(&EndWithKind);
    use();
    std::_Exit(5);
}

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
    EXPECT_EXIT(UseWithout([] { CVRMLFile file; }), testing::ExitedWithCode(3), "");
    EXPECT_EXIT(UseWithout([] { CZEngine().DeflateInit(6); }), testing::ExitedWithCode(3), "");
    EXPECT_EXIT(UseWithout([] { CZEngine().DeflateInit2(6, 8, 15, 8, 0); }), testing::ExitedWithCode(3), "");
    EXPECT_EXIT(UseWithout([] { CZEngine().Deflate(0); }), testing::ExitedWithCode(3), "");
    EXPECT_EXIT(UseWithout([] { CZEngine().DeflateEnd(); }), testing::ExitedWithCode(3), "");
    EXPECT_EXIT(UseWithout([] { CZEngine().InflateInit(); }), testing::ExitedWithCode(3), "");
    EXPECT_EXIT(UseWithout([] { CZEngine().Inflate(0); }), testing::ExitedWithCode(3), "");
    EXPECT_EXIT(UseWithout([] { CZEngine().InflateEnd(); }), testing::ExitedWithCode(3), "");
}
