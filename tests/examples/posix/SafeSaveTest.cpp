// A save of a text, and of a scene, that is killed, and one of which a call of the system fails, at each call in turn;
// and what a crash of the machine may leave of it.

#include "tests/support/SafeSave.h"

#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/Playback.h"
#include "tests/support/posix/TracedChild.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <exception>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>

using support::FailingCall;
using support::Intrusion;
using support::Playback;
using support::TracedChild;

namespace
{

const std::string oldVersion = "old version";

void SaveText(const boost::filesystem::path& path)
{
    Save(path,
         [](CTextFile& file)
         {
             file << "new version"
                  << ", longer";
         });
}

void SaveScene(const boost::filesystem::path& path)
{
    CBackupFile backup(path);
    CVRMLFile file;
    file.Open(backup.GetTempFilename(), true, 6);
    file << "#VRML V2.0 utf8\n"
         << "Shape {}\n";
    file.CommitAndClose();
    backup.SetReplaceFile(true);
}

struct Saving
{
    const char* name;
    void (*save)(const boost::filesystem::path& path);
};

class SafeSaveFaultTest : public ::testing::TestWithParam<Saving>
{
protected:
    SafeSaveFaultTest()
    {
        GetParam().save(m_file);
        m_newVersion = Bytes();
        m_folder.File("part.nc", oldVersion);
    }

    /// 0 if the save ends without a failure.
    int SaveNew() const
    {
        try
        {
            GetParam().save(m_file);
            return 0;
        }
        catch (CFileException* failure)
        {
            failure->Delete();
            return 1;
        }
        catch (const boost::filesystem::filesystem_error&)
        {
            return 2;
        }
        catch (const std::exception&)
        {
            return 3; // no memory
        }
    }

    /// A save in a process of its own, of a file that is the old version.
    TracedChild Saved(const Intrusion& intrusion = {}) const
    {
        for (const boost::filesystem::directory_entry& each : boost::filesystem::directory_iterator(m_folder.Path()))
            remove(each.path());
        m_folder.File("part.nc", oldVersion);
        // What goes over to the new version takes calls too.
        ::chmod(m_file.c_str(), 0640);
        ::setxattr(m_file.c_str(), "user.made", "here", 4, 0);
        return TracedChild([this] { return SaveNew(); }, intrusion);
    }

    std::string Bytes() const { return support::TemporaryFolder::BytesOf(m_file); }

    /// How many files there are besides, all of which have names of the library's.
    std::ptrdiff_t Others() const
    {
        std::ptrdiff_t count = 0;
        for (const boost::filesystem::directory_entry& each : boost::filesystem::directory_iterator(m_folder.Path()))
        {
            if (each.path() == m_file)
                continue;
            EXPECT_EQ(each.path().filename().string().substr(0, 2), "MS");
            ++count;
        }
        return count;
    }

    const support::TemporaryFolder m_folder;
    const boost::filesystem::path m_file = m_folder / "part.nc";
    std::string m_newVersion;
};

}

INSTANTIATE_TEST_SUITE_P(Files, SafeSaveFaultTest,
                         ::testing::Values(Saving{"Text", &SaveText}, Saving{"Scene", &SaveScene}),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(SafeSaveFaultTest, EachFlushThatFailsLeavesTheOldVersion)
{
    const auto flushes = [this]
    {
        for (int at = 1;; ++at)
        {
            const FailingCall failing("fsync", EIO, at);
            const int code = SaveNew();
            if (!failing.HasFailed())
            {
                EXPECT_EQ(code, 0);
                EXPECT_EQ(Bytes(), m_newVersion);
                return at - 1;
            }
            EXPECT_NE(code, 0) << at;
            EXPECT_EQ(Bytes(), oldVersion) << at;
            EXPECT_EQ(Others(), 0) << at;
        }
    };
    EXPECT_EQ(flushes(), 2); // the bytes, and the name
    m_folder.File("part.nc", oldVersion);
    ::chmod(m_file.c_str(), 0640);
    EXPECT_EQ(flushes(), 3); // and the permissions
}

TEST_P(SafeSaveFaultTest, KilledAtAnyCallItLeavesTheOldVersionOrTheNewOne)
{
    const TracedChild whole = Saved();
    if (!whole.obstacle.empty())
        GTEST_SKIP() << whole.obstacle;
    ASSERT_EQ(whole.exitCode, 0);
    ASSERT_EQ(Bytes(), m_newVersion);
    ASSERT_EQ(Others(), 0);
    std::size_t runs = 0;
    std::size_t old = 0;
    for (std::size_t at = 0; at < whole.calls.size(); ++at)
    {
        for (const auto kind : {Intrusion::Kind::killAtEntry, Intrusion::Kind::killAtExit})
        {
            const TracedChild killed = Saved({kind, at, 0});
            EXPECT_EQ(killed.exitCode, -1);
            const std::string bytes = Bytes();
            EXPECT_TRUE(bytes == oldVersion || bytes == m_newVersion) << at << bytes;
            EXPECT_LE(Others(), 2);
            ++runs;
            old += bytes == oldVersion ? 1 : 0;
        }
    }
    RecordProperty("runs", static_cast<int>(runs));
    EXPECT_GT(runs, 40u);
    EXPECT_GT(old, runs / 4);
    EXPECT_LT(old, runs);
}

TEST_P(SafeSaveFaultTest, FirstSaveThatIsKilledOrFailsLeavesNoFileOrAWholeOne)
{
    const auto save = [this](const Intrusion& intrusion)
    {
        for (const boost::filesystem::directory_entry& each : boost::filesystem::directory_iterator(m_folder.Path()))
            remove(each.path());
        return TracedChild([this] { return SaveNew(); }, intrusion);
    };
    const TracedChild whole = save({});
    if (!whole.obstacle.empty())
        GTEST_SKIP() << whole.obstacle;
    std::size_t runs = 0;
    std::size_t without = 0;
    for (std::size_t at = 0; at < whole.calls.size(); ++at)
    {
        for (const Intrusion& intrusion :
             {Intrusion{Intrusion::Kind::killAtEntry, at, 0}, Intrusion{Intrusion::Kind::killAtExit, at, 0},
              Intrusion{Intrusion::Kind::failure, at, EIO}, Intrusion{Intrusion::Kind::failure, at, ENOSPC},
              Intrusion{Intrusion::Kind::failure, at, EACCES}})
        {
            const TracedChild saved = save(intrusion);
            EXPECT_TRUE(Bytes() == m_newVersion || (saved.exitCode != 0 && !exists(m_file)))
                << whole.calls[at].number << " at " << at;
            ++runs;
            without += exists(m_file) ? 0 : 1;
        }
    }
    RecordProperty("runs", static_cast<int>(runs));
    EXPECT_GT(runs, 80u);
    EXPECT_GT(without, runs / 8);
    EXPECT_LT(without, runs);
}

TEST_P(SafeSaveFaultTest, WhicheverCallFailsItLeavesTheOldVersionOrTheNewOneAndNothingElse)
{
    const TracedChild whole = Saved();
    if (!whole.obstacle.empty())
        GTEST_SKIP() << whole.obstacle;
    std::size_t runs = 0;
    std::size_t failures = 0;
    for (std::size_t at = 0; at < whole.calls.size(); ++at)
    {
        for (const int error : {EIO, ENOSPC, EINTR, EACCES})
        {
            const TracedChild failed = Saved({Intrusion::Kind::failure, at, error});
            const std::string where =
                std::to_string(whole.calls[at].number) + " at " + std::to_string(at) + " with " + std::to_string(error);
            EXPECT_NE(failed.exitCode, -1) << where;
            EXPECT_EQ(Bytes(), failed.exitCode == 0 ? m_newVersion : oldVersion) << where;
            // Without a random name for the backup the swap does not begin, and the new version stays.
            EXPECT_EQ(Others(), failed.exitCode != 0 && whole.calls[at].number == SYS_getrandom ? 1 : 0) << where;
            ++runs;
            failures += failed.exitCode == 0 ? 0 : 1;
            // No signal interrupts a move of the file position.
            EXPECT_TRUE(error != EINTR || whole.calls[at].number == SYS_lseek || failed.exitCode == 0) << where;
        }
    }
    RecordProperty("runs", static_cast<int>(runs));
    EXPECT_GT(runs, 80u);
    EXPECT_GT(failures, runs / 8);
    EXPECT_LT(failures, runs);
}

namespace
{

class SafeSavePlaybackTest : public SafeSaveFaultTest
{
protected:
    /// The number of states that a crash may leave of a save. `broken` are those in which the file is neither version,
    /// `lost` those after the save in which it is not the new one.
    struct States
    {
        std::size_t all = 0;
        std::size_t broken = 0;
        std::size_t lost = 0;
        std::size_t old = 0;
    };

    States StatesOf(const Playback& playback, const std::string& name, bool isNew = false)
    {
        States states;
        const std::size_t ways = playback.EachState(
            [&](const Playback::Files& files, bool isLast)
            {
                const auto found = files.find(name);
                const bool isOld = isNew ? found == files.end() : found != files.end() && found->second == oldVersion;
                const bool isSaved = found != files.end() && found->second == m_newVersion;
                ++states.all;
                states.broken += isOld || isSaved ? 0 : 1;
                states.lost += isLast && !isSaved ? 1 : 0;
                states.old += isOld ? 1 : 0;
            });
        RecordProperty("ways", static_cast<int>(ways));
        RecordProperty("states", static_cast<int>(states.all));
        return states;
    }
};

}

INSTANTIATE_TEST_SUITE_P(Files, SafeSavePlaybackTest,
                         ::testing::Values(Saving{"Text", &SaveText}, Saving{"Scene", &SaveScene}),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(SafeSavePlaybackTest, CrashOfTheMachineLeavesTheOldVersionOrTheNewOneAndAfterTheSaveTheNewOne)
{
    const TracedChild saved = Saved();
    if (!saved.obstacle.empty())
        GTEST_SKIP() << saved.obstacle;
    const Playback playback(saved.calls, {{m_file.native(), oldVersion}});
    const States states = StatesOf(playback, m_file.native());
    EXPECT_GT(states.all, 10u);
    EXPECT_EQ(states.broken, 0u);
    EXPECT_EQ(states.lost, 0u);
    EXPECT_GT(states.old, 0u);
    EXPECT_LT(states.old, states.all);
}

TEST_P(SafeSavePlaybackTest, CrashAtTheFirstSaveLeavesNoFileOrAWholeOne)
{
    remove(m_file);
    const TracedChild saved([this] { return SaveNew(); });
    if (!saved.obstacle.empty())
        GTEST_SKIP() << saved.obstacle;
    const Playback playback(saved.calls, {});
    const States states = StatesOf(playback, m_file.native(), true);
    EXPECT_GT(states.all, 8u);
    EXPECT_EQ(states.broken, 0u);
    EXPECT_EQ(states.lost, 0u);
}

TEST_P(SafeSavePlaybackTest, CrashLeavesWhatALinkPointsAtWhole)
{
    const support::TemporaryFolder other;
    const auto real = other.File("real", oldVersion);
    remove(m_file);
    create_symlink(real, m_file);
    const TracedChild saved([this] { return SaveNew(); });
    if (!saved.obstacle.empty())
        GTEST_SKIP() << saved.obstacle;
    EXPECT_TRUE(is_symlink(m_file));
    const Playback playback(saved.calls, {{real.native(), oldVersion}});
    const States states = StatesOf(playback, real.native());
    EXPECT_GT(states.all, 10u);
    EXPECT_EQ(states.broken, 0u);
    EXPECT_EQ(states.lost, 0u);
}

TEST_P(SafeSavePlaybackTest, PlaybackFindsWhatIsWrong)
{
    const TracedChild saved = Saved();
    if (!saved.obstacle.empty())
        GTEST_SKIP() << saved.obstacle;
    Playback withoutFiles(saved.calls, {{m_file.native(), oldVersion}});
    withoutFiles.Without(Playback::Step::flushFile);
    EXPECT_GT(StatesOf(withoutFiles, m_file.native()).broken, 0u);
    Playback withoutFolders(saved.calls, {{m_file.native(), oldVersion}});
    withoutFolders.Without(Playback::Step::flushFolder);
    const States states = StatesOf(withoutFolders, m_file.native());
    EXPECT_EQ(states.broken, 0u);
    EXPECT_GT(states.lost, 0u);
}
