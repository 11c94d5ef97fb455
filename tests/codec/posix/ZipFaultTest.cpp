// An archive that is made or updated by a process that is killed, or of which a call of the system fails, at each call
// in turn; and what a crash of the machine may leave of it.

#include "utility/codec/Zip.h"

#include "tests/support/posix/Playback.h"
#include "tests/support/posix/TracedChild.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace
{

using boost::filesystem::path;
using support::Intrusion;
using support::Playback;
using support::TracedChild;

/// With an archive that is there, or that is to be made.
class ZipFaultTest : public ::testing::TestWithParam<bool>
{
protected:
    ZipFaultTest()
    {
        Zip::ZipFiles(m_archive, {m_folder.File("plate.igs", "the plate")});
        if (GetParam())
            m_old = Bytes();
        Begin();
        Zip::ZipFiles(m_archive, {m_moves});
        m_new = Bytes();
    }

    std::string Bytes() const { return support::TemporaryFolder::BytesOf(m_archive); }

    /// What was there before.
    void Begin() const
    {
        for (const auto& each : boost::filesystem::directory_iterator(m_folder.Path()))
            remove(each.path());
        if (GetParam())
            m_folder.File("a.zip", m_old);
    }

    /// By a process of its own, which gives 0 for success.
    TracedChild Zipped(const Intrusion& intrusion = {}) const
    {
        Begin();
        return TracedChild([this] { return Zip::ZipFiles(m_archive, {m_moves}) ? 0 : 1; }, intrusion);
    }

    /// Whether it is there as it was before.
    bool IsOld() const { return boost::filesystem::exists(m_archive) == GetParam() && Bytes() == m_old; }

    /// How many files there are besides, all of which have names of the library's.
    std::ptrdiff_t Others() const
    {
        std::ptrdiff_t count = 0;
        for (const auto& each : boost::filesystem::directory_iterator(m_folder.Path()))
        {
            if (each.path() == m_archive)
                continue;
            EXPECT_TRUE(each.path().filename().native().starts_with("MS"));
            ++count;
        }
        return count;
    }

    const support::TemporaryFolder m_folder;
    const support::TemporaryFolder m_source;
    const path m_archive = m_folder / "a.zip";
    const path m_moves = m_source.File("moves.nc", "N10 G01 X12\n");
    std::string m_old;
    std::string m_new;
};

}

INSTANTIATE_TEST_SUITE_P(Archives, ZipFaultTest, ::testing::Bool(),
                         [](const auto& instance) { return instance.param ? "Updated" : "Made"; });

TEST_P(ZipFaultTest, KilledAtAnyCallItLeavesTheOldArchiveOrTheNewOne)
{
    const TracedChild whole = Zipped();
    if (!whole.obstacle.empty())
        GTEST_SKIP() << whole.obstacle;
    ASSERT_EQ(whole.exitCode, 0);
    ASSERT_EQ(Bytes(), m_new);
    ASSERT_EQ(Others(), 0);
    std::size_t killed = 0;
    std::size_t old = 0;
    for (std::size_t at = 0; at < whole.calls.size(); ++at)
        for (const auto kind : {Intrusion::Kind::killAtEntry, Intrusion::Kind::killAtExit})
        {
            // Whether a flush is needed, and so the number of calls, depends on the time.
            killed += Zipped({kind, at, 0}).exitCode == -1 ? 1 : 0;
            EXPECT_TRUE(IsOld() || Bytes() == m_new) << whole.calls[at].number << " at " << at;
            EXPECT_LE(Others(), 2);
            old += IsOld() ? 1 : 0;
        }
    RecordProperty("killed", static_cast<int>(killed));
    EXPECT_GE(killed, 2 * whole.calls.size() - 4);
    EXPECT_GT(old, killed / 4);
    EXPECT_LT(old, killed);
}

TEST_P(ZipFaultTest, WhicheverCallFailsItLeavesTheOldArchiveOrTheNewOneAndNothingElse)
{
    const TracedChild whole = Zipped();
    if (!whole.obstacle.empty())
        GTEST_SKIP() << whole.obstacle;
    std::size_t runs = 0;
    std::size_t failures = 0;
    for (std::size_t at = 0; at < whole.calls.size(); ++at)
        for (const int error : {EIO, ENOSPC, EINTR, EACCES})
        {
            const TracedChild failed = Zipped({Intrusion::Kind::failure, at, error});
            const long call = at < failed.calls.size() ? failed.calls[at].number : -1;
            const std::string where =
                std::to_string(call) + " at " + std::to_string(at) + " with " + std::to_string(error);
            EXPECT_NE(failed.exitCode, -1) << where;
            EXPECT_TRUE(failed.exitCode == 0 ? Bytes() == m_new : IsOld()) << where;
            constexpr long mayBeInterrupted[] = {SYS_openat, SYS_pread64,   SYS_pwrite64, SYS_fsync,
                                                 SYS_rename, SYS_renameat2, SYS_link,     SYS_unlink};
            const bool isInterrupted =
                error == EINTR && std::ranges::find(mayBeInterrupted, call) != std::end(mayBeInterrupted);
            EXPECT_TRUE(!isInterrupted || failed.exitCode == 0) << where;
            EXPECT_LE(Others(), call == SYS_unlink ? 1 : 0) << where;
            ++runs;
            failures += failed.exitCode == 0 ? 0 : 1;
        }
    RecordProperty("runs", static_cast<int>(runs));
    EXPECT_GT(failures, runs / 8);
    EXPECT_LT(failures, runs);
}

TEST_P(ZipFaultTest, CrashOfTheMachineLeavesTheOldArchiveOrTheNewOneAndAfterItsEndTheNewOne)
{
    const TracedChild whole = Zipped();
    if (!whole.obstacle.empty())
        GTEST_SKIP() << whole.obstacle;
    const Playback playback(whole.calls, GetParam() ? Playback::Files{{m_archive.native(), m_old}} : Playback::Files{});
    std::size_t states = 0;
    std::size_t old = 0;
    playback.EachState(
        [&](const Playback::Files& files, bool isLast)
        {
            const auto found = files.find(m_archive.native());
            const bool isNew = found != files.end() && found->second == m_new;
            const bool isOld = GetParam() ? found != files.end() && found->second == m_old : found == files.end();
            EXPECT_TRUE(isNew || isOld);
            EXPECT_TRUE(isNew || !isLast);
            ++states;
            old += isOld ? 1 : 0;
        });
    RecordProperty("states", static_cast<int>(states));
    EXPECT_GT(old, 0u);
    EXPECT_LT(old, states);
}
