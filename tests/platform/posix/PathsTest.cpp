#include "utility/platform/Paths.h"

#include "tests/support/PathsWithoutLocale.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/MemoryMappedFile.h"

#include <gtest/gtest.h>

#include <set>

using utility::platform::PathFromWide;
using utility::platform::WideFromPath;

TEST(PosixPathsTest, BytesThatAreNoUtf8BecomeLoneSurrogates)
{
    const boost::filesystem::path path("a\xE4\xFFz");
    const std::wstring wide = {L'a', static_cast<wchar_t>(0xDCE4), static_cast<wchar_t>(0xDCFF), L'z'};
    EXPECT_EQ(WideFromPath(path), wide);
    EXPECT_EQ(PathFromWide(wide.c_str()).native(), path.native());
}

TEST(PosixPathsTest, OtherLoneSurrogatesNameFilesOfTheirOwn)
{
    std::set<boost::filesystem::path> paths{PathFromWide(L"a\uFFFD")};
    for (wchar_t each = 0xD800; each <= 0xDFFF; ++each)
    {
        const boost::filesystem::path path = PathFromWide(std::wstring({L'a', each}).c_str());
        EXPECT_EQ(PathFromWide(WideFromPath(path).c_str()), path);
        paths.insert(path);
    }
    EXPECT_EQ(paths.size(), 1u + 0x800);
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
    const support::PathsWithoutLocale unconverted;
    const boost::filesystem::path path = PathFromWide(L"\u00E4\u65E5");
    const std::wstring wide = WideFromPath(path);
    EXPECT_EQ(path.native(), "\xC3\xA4\xE6\x97\xA5");
    EXPECT_EQ(wide, L"\u00E4\u65E5");
}
