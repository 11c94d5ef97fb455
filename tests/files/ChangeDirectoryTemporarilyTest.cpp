#include "utility/files/ChangeDirectoryTemporarily.h"

#include "tests/support/PathsWithoutLocale.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <type_traits>

using boost::filesystem::current_path;

static_assert(!std::is_polymorphic_v<CChangeDirectoryTemporarily>);

namespace
{

/// The folder, as the system names the current one.
boost::filesystem::path Canonical(const support::TemporaryFolder& folder)
{
    return boost::filesystem::canonical(folder.Path());
}

}

TEST(ChangeDirectoryTemporarilyTest, CurrentFolderIsAnotherForAScope)
{
    const support::TemporaryFolder folder;
    const auto earlier = current_path();
    {
        const CChangeDirectoryTemporarily change(folder.Path());
        EXPECT_EQ(boost::filesystem::canonical(current_path()), Canonical(folder));
    }
    EXPECT_EQ(current_path(), earlier);
}

TEST(ChangeDirectoryTemporarilyTest, CopyGoesBackToTheSameFolder)
{
    const support::TemporaryFolder folder;
    const auto earlier = current_path();
    const CChangeDirectoryTemporarily change(folder.Path());
    {
        const CChangeDirectoryTemporarily copy(change);
        EXPECT_NE(current_path(), earlier);
    }
    EXPECT_EQ(current_path(), earlier);
}

TEST(ChangeDirectoryTemporarilyTest, FolderWithANullCharacterInItsNameIsNotTakenForTheOneAheadOfIt)
{
    const support::TemporaryFolder folder;
    const auto earlier = current_path();
    const std::wstring wide = utility::platform::WideFromPath(folder.Path()) + L'\0';
    EXPECT_THROW(CChangeDirectoryTemporarily{wide}, boost::filesystem::filesystem_error);
    EXPECT_EQ(current_path(), earlier);
}

TEST(ChangeDirectoryTemporarilyTest, FolderIsNamedByWideTextWhateverTheLocale)
{
    const support::TemporaryFolder folder;
    const std::wstring wide = utility::platform::WideFromPath(folder.Path());
    const support::PathsWithoutLocale unconverted;
    for (int i = 0; i < 2; ++i)
    {
        const CChangeDirectoryTemporarily change =
            i == 0 ? CChangeDirectoryTemporarily(wide) : CChangeDirectoryTemporarily(wide.c_str());
        EXPECT_EQ(boost::filesystem::canonical(current_path()), Canonical(folder));
    }
}

TEST(ChangeDirectoryTemporarilyTest, FolderThatIsMissingIsToldAndTheCurrentOneStays)
{
    const support::TemporaryFolder folder;
    const auto earlier = current_path();
    EXPECT_THROW(CChangeDirectoryTemporarily(folder / "missing"), boost::filesystem::filesystem_error);
    EXPECT_EQ(current_path(), earlier);
}
