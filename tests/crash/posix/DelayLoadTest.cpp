#include "utility/crash/DelayLoad.h"
#include "utility/files/Places.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using utility::platform::DelayLoadResult;
using utility::platform::OpenDelayed;

namespace
{

int hookCalls = 0;
std::string askedFor;

DelayLoadResult RememberAndGiveNothing(unsigned int notification, DelayLoadInfo* info)
{
    ++hookCalls;
    EXPECT_EQ(notification, 3U);
    EXPECT_EQ(info->cb, sizeof(*info));
    EXPECT_EQ(info->dwLastError, 126U);
    askedFor = info->szDll;
    return nullptr;
}

}

TEST(PosixDelayLoadTest, LibraryThatTheSystemFindsIsLoadedWithoutTheHook)
{
    hookCalls = 0;
    void* const library = OpenDelayed("libm.so.6", &RememberAndGiveNothing);
    ASSERT_NE(library, nullptr);
    EXPECT_NE(::dlsym(library, "cos"), nullptr);
    EXPECT_EQ(::dlclose(library), 0);
    EXPECT_EQ(hookCalls, 0);
}

TEST(PosixDelayLoadTest, HookIsAskedForALibraryThatIsNotFound)
{
    hookCalls = 0;
    EXPECT_EQ(OpenDelayed("nowhere/libnothing.so", &RememberAndGiveNothing), nullptr);
    EXPECT_EQ(hookCalls, 1);
    EXPECT_EQ(askedFor, "nowhere/libnothing.so");
    EXPECT_EQ(OpenDelayed("nowhere/libnothing.so", nullptr), nullptr);
}

TEST(PosixDelayLoadTest, LibraryThatIsNotFoundIsTriedBesideTheProgramByItsNameAlone)
{
    const std::string module = UTILITY_VERSIONED_MODULE;
    const std::string elsewhere = "/nowhere" + module.substr(module.rfind('/'));
    void* const library = OpenDelayed(elsewhere.c_str(), &ZeloDliHook);
    ASSERT_NE(library, nullptr);
    void* const same = ::dlopen(module.c_str(), RTLD_NOW | RTLD_NOLOAD);
    EXPECT_EQ(library, same);
    EXPECT_EQ(::dlclose(same), 0);
    EXPECT_EQ(::dlclose(library), 0);
    EXPECT_EQ(OpenDelayed("/nowhere/libnothing.so", &ZeloDliHook), nullptr);
    EXPECT_EQ(OpenDelayed("/nowhere/", &ZeloDliHook), nullptr);
}

TEST(PosixDelayLoadTest, PipeBesideTheProgramIsNoLibraryAndIsNotWaitedFor)
{
    const boost::filesystem::path pipe = GetExecutablePath() / "libpipe.so";
    ::unlink(pipe.c_str());
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    // Without it, who waits for a writer waits for ever. It can be opened only while somebody does.
    std::atomic<bool> isOver = false;
    std::atomic<bool> isWaitedFor = false;
    std::thread writer(
        [&]
        {
            while (!isOver)
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                const int end = ::open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
                isWaitedFor = isWaitedFor || end >= 0;
                ::close(end);
            }
        });
    EXPECT_EQ(OpenDelayed("/nowhere/libpipe.so", &ZeloDliHook), nullptr);
    EXPECT_EQ(OpenDelayed(pipe.c_str(), nullptr), nullptr);
    isOver = true;
    writer.join();
    EXPECT_FALSE(isWaitedFor);
    ::unlink(pipe.c_str());
}
