#include "utility/platform/Registry.h"

#include "tests/support/posix/FailingCall.h"
#include "tests/support/ScratchHives.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Hives.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <spawn.h>
#include <sqlite3.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

TEST(PosixRegistryTest, TextThatThereIsNoMemoryForIsAStatusAndNothingIsThrown)
{
    support::ScratchHives hives;
    const std::wstring text(1000, L'x');
    bool hasFailed = true;
    for (int at = 1; hasFailed; ++at)
    {
        HKEY key = nullptr;
        ASSERT_EQ(hives.RegCreateKeyW(HKEY_CURRENT_USER, L"Key", key), 0);
        const support::FailingCall failing("operator new", ENOMEM, at);
        const LSTATUS status = hives.RegSetValueW(key, nullptr, text.c_str());
        hasFailed = failing.HasFailed();
        EXPECT_EQ(status, hasFailed ? LSTATUS{ERROR_NOT_ENOUGH_MEMORY} : 0) << at;
        EXPECT_EQ(hives.RegCloseKey(key), 0);
        ASSERT_LT(at, 100);
        EXPECT_TRUE(hasFailed || at > 1);
    }
}

namespace
{

/// Has a hive of its own, with a language, in the place where programs that it starts look for the user's.
class StartedProgramTest : public ::testing::Test
{
protected:
    StartedProgramTest()
    {
        using utility::platform::Registry;
        const boost::filesystem::path before = utility::platform::HiveFile(HKEY_CURRENT_USER);
        utility::platform::SetHiveFile(HKEY_CURRENT_USER, m_hive);
        HKEY key = nullptr;
        EXPECT_EQ(
            Registry().RegCreateKeyW(HKEY_CURRENT_USER, L"SOFTWARE\\Selvane\\TOLVERAN\\2022.0\\Options\\General", key),
            0);
        constexpr DWORD german = 1031;
        EXPECT_EQ(Registry().RegSetValueExW(key, L"DisplayLanguage", REG_DWORD, &german, sizeof(german)), 0);
        EXPECT_EQ(Registry().RegCloseKey(key), 0);
        utility::platform::SetHiveFile(HKEY_CURRENT_USER, before);
    }

    /// The exit code of the program, -1 if it did not come to that.
    int Start() const
    {
        std::string home = "XDG_CONFIG_HOME=" + m_folder.Path().native();
        std::string program = UTILITY_STARTED_PROGRAM;
        char* const arguments[] = {program.data(), nullptr};
        char* const environment[] = {home.data(), nullptr};
        pid_t process = 0;
        int status = 0;
        posix_spawn_file_actions_t actions;
        EXPECT_EQ(::posix_spawn_file_actions_init(&actions), 0);
        EXPECT_EQ(::posix_spawn_file_actions_addclosefrom_np(&actions, 3), 0);
        EXPECT_EQ(::posix_spawn(&process, program.c_str(), &actions, nullptr, arguments, environment), 0);
        ::posix_spawn_file_actions_destroy(&actions);
        EXPECT_EQ(::waitpid(process, &status, 0), process);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const support::TemporaryFolder m_folder;
    const boost::filesystem::path m_hive = m_folder / "selvane/settings.db";
};

}

TEST_F(StartedProgramTest, HasNothingOpenAtItsBegin)
{
    EXPECT_EQ(Start(), 0);
    // Also where the hive is damaged, which shows that it was looked into.
    m_folder.File("selvane/settings.db", "damaged");
    EXPECT_EQ(Start(), 0);
    EXPECT_FALSE(exists(m_hive));
}

TEST_F(StartedProgramTest, WaitsOnlyAMomentForAnotherThatKeepsTheHiveToItself)
{
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(m_hive.c_str(), &database), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(database, "pragma journal_mode = delete; begin exclusive", nullptr, nullptr, nullptr),
              SQLITE_OK);
    // Of a few starts on a busy machine one has that time.
    constexpr std::chrono::milliseconds moment(2500);
    auto shortest = std::chrono::steady_clock::duration::max();
    for (int tries = 0; tries < 5 && shortest >= moment; ++tries)
    {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(Start(), 0);
        shortest = std::min(shortest, std::chrono::steady_clock::now() - start);
    }
    EXPECT_LT(shortest, moment);
    sqlite3_close(database);
}
