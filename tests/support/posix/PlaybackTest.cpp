#include "tests/support/posix/Playback.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <sys/syscall.h>
#include <utility>
#include <vector>

namespace
{

using support::Playback;
using support::SystemCall;
using Files = Playback::Files;
using States = std::set<Files>;

/// The calls of a program, written down.
class Program
{
public:
    long Open(const std::string& file, int flags)
    {
        m_calls.push_back({SYS_openat, {0, 0, static_cast<std::uint64_t>(flags)}, ++m_opened, file, {}, {}});
        return m_opened;
    }
    void Write(long file, const std::string& bytes) { Call(SYS_write, file, 0, bytes); }
    void WriteAt(long file, std::uint64_t position, const std::string& bytes)
    {
        Call(SYS_pwrite64, file, position, bytes);
    }
    void Cut(long file, std::uint64_t size) { m_calls.push_back({SYS_ftruncate, {Number(file), size}, 0, {}, {}, {}}); }
    void Flush(long file) { Call(SYS_fsync, file); }
    void Link(const std::string& file, const std::string& name) { CallOnNames(SYS_link, file, name); }
    void Rename(const std::string& file, const std::string& name) { CallOnNames(SYS_rename, file, name); }
    void Remove(const std::string& file) { CallOnNames(SYS_unlink, file, {}); }

    const std::vector<SystemCall>& Calls() const { return m_calls; }

private:
    static std::uint64_t Number(long file) { return static_cast<std::uint64_t>(file); }
    void Call(long number, long file, std::uint64_t position = 0, const std::string& bytes = {})
    {
        m_calls.push_back({number, {Number(file), 0, 0, position}, 0, {}, {}, bytes});
    }
    void CallOnNames(long number, const std::string& file, const std::string& name)
    {
        m_calls.push_back({number, {}, 0, file, name, {}});
    }

    std::vector<SystemCall> m_calls;
    long m_opened = 2;
};

/// A folder in which there is one file.
Files OneFile(const std::string& bytes) { return {{"/d/a", bytes}}; }

/// What a crash after the last step may leave.
States StatesAfter(const Playback& playback)
{
    States states;
    playback.EachState(
        [&](const Files& left, bool isLast)
        {
            if (isLast)
                states.insert(left);
        });
    return states;
}

States StatesAfter(const Program& program, const Files& files) { return StatesAfter(Playback(program.Calls(), files)); }

}

TEST(PlaybackTest, WhatIsNotFlushedMayBeThereOrNot)
{
    Program program;
    program.Write(program.Open("/d/a", O_WRONLY), "new");
    EXPECT_EQ(StatesAfter(program, OneFile("old, longer")), (States{OneFile("old, longer"), OneFile("new, longer")}));
}

TEST(PlaybackTest, FlushedBytesAreThereAndTheirNameWhenItsFolderIsFlushed)
{
    Program program;
    const long file = program.Open("/d/a", O_WRONLY | O_CREAT);
    program.Write(file, "new");
    program.Flush(file);
    EXPECT_EQ(StatesAfter(program, {}), (States{Files(), OneFile("new")}));
    program.Flush(program.Open("/other", O_RDONLY));
    EXPECT_EQ(StatesAfter(program, {}).size(), 2u);
    program.Flush(program.Open("/d", O_RDONLY));
    EXPECT_EQ(StatesAfter(program, {}), (States{OneFile("new")}));
}

TEST(PlaybackTest, FlushOfOneFileIsNoneOfAnother)
{
    Program program;
    program.Write(program.Open("/d/a", O_WRONLY), "new");
    program.Flush(program.Open("/d/b", O_WRONLY));
    const Files before = {{"/d/a", "old"}, {"/d/b", "b"}};
    EXPECT_EQ(StatesAfter(program, before), (States{before, Files{{"/d/a", "new"}, {"/d/b", "b"}}}));
}

TEST(PlaybackTest, NameThatWasTakenAwayIsThatOfAnotherFileWhenItIsMadeAgain)
{
    Program program;
    program.Rename("/d/a", "/d/b");
    program.Open("/d/a", O_WRONLY | O_CREAT);
    program.Flush(program.Open("/d", O_RDONLY));
    EXPECT_EQ(StatesAfter(program, OneFile("old")), (States{Files{{"/d/a", ""}, {"/d/b", "old"}}}));
}

TEST(PlaybackTest, StepsThatTouchDifferentThingsAreTriedInOneOrder)
{
    Program program;
    program.WriteAt(program.Open("/d/a", O_WRONLY), 0, "a");
    program.WriteAt(program.Open("/d/b", O_WRONLY), 0, "b");
    program.Remove("/d/c");
    const Playback playback(program.Calls(), {{"/d/a", "1"}, {"/d/b", "2"}, {"/d/c", "3"}});
    EXPECT_EQ(playback.EachState([](const Files&, bool) {}), 1u + 2u + 4u + 8u); // as each of the steps is taken
    EXPECT_EQ(playback.EachState([](const Files&, bool) {}, Playback::Orders::all), 1u + 2u + 5u + 16u);
}

TEST(PlaybackTest, NameMayBeThereWithoutTheBytes)
{
    Program program;
    program.Write(program.Open("/d/new", O_WRONLY | O_CREAT), "new");
    program.Rename("/d/new", "/d/a");
    EXPECT_EQ(StatesAfter(program, OneFile("old")),
              (States{OneFile("old"), OneFile(""), OneFile("new"), Files{{"/d/a", "old"}, {"/d/new", ""}},
                      Files{{"/d/a", "old"}, {"/d/new", "new"}}, Files{{"/d/a", ""}, {"/d/new", ""}},
                      Files{{"/d/a", "new"}, {"/d/new", "new"}}}));
}

TEST(PlaybackTest, LaterStepMayBeThereFirst)
{
    Program program;
    const long file = program.Open("/d/a", O_WRONLY);
    program.WriteAt(file, 0, "xx");
    program.WriteAt(file, 1, "yy");
    program.Cut(file, 1);
    States expected;
    for (const char* const bytes : {"old", "xxd", "oyy", "o", "xyy", "xxy", "x", "xx"})
        expected.insert(OneFile(bytes));
    EXPECT_EQ(StatesAfter(program, OneFile("old")), expected);
}

TEST(PlaybackTest, WriteAcrossTheEndOfASectorMayBeThereInPart)
{
    const std::string old(1000, 'o');
    const std::string first(512, '1');
    const std::string rest(488, '2');
    Program program;
    program.Write(program.Open("/d/a", O_WRONLY), first + rest);
    States expected;
    for (const std::string& bytes : {old, first + old.substr(512), old.substr(0, 512) + rest, first + rest})
        expected.insert(OneFile(bytes));
    EXPECT_EQ(StatesAfter(program, OneFile(old)), expected);
}

TEST(PlaybackTest, EachStateIsGivenOnceAndTheLastStepsAgain)
{
    Program program;
    const long file = program.Open("/d/a", O_WRONLY);
    program.WriteAt(file, 0, "n");
    program.WriteAt(file, 0, "n");
    std::multiset<std::pair<std::string, bool>> given;
    Playback(program.Calls(), OneFile("o"))
        .EachState([&](const Files& files, bool isLast) { given.emplace(files.at("/d/a"), isLast); });
    EXPECT_EQ(given,
              (std::multiset<std::pair<std::string, bool>>{{"o", false}, {"n", false}, {"o", true}, {"n", true}}));
}

TEST(PlaybackTest, StepsThatAreForgottenLeaveNothing)
{
    Program program;
    const long file = program.Open("/d/a", O_WRONLY);
    program.Write(file, "new");
    program.Flush(file);
    EXPECT_EQ(StatesAfter(program, OneFile("old")), (States{OneFile("new")}));
    Playback playback(program.Calls(), OneFile("old"));
    playback.Without(Playback::Step::flushFile);
    EXPECT_EQ(StatesAfter(playback), (States{OneFile("new"), OneFile("old")}));
}

TEST(PlaybackTest, NamesThatAreForgottenTakeTheirFilesAlongUnlessTheseHaveOthers)
{
    Program program;
    program.Write(program.Open("/d/shared", O_WRONLY | O_CREAT), "x");
    program.Rename("/d/shared", "/d/aside");
    program.Remove("/d/aside");
    const long file = program.Open("/d/draft", O_WRONLY | O_CREAT);
    program.Write(file, "new");
    program.Link("/d/draft", "/d/a");
    program.Remove("/d/draft");
    Playback playback(program.Calls(), {});
    playback.WithoutNames([](const std::string& name) { return name != "/d/a"; });
    EXPECT_EQ(StatesAfter(playback), (States{Files(), OneFile(""), OneFile("new")}));
    const std::size_t ways = playback.EachState([](const Files&, bool) {});
    EXPECT_EQ(ways, 1u + 2u + 4u); // after none of the two steps, one and both
}

// The orders that are left out are those that leave nothing new. Programs at random, of few steps, so that all orders
// can be tried.
TEST(PlaybackTest, OrdersThatAreTriedLeaveAllThatAnyOrderLeaves)
{
    std::mt19937 random(1);
    const auto below = [&random](unsigned limit) { return random() % limit; };
    const std::string names[] = {"/d/a", "/d/b", "/d/c"};
    std::size_t all = 0;
    std::size_t tried = 0;
    for (int round = 0; round < 100; ++round)
    {
        Program program;
        std::set<std::string> there = {names[0], names[1]};
        const auto oneOf = [&]
        { return *std::next(there.begin(), static_cast<std::ptrdiff_t>(random() % there.size())); };
        const long folder = program.Open("/d", O_RDONLY);
        const long files[] = {program.Open(names[0], O_WRONLY), program.Open(names[1], O_WRONLY)};
        for (int step = 0; step < 6; ++step)
        {
            const long file = files[below(2)];
            switch (below(there.size() > 1 ? 8 : 5))
            {
            case 0:
            case 1:
                program.WriteAt(file, below(6), std::string(1 + below(3), static_cast<char>('0' + step)));
                break;
            case 2:
                program.Cut(file, below(8));
                break;
            case 3:
                program.Flush(below(2) == 0 ? folder : file);
                break;
            case 4:
                program.Open(names[2], O_WRONLY | O_CREAT);
                there.insert(names[2]);
                break;
            case 5:
                if (there.insert(names[2]).second)
                    program.Link(*there.begin(), names[2]);
                break;
            case 6:
                if (const std::string from = oneOf(), to = names[below(3)]; from != to)
                {
                    program.Rename(from, to);
                    there.erase(from);
                    there.insert(to);
                }
                break;
            default:
            {
                const std::string name = oneOf();
                program.Remove(name);
                there.erase(name);
            }
            }
        }
        const Playback playback(program.Calls(), {{names[0], "first"}, {names[1], "second"}});
        const auto statesOf = [&playback](Playback::Orders orders, std::size_t& ways)
        {
            std::set<std::pair<bool, Files>> states;
            ways += playback.EachState([&](const Files& left, bool isLast) { states.emplace(isLast, left); }, orders);
            return states;
        };
        ASSERT_EQ(statesOf(Playback::Orders::thatMayDiffer, tried), statesOf(Playback::Orders::all, all))
            << "round " << round;
    }
    EXPECT_LT(tried, all / 5);
    RecordProperty("tried", static_cast<int>(tried));
    RecordProperty("all", static_cast<int>(all));
}
