#include "utility/files/ChangeDirectoryTemporarily.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

TEST(PosixChangeDirectoryTemporarilyTest, WayBackThatIsGoneIsToldByTheDestructor)
{
    const support::TemporaryFolder folder;
    const CChangeDirectoryTemporarily out(folder.Path());
    const auto gone = [&]
    {
        create_directory(folder / "gone");
        boost::filesystem::current_path(folder / "gone");
        const CChangeDirectoryTemporarily change(folder.Path());
        remove(folder / "gone");
    };
    EXPECT_THROW(gone(), boost::filesystem::filesystem_error);
}
