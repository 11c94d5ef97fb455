#include "examples/Console.h"

#include "tests/support/posix/Child.h"
#include "utility/platform/posix/filesystem/UserFolders.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace
{

struct Places
{
    const char* name;
    const char* data; ///< null: the environment has none
    const char* home; ///< the same
};

class LocalDataTest : public testing::TestWithParam<Places>
{
};

void Set(const char* variable, const char* value)
{
    if (value != nullptr)
        ::setenv(variable, value, 1);
    else
        ::unsetenv(variable);
}

TEST_P(LocalDataTest, IsWhereTheLibraryWritesReports)
{
    support::Child child(
        []
        {
            Set("XDG_DATA_HOME", GetParam().data);
            Set("HOME", GetParam().home);
            const boost::filesystem::path folder = console::LocalData();
            return !folder.empty() && folder == utility::platform::posix::UserDataFolder() ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

INSTANTIATE_TEST_SUITE_P(Environment, LocalDataTest,
                         testing::Values(Places{"Both", "/data", "/home/ann"}, Places{"Home", nullptr, "/home/ann"},
                                         Places{"None", nullptr, nullptr}, Places{"EmptyHome", "", ""},
                                         Places{"RelativeOnes", "data", "home"}),
                         [](const auto& each) { return each.param.name; });

}
