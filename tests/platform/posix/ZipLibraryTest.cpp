#include "utility/platform/ZipLibrary.h"

#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/Threads.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/codec/Zip.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>

using support::FailingCall;

namespace
{

// Each of these is for a process of its own, which has not used minizip yet.

bool IsMinizipLoaded() { return ::dlopen("libminizip.so.1", RTLD_NOW | RTLD_NOLOAD) != nullptr; }

bool IsMinizipThere()
{
    utility::platform::ZipCallbacks callbacks = {};
    return utility::platform::ZipLibrary().ZpInit(callbacks) != 0;
}

[[noreturn]] void EndZipping() { std::exit(testing::Test::HasFailure() ? 1 : 0); }

[[noreturn]] void ZipFirst()
{
    const support::TemporaryFolder folder;
    EXPECT_FALSE(Zip::ZipFiles(folder / "a.zip", {}));
    EXPECT_FALSE(IsMinizipLoaded());
    EXPECT_TRUE(Zip::ZipFiles(folder / "a.zip", {folder.File("a", "a")}));
    EXPECT_TRUE(IsMinizipLoaded());
    boost::filesystem::remove_all(folder.Path());
    EndZipping();
}

[[noreturn]] void ZipWithout()
{
    const support::TemporaryFolder folder;
    const boost::filesystem::path file = folder.File("a", "a");
    {
        const FailingCall missing("dlopen", ENOENT, FailingCall::always);
        EXPECT_FALSE(Zip::ZipFiles(folder / "a.zip", {file}));
        EXPECT_TRUE(missing.HasFailed());
        EXPECT_FALSE(boost::filesystem::exists(folder / "a.zip"));
    }
    // One without a function that is called is none.
    for (const int at : {1, 5})
    {
        const FailingCall missing("dlsym", ENOENT, at);
        EXPECT_FALSE(IsMinizipThere());
        EXPECT_TRUE(missing.HasFailed());
        EXPECT_FALSE(IsMinizipLoaded());
    }
    // Found by the next call when it is there.
    EXPECT_TRUE(Zip::ZipFiles(folder / "a.zip", {file}));
    boost::filesystem::remove_all(folder.Path());
    EndZipping();
}

[[noreturn]] void ForkWhileThreadsLookForMinizip()
{
    const auto look = []
    {
        const FailingCall missing("dlopen", ENOENT, FailingCall::always);
        return !IsMinizipThere();
    };
    support::ExpectChildrenOfThreadsToWork(look, &IsMinizipThere);
    EndZipping();
}

}

class PosixZipLibraryTest : public testing::Test
{
protected:
    PosixZipLibraryTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};
using PosixZipLibraryThreadTest = PosixZipLibraryTest;

TEST_F(PosixZipLibraryTest, IsLoadedWithTheFirstCallThatHasFiles)
{
    EXPECT_EXIT(ZipFirst(), testing::ExitedWithCode(0), "");
}

TEST_F(PosixZipLibraryTest, WhereThereIsNoneNothingIsWritten)
{
    EXPECT_EXIT(ZipWithout(), testing::ExitedWithCode(0), "");
}

TEST_F(PosixZipLibraryThreadTest, ChildUsesItWhileThreadsLookForIt)
{
    EXPECT_EXIT(ForkWhileThreadsLookForMinizip(), testing::ExitedWithCode(0), "");
}
