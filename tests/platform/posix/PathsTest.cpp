#include "utility/platform/Paths.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/files/MemoryMappedFile.h"

#include <gtest/gtest.h>

#include <locale>

using utility::platform::PathFromWide;
using utility::platform::WideFromPath;

namespace
{

/// A conversion that knows no character.
struct Refusing : std::codecvt<wchar_t, char, std::mbstate_t>
{
    result do_in(state_type&, const char*, const char*, const char*&, wchar_t*, wchar_t*, wchar_t*&) const override
    {
        return error;
    }
    result do_out(state_type&, const wchar_t*, const wchar_t*, const wchar_t*&, char*, char*, char*&) const override
    {
        return error;
    }
};

}

TEST(PosixPathsTest, BytesThatAreNoUtf8BecomeLoneSurrogates)
{
    const boost::filesystem::path path("a\xE4\xFFz");
    const std::wstring wide = {L'a', static_cast<wchar_t>(0xDCE4), static_cast<wchar_t>(0xDCFF), L'z'};
    EXPECT_EQ(WideFromPath(path), wide);
    EXPECT_EQ(PathFromWide(wide.c_str()).native(), path.native());
}

TEST(PosixPathsTest, FileWithSuchANameIsOpenedInBothForms)
{
    const support::TemporaryFolder folder;
    const auto path = folder.File("a\xE4\xFFz", "bytes");
    CMemoryMappedFile fromPath;
    EXPECT_TRUE(fromPath.Open(path));
    EXPECT_EQ(fromPath.path(), path);
    CMemoryMappedFile fromWide;
    EXPECT_TRUE(fromWide.Open(WideFromPath(path).c_str()));
    EXPECT_EQ(fromWide.path(), path);
}

TEST(PosixPathsTest, LocaleOfThePathsDoesNotMatter)
{
    const std::locale earlier = boost::filesystem::path::imbue(std::locale(std::locale(), new Refusing));
    const boost::filesystem::path path = PathFromWide(L"\u00E4\u65E5");
    const std::wstring wide = WideFromPath(path);
    boost::filesystem::path::imbue(earlier);
    EXPECT_EQ(path.native(), "\xC3\xA4\xE6\x97\xA5");
    EXPECT_EQ(wide, L"\u00E4\u65E5");
}
