#include "utility/files/FileNames.h"

#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/ForwardingLocale.h"
#include "tests/support/PathsWithoutLocale.h"
#include "tests/support/ScratchHives.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/ChangeDirectoryTemporarily.h"
#include "utility/platform/Paths.h"

#include <boost/format.hpp>
#include <gtest/gtest.h>

#include <regex>

using utility::platform::WideFromPath;

namespace
{

/// A user of the French of Canada, in a folder of the test's own.
class LanguageDependentFilenameTest : public ::testing::Test
{
protected:
    ~LanguageDependentFilenameTest() noexcept override = default;

    struct : support::ForwardingLocale
    {
        LCID UserDefault() override { return 0x0C0C; }
    } m_locale;
    const support::ScratchHives m_hives;
    const support::TemporaryFolder m_folder;
    const CChangeDirectoryTemporarily m_change{m_folder.Path()};
};

}

TEST(MakeTemporaryFileTest, IsAPrefixAndSixteenDigitsAndNothingIsMade)
{
    const support::TemporaryFolder folder;
    const auto one = MakeTemporaryFile(folder.Path(), L"cam-");
    const auto other = MakeTemporaryFile(WideFromPath(folder.Path()), L"cam-");
    const std::regex form("cam-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}");
    for (const auto& each : {one, other})
    {
        EXPECT_EQ(each.parent_path(), folder.Path());
        EXPECT_TRUE(std::regex_match(each.filename().string(), form)) << each;
        EXPECT_FALSE(exists(each));
    }
    EXPECT_NE(one, other);
}

TEST(MakeTemporaryFileTest, PercentSignOfAPrefixIsNoDigit)
{
    EXPECT_EQ(MakeTemporaryFile(L"folder", L"100%%").filename().string().substr(0, 5), "100%%");
}

TEST(MakeTemporaryFileTest, NamesBeyondAsciiFollowNoLocale)
{
    const support::PathsWithoutLocale unconverted;
    const std::wstring name = WideFromPath(MakeTemporaryFile(L"\u00E4", L"\u65E5"));
    EXPECT_EQ(name.front(), L'\u00E4');
    EXPECT_EQ(name[2], L'\u65E5');
}

TEST(MakeTemporaryFolderTest, FolderWithANullCharacterInItsNameIsNotTakenForTheOneAheadOfIt)
{
    const support::TemporaryFolder folder;
    const std::wstring wide = WideFromPath(folder.Path() / "made") + L'\0';
    EXPECT_EQ(WideFromPath(MakeTemporaryFile(wide, L"")).substr(0, wide.size()), wide);
    EXPECT_THROW(MakeTemporaryFolder(wide, L""), boost::filesystem::filesystem_error);
    EXPECT_TRUE(is_empty(folder.Path()));
}

TEST(MakeTemporaryFolderTest, IsMadeEmptyInAFolderThatExists)
{
    const support::TemporaryFolder folder;
    for (const auto& made :
         {MakeTemporaryFolder(folder.Path(), L"x"), MakeTemporaryFolder(WideFromPath(folder.Path()), L"x")})
    {
        EXPECT_TRUE(is_directory(made));
        EXPECT_TRUE(is_empty(made));
        EXPECT_EQ(made.parent_path(), folder.Path());
    }
    EXPECT_THROW(MakeTemporaryFolder(folder / "missing", L"x"), boost::filesystem::filesystem_error);
}

TEST(FormatLanguageDependentFilenameTest, HasThreeLettersForEachPlace)
{
    EXPECT_EQ(FormatLanguageDependentFilename(0x0407, L"help%1%.txt"), "helpDEU.txt");
    EXPECT_EQ(FormatLanguageDependentFilename(0x0C0C, L"%1%/%1%"), "FRC/FRC");
}

TEST(FormatLanguageDependentFilenameTest, FormatWithoutAPlaceIsTheName)
{
    EXPECT_EQ(FormatLanguageDependentFilename(0x0407, L"help.txt"), "help.txt");
}

TEST(FormatLanguageDependentFilenameTest, PlaceOfAnotherArgumentStaysEmpty)
{
    EXPECT_EQ(FormatLanguageDependentFilename(0x0407, L"help%1%%2%.txt"), "helpDEU.txt");
}

TEST(FormatLanguageDependentFilenameTest, UnknownLanguageHasNoLetters)
{
    EXPECT_EQ(FormatLanguageDependentFilename(0x7C07, L"help%1%.txt"), "help.txt");
}

TEST(FormatLanguageDependentFilenameTest, FormatThatIsNoneIsRefused)
{
    EXPECT_THROW(FormatLanguageDependentFilename(0x0407, L"help%1"), boost::io::bad_format_string);
}

TEST_F(LanguageDependentFilenameTest, OfTheDisplayLanguageComesFirst)
{
    m_folder.File("helpFRC.txt", "");
    m_folder.File("helpFRA.txt", "");
    EXPECT_EQ(FindLanguageDependentFilename(L"help%1%.txt"), "helpFRC.txt");
}

TEST_F(LanguageDependentFilenameTest, OfTheDefaultRegionComesNext)
{
    m_folder.File("helpFRA.txt", "");
    EXPECT_EQ(FindLanguageDependentFilename(L"help%1%.txt"), "helpFRA.txt");
}

TEST_F(LanguageDependentFilenameTest, WithoutALanguageIsTheLastWhetherItIsThereOrNot)
{
    EXPECT_EQ(FindLanguageDependentFilename(L"help%1%.txt"), "help.txt");
}

TEST_F(LanguageDependentFilenameTest, FormatWithoutAPlaceIsDeliberatelyRefusedUnlessThereIsSuchAFile)
{
    EXPECT_THROW(FindLanguageDependentFilename(L"help.txt"), boost::io::too_many_args);
    m_folder.File("help.txt", "");
    EXPECT_EQ(FindLanguageDependentFilename(L"help.txt"), "help.txt");
}

TEST(PathNameTest, FileHasALongAndAShortNameThatBothLeadToIt)
{
    const support::TemporaryFolder folder;
    const auto path = folder.File("a name that is long.text", "bytes");
    const std::wstring wide = WideFromPath(path);
    for (const auto& each : {GetLongPathNameW(path), GetLongPathNameW(wide), GetLongPathNameW(wide.c_str())})
        EXPECT_EQ(each.filename(), path.filename());
    for (const auto& each : {GetShortPathNameW(path), GetShortPathNameW(wide), GetShortPathNameW(wide.c_str())})
        EXPECT_TRUE(equivalent(each, path)) << each;
    EXPECT_EQ(GetLongPathNameW(GetShortPathNameW(path)).filename(), path.filename());
}

TEST(PathNameTest, FileThatIsMissingHasNone)
{
    const support::TemporaryFolder folder;
    EXPECT_EQ(GetLongPathNameW(folder / "missing"), "");
    EXPECT_EQ(GetShortPathNameW(folder / "missing"), "");
}

TEST(PathNameTest, EachNameIsAskedForAsSuch)
{
    support::ForwardingFileSystem system;
    GetLongPathNameW(L"a");
    GetShortPathNameW(L"a");
    EXPECT_EQ(system.calls, (std::vector<std::string>{"LongName", "ShortName"}));
}

TEST(PathNameTest, NameWithANullCharacterIsNotThatOfTheFileAheadOfIt)
{
    const support::TemporaryFolder folder;
    const std::wstring wide = WideFromPath(folder.Path());
    EXPECT_FALSE(GetLongPathNameW(wide).empty());
    EXPECT_FALSE(GetShortPathNameW(wide).empty());
    EXPECT_TRUE(GetLongPathNameW(wide + L'\0').empty());
    EXPECT_TRUE(GetShortPathNameW(wide + L'\0').empty());
}
