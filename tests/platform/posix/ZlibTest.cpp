#include "utility/platform/Zlib.h"

#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/Threads.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <zlib.h>

using support::FailingCall;
using utility::platform::Zlib;

namespace
{

// Each of these is for a process of its own, which has not used zlib yet.

bool IsZlibLoaded() { return ::dlopen("libz.so.1", RTLD_NOW | RTLD_NOLOAD) != nullptr; }

bool IsZlibThere() { return Zlib().Checksum(0, "123456789", 9) == 0xCBF43926; }

[[noreturn]] void End() { std::exit(testing::Test::HasFailure() ? 1 : 0); }

[[noreturn]] void UseFirst()
{
    EXPECT_FALSE(IsZlibLoaded());
    Zlib();
    EXPECT_FALSE(IsZlibLoaded());
    EXPECT_TRUE(IsZlibThere());
    EXPECT_TRUE(IsZlibLoaded());
    End();
}

[[noreturn]] void UseWithout()
{
    z_stream stream{};
    {
        const FailingCall missing("dlopen", ENOENT, FailingCall::always);
        EXPECT_EQ(Zlib().DeflateInit(stream, 6, ZLIB_VERSION, sizeof(stream)), Z_VERSION_ERROR);
        EXPECT_EQ(Zlib().DeflateInit2(stream, 6, 8, 15, 8, 0, ZLIB_VERSION, sizeof(stream)), Z_VERSION_ERROR);
        EXPECT_EQ(Zlib().Deflate(stream, Z_FINISH), Z_VERSION_ERROR);
        EXPECT_EQ(Zlib().DeflateEnd(stream), Z_VERSION_ERROR);
        EXPECT_EQ(Zlib().InflateInit(stream, ZLIB_VERSION, sizeof(stream)), Z_VERSION_ERROR);
        EXPECT_EQ(Zlib().Inflate(stream, Z_FINISH), Z_VERSION_ERROR);
        EXPECT_EQ(Zlib().InflateEnd(stream), Z_VERSION_ERROR);
        EXPECT_EQ(Zlib().Checksum(7, "123456789", 9), 0u);
        EXPECT_TRUE(missing.HasFailed());
    }
    // One without a function that is called is none.
    for (const int at : {1, 8})
    {
        const FailingCall missing("dlsym", ENOENT, at);
        EXPECT_EQ(Zlib().Checksum(7, "123456789", 9), 0u);
        EXPECT_TRUE(missing.HasFailed());
        EXPECT_FALSE(IsZlibLoaded());
    }
    // Found by the next call when it is there.
    EXPECT_EQ(Zlib().DeflateInit(stream, 6, ZLIB_VERSION, sizeof(stream)), Z_OK);
    EXPECT_EQ(Zlib().DeflateEnd(stream), Z_OK);
    End();
}

[[noreturn]] void ForkWhileThreadsLook()
{
    const auto look = []
    {
        const FailingCall missing("dlopen", ENOENT, FailingCall::always);
        return Zlib().Checksum(0, "123456789", 9) == 0;
    };
    support::ExpectChildrenOfThreadsToWork(look, &IsZlibThere);
    End();
}

[[noreturn]] void UseFirstByThreads()
{
    std::atomic<int> good = 0;
    {
        std::vector<std::jthread> threads;
        for (int number = 0; number < 8; ++number)
            threads.emplace_back([&good] { good += IsZlibThere() ? 1 : 0; });
    }
    EXPECT_EQ(good, 8);
    End();
}

}

class PosixZlibTest : public testing::Test
{
protected:
    PosixZlibTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};
using PosixZlibThreadTest = PosixZlibTest;

TEST_F(PosixZlibTest, IsLoadedWithTheFirstCall) { EXPECT_EXIT(UseFirst(), testing::ExitedWithCode(0), ""); }

TEST_F(PosixZlibTest, WhereThereIsNoneEachCallIsRefused) { EXPECT_EXIT(UseWithout(), testing::ExitedWithCode(0), ""); }

TEST_F(PosixZlibThreadTest, ChildUsesItWhileThreadsLookForIt)
{
    EXPECT_EXIT(ForkWhileThreadsLook(), testing::ExitedWithCode(0), "");
}

TEST_F(PosixZlibThreadTest, MayBeUsedFirstBySeveralAtOnce)
{
    EXPECT_EXIT(UseFirstByThreads(), testing::ExitedWithCode(0), "");
}
