// A hive whose writer is killed, or of which a call of the system fails, at each call in turn; and what a crash of the
// machine may leave of it.

#include "utility/platform/posix/registry/Hive.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/HiveContent.h"
#include "tests/support/posix/Playback.h"
#include "tests/support/posix/TracedChild.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <regex>
#include <sqlite3.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // they make calls of their own

namespace
{

using boost::filesystem::path;
using support::ContentOf;
using support::Intrusion;
using support::Playback;
using support::TemporaryFolder;
using support::TracedChild;
using utility::platform::posix::Hive;

LSTATUS CreateKey(Hive& hive, std::wstring_view keys)
{
    Hive::Key key = 0;
    return hive.FindOrCreate(Hive::root, keys, key);
}

LSTATUS SetText(Hive& hive, std::wstring_view name, std::string_view text)
{
    Hive::Key key = 0;
    const LSTATUS status = hive.FindOrCreate(Hive::root, L"Key", key);
    return status == 0 ? hive.Set(key, name, REG_SZ, text) : status;
}

enum class Before
{
    nothing,
    hive,
    hiveWithLog, ///< as a killed process leaves it
    logOfAnother,
    damagedHiveWithLog,
};

/// What a process writes, from the hive's opening to its closing.
struct Writing
{
    const char* name;
    Before before;
    long fileSystem;
    std::vector<LSTATUS (*)(Hive& hive)> steps;
};

constexpr long disk = 0xEF53;
constexpr long network = 0x6969;

const Writing value{"Value", Before::hive, disk, {[](Hive& hive) { return SetText(hive, L"Name", "new and longer"); }}};

const std::vector<LSTATUS (*)(Hive& hive)> making = {[](Hive& hive) { return CreateKey(hive, L""); }};

const Writing newHiveBesideALog{"NewHiveBesideALogOfAnother", Before::logOfAnother, disk, making};

const Writing writings[] = {
    {"Values",
     Before::hive,
     disk,
     {[](Hive& hive) { return SetText(hive, L"Name", "new and longer"); },
      [](Hive& hive) { return SetText(hive, L"Other", "later"); }}},
    {"Key", Before::hive, disk, {[](Hive& hive) { return CreateKey(hive, L"Key\\New"); }}},
    {"NewHive", Before::nothing, disk, making},
    {"ValueBehindALog", Before::hiveWithLog, disk, value.steps},
    newHiveBesideALog,
    {"NewHiveInPlaceOfADamagedOne", Before::damagedHiveWithLog, disk, making},
    {"ValueOnANetwork", Before::hive, network, value.steps},
    {"ValueBehindALogOnANetwork", Before::hiveWithLog, network, value.steps},
};

/// SQLite as it comes, but that it sleeps no time. That of the tests brings nothing to the disk.
void BringToTheDisk()
{
    static sqlite3_vfs files = *sqlite3_vfs_find("unix");
    files.zName = "awake";
    files.xSleep = [](sqlite3_vfs*, int microseconds) { return microseconds; };
    sqlite3_vfs_register(&files, 1);
}

class InterruptedWriterTest : public ::testing::TestWithParam<Writing>
{
protected:
    InterruptedWriterTest()
    {
        const Before before = GetParam().before;
        if (before != Before::nothing)
        {
            Hive hive(m_file, Hive::Owner::user);
            EXPECT_EQ(SetText(hive, L"Kept", "kept"), 0);
            EXPECT_EQ(SetText(hive, L"Name", "old"), 0);
        }
        if (before != Before::nothing && before != Before::hive)
        {
            support::Child killed(
                [this]
                {
                    Hive hive(m_file, Hive::Owner::user);
                    ::_exit(SetText(hive, L"Logged", "logged"));
                    return 0;
                });
            EXPECT_EQ(killed.ExitCode(), 0);
        }
        for (const auto& each : boost::filesystem::directory_iterator(m_folder.Path()))
            m_before[each.path().native()] = TemporaryFolder::BytesOf(each.path());
        m_before.erase(m_file.native() + "-shm");
        EXPECT_EQ(m_before.size(), before == Before::nothing ? 0u : before == Before::hive ? 1u : 2u);
        if (before == Before::logOfAnother)
            m_before.erase(m_file.native());
        if (before == Before::damagedHiveWithLog)
            m_before.at(m_file.native()).replace(0, 100, 100, 'x');
        for (std::size_t steps = 0; steps <= GetParam().steps.size(); ++steps)
        {
            Put(m_before);
            const support::FileSystemOfKind kind(GetParam().fileSystem);
            EXPECT_EQ(Write(steps), 0);
            m_contents.push_back(Content());
        }
    }

    /// 0 if so many of the steps are done.
    int Write(std::size_t steps) const
    {
        Hive hive(m_file, Hive::Owner::user);
        for (std::size_t i = 0; i < steps; ++i)
        {
            if (GetParam().steps[i](hive) != 0)
                return 1;
        }
        return 0;
    }

    /// The same, all of them, by a process of its own.
    TracedChild Written(const Intrusion& intrusion = {}) const
    {
        Put(m_before);
        return TracedChild(
            [this]
            {
                BringToTheDisk();
                const support::FileSystemOfKind kind(GetParam().fileSystem);
                return Write(GetParam().steps.size());
            },
            intrusion);
    }

    /// Has just these files in the folder.
    void Put(const Playback::Files& files) const
    {
        for (const auto& each : boost::filesystem::directory_iterator(m_folder.Path()))
            remove(each.path());
        for (const auto& [name, bytes] : files)
            m_folder.File(path(name).filename().c_str(), bytes);
    }

    /// All that the next process finds.
    std::string Content() const
    {
        const support::FileSystemOfKind kind(GetParam().fileSystem);
        {
            Hive hive(m_file, Hive::Owner::user);
            Hive::Key key = 0;
            hive.Find(Hive::root, L"", key);
        }
        return ContentOf(m_file);
    }

    /// How many of the steps it finds done, wherever they were interrupted.
    std::size_t StepsDone() const
    {
        const std::string content = Content();
        const auto found = std::ranges::find(m_contents, content);
        EXPECT_TRUE(found != m_contents.end()) << content;
        return static_cast<std::size_t>(found - m_contents.begin());
    }

    /// Expects that what was no use to the hive is somewhere, whole, and that nothing else was set aside.
    void ExpectAllKept() const
    {
        std::vector<std::string> there;
        std::ptrdiff_t aside = 0;
        for (const auto& each : boost::filesystem::directory_iterator(m_folder.Path()))
        {
            there.push_back(TemporaryFolder::BytesOf(each.path()));
            aside += each.path().native().find(".damaged-") == path::string_type::npos ? 0 : 1;
        }
        const Before before = GetParam().before;
        if (before != Before::logOfAnother && before != Before::damagedHiveWithLog)
            EXPECT_EQ(aside, 0);
        else
            for (const auto& [name, bytes] : m_before)
                EXPECT_GE(std::ranges::count(there, bytes), 1) << name;
    }

    const TemporaryFolder m_folder;
    const path m_file = m_folder / "settings.db";
    Playback::Files m_before;
    std::vector<std::string> m_contents; ///< after each of the steps
};

class KilledWriterTest : public InterruptedWriterTest
{
};

class RefusedWriterTest : public InterruptedWriterTest
{
};

class CrashedWriterTest : public InterruptedWriterTest
{
};

const auto nameOf = [](const auto& instance) { return instance.param.name; };

INSTANTIATE_TEST_SUITE_P(Settings, KilledWriterTest, ::testing::Values(value, newHiveBesideALog), nameOf);
INSTANTIATE_TEST_SUITE_P(Settings, RefusedWriterTest, ::testing::Values(value), nameOf);
INSTANTIATE_TEST_SUITE_P(Settings, CrashedWriterTest, ::testing::ValuesIn(writings), nameOf);

TEST_P(KilledWriterTest, LeavesTheOldStateOrTheNewOneAtWhicheverCall)
{
    const TracedChild whole = Written();
    if (!whole.obstacle.empty())
        GTEST_SKIP() << whole.obstacle;
    ASSERT_EQ(whole.exitCode, 0);
    std::size_t runs = 0;
    std::size_t old = 0;
    // Between two calls a process changes nothing that outlives it, unless hives share memory.
    std::vector<Intrusion::Kind> kinds = {Intrusion::Kind::killAtEntry};
    if (GetParam().before == Before::hive)
        kinds.push_back(Intrusion::Kind::killAtExit);
    for (std::size_t at = 0; at < whole.calls.size(); ++at)
    {
        for (const Intrusion::Kind kind : kinds)
        {
            EXPECT_EQ(Written({kind, at, 0}).exitCode, -1);
            ++runs;
            old += StepsDone() == 0 ? 1 : 0;
            ExpectAllKept();
            ASSERT_FALSE(HasFailure()) << whole.calls[at].number << " at " << at;
        }
    }
    RecordProperty("runs", static_cast<int>(runs));
    EXPECT_GT(old, 0u);
    EXPECT_LT(old, runs);
}

TEST_P(RefusedWriterTest, LeavesTheOldValueOrTheNewOneWhicheverCallFailsAndTheNewOneIfItWasStored)
{
    const TracedChild whole = Written();
    if (!whole.obstacle.empty())
        GTEST_SKIP() << whole.obstacle;
    std::size_t runs = 0;
    std::size_t failures = 0;
    for (std::size_t at = 0; at < whole.calls.size(); ++at)
    {
        for (const int error : {EIO, ENOSPC})
        {
            if (error == ENOSPC && whole.calls[at].number != SYS_pwrite64)
                continue;
            const TracedChild failed = Written({Intrusion::Kind::failure, at, error});
            EXPECT_NE(failed.exitCode, -1);
            EXPECT_TRUE(StepsDone() == 1 || failed.exitCode != 0);
            ExpectAllKept();
            ++runs;
            failures += failed.exitCode == 0 ? 0 : 1;
            ASSERT_FALSE(HasFailure()) << whole.calls[at].number << " at " << at << " with " << error;
        }
    }
    RecordProperty("runs", static_cast<int>(runs));
    EXPECT_GT(failures, 0u);
    EXPECT_LT(failures, runs);
}

TEST_P(CrashedWriterTest, LeavesTheFirstStepsAndAfterItsEndAllUnlessOnANetwork)
{
    const TracedChild whole = Written();
    if (!whole.obstacle.empty())
        GTEST_SKIP() << whole.obstacle;
    ASSERT_EQ(whole.exitCode, 0);
    Playback playback(whole.calls, m_before);
    // What processes share as memory is made anew of the log, whatever is in it; a hive's draft is nobody's after a
    // crash.
    playback.WithoutNames([](const std::string& name)
                          { return std::regex_match(name, std::regex(R"(.*(-shm|\.db\.\d+(-journal)?))")); });
    std::size_t states = 0;
    std::vector<std::size_t> done(m_contents.size() + 1);
    const std::size_t ways = playback.EachState(
        [&](const Playback::Files& files, bool isLast)
        {
            Put(files);
            m_folder.File("settings.db-shm", std::string(32768, 'x'));
            const std::size_t steps = StepsDone();
            ExpectAllKept();
            EXPECT_TRUE(!isLast || steps == GetParam().steps.size() || GetParam().fileSystem == network) << steps;
            ++states;
            ++done.at(steps);
        });
    RecordProperty("ways", static_cast<int>(ways));
    RecordProperty("states", static_cast<int>(states));
    for (std::size_t steps = 0; steps < m_contents.size(); ++steps)
        EXPECT_GT(done[steps], 0u) << steps;
}

}

#endif
