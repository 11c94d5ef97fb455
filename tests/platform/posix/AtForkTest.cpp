#include "utility/platform/AtFork.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/Threads.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/MemoryMappedFile.h"
#include "utility/platform/Clock.h"
#include "utility/platform/Files.h"
#include "utility/platform/Locale.h"
#include "utility/platform/Modules.h"
#include "utility/platform/Paths.h"
#include "utility/platform/Text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <mutex>
#include <string>

using utility::platform::Files;
using utility::platform::ForkSafeMutex;
using utility::platform::HeldAtFork;
using utility::platform::Modules;

namespace
{

std::string* called = nullptr;

struct Told final : HeldAtFork
{
    explicit Told(char name) : m_name(name) {}

    void Hold() override { Tell('+'); }
    void Release() override { Tell('-'); }

    void Tell(char what) const
    {
        if (called != nullptr)
            *called += {what, m_name};
    }

    char m_name;
};

}

TEST(AtForkTest, EachIsHeldTheLatestFirstAndReleasedInBothProcesses)
{
    static Told first('1');
    static Told second('2');
    std::string calls;
    called = &calls;
    support::Child child([&] { return calls == "+2+1-2-1" ? 0 : 1; });
    EXPECT_EQ(calls, "+2+1-2-1");
    EXPECT_EQ(child.ExitCode(), 0);
    called = nullptr;
}

TEST(AtForkThreadTest, ChildTakesAMutexThatAThreadKeepsTaking)
{
    static ForkSafeMutex mutex;
    const auto take = []
    {
        const std::lock_guard lock(mutex);
        return true;
    };
    support::ExpectChildrenOfThreadsToWork(take, take);
}

TEST(AtForkThreadTest, ChildMapsFilesWhileThreadsDo)
{
    const support::TemporaryFolder folder;
    const auto path = folder.File("a", "bytes");
    // What is no view is looked for among the views, and nothing else is done.
    const auto lookForAView = [&path] { return !Files().UnmapView(&path); };
    support::ExpectChildrenOfThreadsToWork(lookForAView, [&path] { return CMemoryMappedFile(path).IsValid(); });
}

TEST(AtForkThreadTest, ChildLoadsResourcesWhileThreadsDo)
{
    const std::wstring path = utility::platform::WideFromPath(UTILITY_TEST_MODULES "/Resources.dll");
    const auto load = [&path]
    {
        const HINSTANCE module = Modules().Load(path.c_str());
        return module != nullptr && Modules().Free(module);
    };
    support::ExpectChildrenOfThreadsToWork(load, load);
}

// What the C library locks inside

TEST(AtForkThreadTest, ChildConvertsTextWhileThreadsDo)
{
    const auto convert = [] { return utility::platform::WideFromCodePage(1252, "\xE4") == L"\u00E4"; };
    support::ExpectChildrenOfThreadsToWork(convert, convert);
}

TEST(AtForkThreadTest, ChildTellsTheLocalTimeWhileThreadsDo)
{
    const auto tell = [] { return utility::platform::LocalTime(1000000000).tm_year == 101; };
    support::ExpectChildrenOfThreadsToWork(tell, tell);
}

TEST(AtForkThreadTest, ChildSetsTheLocaleWhileThreadsDo)
{
    // The machine has it or not.
    const std::string earlier = std::setlocale(LC_ALL, nullptr);
    const auto set = []
    {
        utility::platform::Locale().SetRuntimeLocale(L"ENU");
        return true;
    };
    support::ExpectChildrenOfThreadsToWork(set, set);
    std::setlocale(LC_ALL, earlier.c_str());
}
