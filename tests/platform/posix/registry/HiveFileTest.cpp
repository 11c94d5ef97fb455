#include "utility/platform/posix/registry/HiveFile.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/posix/registry/Hive.h"
#include "utility/platform/posix/registry/Sqlite.h"

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

TEST(SqliteTest, MachineWithoutItHasNoSettings)
{
    const support::TemporaryFolder folder;
    Child child(
        [&]
        {
            using namespace utility::platform::posix;
            const path file = folder / "settings.db";
            UnloadSqlite();
            Hive::Key key = Hive::root;
            {
                const support::FailingCall failing("dlopen", ENOENT, support::FailingCall::always);
                if (Hive(file, HiveOwner::user).FindOrCreate(Hive::root, L"Key", key) != ERROR_MOD_NOT_FOUND)
                    return 1;
                if (LoadSqlite() || sqlite.step != nullptr)
                    return 2;
            }
            // It is looked for each time.
            return Hive(file, HiveOwner::user).FindOrCreate(Hive::root, L"Key", key) == ERROR_SUCCESS ? 0 : 3;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}
