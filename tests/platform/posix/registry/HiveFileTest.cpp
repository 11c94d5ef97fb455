#include "utility/platform/posix/registry/HiveFile.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/posix/registry/Sqlite.h"
#include "utility/platform/Registry.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sqlite3.h>
#include <unistd.h>
#include <utility>
#include <vector>

using boost::filesystem::path;
using support::Child;
using utility::platform::posix::HiveOwner;
using utility::platform::posix::UsualHiveFile;

namespace
{

struct Places
{
    std::vector<std::pair<const char*, const char*>> variables;
    const char* user;
    const char* machine;
};

class PlaceOfHiveTest : public ::testing::TestWithParam<Places>
{
};

}

TEST_P(PlaceOfHiveTest, FollowsTheSystemsVariables)
{
    Child child(
        []
        {
            for (const char* const name : {"HOME", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS"})
                ::unsetenv(name);
            for (const auto& [name, value] : GetParam().variables)
                ::setenv(name, value, 1);
            if (UsualHiveFile(HiveOwner::user) != GetParam().user)
                return 1;
            return UsualHiveFile(HiveOwner::machine) == GetParam().machine ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Variables, PlaceOfHiveTest,
    ::testing::Values(
        Places{{{"HOME", "/home/ann"}}, "/home/ann/.config/selvane/settings.db", "/etc/xdg/selvane/settings.db"},
        Places{{{"HOME", "/home/ann"}, {"XDG_CONFIG_HOME", "/conf"}, {"XDG_CONFIG_DIRS", "/one:/two"}},
               "/conf/selvane/settings.db",
               "/one/selvane/settings.db"},
        Places{{{"HOME", "/home/ann"}, {"XDG_CONFIG_HOME", "relative"}, {"XDG_CONFIG_DIRS", "also"}},
               "/home/ann/.config/selvane/settings.db",
               "/etc/xdg/selvane/settings.db"},
        Places{{{"HOME", "/home/ann"}, {"XDG_CONFIG_HOME", ""}, {"XDG_CONFIG_DIRS", ""}},
               "/home/ann/.config/selvane/settings.db",
               "/etc/xdg/selvane/settings.db"}));

TEST(PlaceOfHiveTest, WithoutVariablesIsTheHomeThatTheSystemKnows)
{
    Child child(
        []
        {
            ::unsetenv("HOME");
            ::unsetenv("XDG_CONFIG_HOME");
            const path home = ::getpwuid(::geteuid())->pw_dir;
            return UsualHiveFile(HiveOwner::user) == home / ".config/selvane/settings.db" ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST(SetHiveAsideTest, LeavesWhatHasComeIntoThePlaceOfADamagedOne)
{
    const support::TemporaryFolder folder;
    const path file = folder.File("settings.db", std::string(4096, 'x'));
    sqlite3* opened = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &opened), SQLITE_OK);
    const utility::platform::posix::Database database(opened);
    EXPECT_EQ(sqlite3_exec(opened, "select * from keys", nullptr, nullptr, nullptr), SQLITE_NOTADB);
    rename(folder.File("restored", "restored"), file);
    EXPECT_FALSE(utility::platform::posix::SetHiveAside(opened, file));
    EXPECT_EQ(support::TemporaryFolder::BytesOf(file), "restored");
}

namespace
{

/// What is told of settings while SQLite is not there because a call fails, and when it is there again.
std::pair<LSTATUS, LSTATUS> StatusWithoutAndWithSqlite(const char* call, int at)
{
    using namespace utility::platform;
    const auto make = []
    {
        HKEY key = nullptr;
        return Registry().RegCreateKeyExW(HKEY_CURRENT_USER, L"Key", KEY_READ, key);
    };
    Registry().Rest();
    posix::UnloadSqlite();
    LSTATUS without = ERROR_SUCCESS;
    {
        const support::FailingCall failing(call, ENOENT, at);
        without = make();
        if (posix::sqlite.open_v2 != nullptr)
            return {};
    }
    return {without, make()};
}

}

TEST(SqliteTest, MachineWithoutItHasNoSettings)
{
    Child child(
        []
        {
            return StatusWithoutAndWithSqlite("dlopen", support::FailingCall::always) ==
                           std::pair<LSTATUS, LSTATUS>(ERROR_MOD_NOT_FOUND, ERROR_SUCCESS)
                       ? 0
                       : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST(SqliteTest, OneWithoutAFunctionThatIsNeededIsNone)
{
    Child child(
        []
        {
            constexpr int functions = sizeof(utility::platform::posix::Sqlite) / sizeof(void (*)());
            for (const int at : {1, functions / 2, functions})
            {
                if (StatusWithoutAndWithSqlite("dlsym", at) !=
                    std::pair<LSTATUS, LSTATUS>(ERROR_MOD_NOT_FOUND, ERROR_SUCCESS))
                    return at;
            }
            return 0;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}
