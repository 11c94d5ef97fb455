#include "utility/platform/Modules.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <dlfcn.h>
#include <functional>
#include <string>
#include <utility>

using FileAndStem = std::pair<std::wstring, std::wstring>;

class SatelliteStemTest : public ::testing::TestWithParam<FileAndStem>
{
};

TEST_P(SatelliteStemTest, IsThePathWithoutWhatTheSystemAdds)
{
    EXPECT_EQ(utility::platform::SatelliteStem(GetParam().first), GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, SatelliteStemTest,
    ::testing::Values(FileAndStem{L"/usr/lib/libUtility.so.0.1", L"/usr/lib/Utility"},
                      FileAndStem{L"/usr/lib/libUtility.so", L"/usr/lib/Utility"},
                      FileAndStem{L"/opt/Milling.so.2", L"/opt/Milling"}, FileAndStem{L"/opt/app", L"/opt/app"},
                      FileAndStem{L"/opt/app.bin", L"/opt/app"}, FileAndStem{L"/opt/app.1.bin", L"/opt/app.1"},
                      FileAndStem{L"/opt/library", L"/opt/library"}, FileAndStem{L"/opt/lib.social", L"/opt/lib"},
                      FileAndStem{L"/opt/libfoo.bin", L"/opt/libfoo"},
                      FileAndStem{L"/opt/x.so.d/app", L"/opt/x.so.d/app"}, FileAndStem{L"/opt/.app", L"/opt/.app"},
                      FileAndStem{L"/lib\u00FC.d/libM\u00FChle.so.1", L"/lib\u00FC.d/M\u00FChle"},
                      FileAndStem{L"app.bin", L"app"}, FileAndStem{L"", L""}));

using utility::platform::LastError;
using utility::platform::Modules;

TEST(PosixModulesTest, FileThatCannotBeReadSaysWhyAndMayBeLoadedLater)
{
    const wchar_t* const file = L"" UTILITY_TEST_MODULES "/Resources.dll";
    const std::ptrdiff_t descriptors = support::OpenDescriptors();
    for (const char* const call : {"open", "fstat", "mmap"})
    {
        const support::FailingCall failing(call, EMFILE);
        EXPECT_EQ(Modules().Load(file), nullptr) << call;
        EXPECT_EQ(LastError(), ERROR_TOO_MANY_OPEN_FILES) << call;
        EXPECT_TRUE(failing.HasFailed()) << call;
        EXPECT_EQ(support::OpenDescriptors(), descriptors) << call;
    }
    const HINSTANCE module = Modules().Load(file);
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(Modules().Free(module));
    EXPECT_FALSE(Modules().Free(module));
}

namespace
{

/// The file name of a library that a child process loads by its bare name from this folder, which is the child's own
/// from then on and becomes another one by `change`.
bool IsToldItsFileName(const boost::filesystem::path& folder, const std::function<void()>& change)
{
    support::TemporaryFolder::Copy(UTILITY_VERSIONED_MODULE, folder / "near.so");
    support::Child child(
        [&]
        {
            boost::filesystem::current_path(folder);
            void* const library = ::dlopen("./near.so", RTLD_NOW);
            if (library == nullptr)
                return 1;
            change();
            const std::wstring name = Modules().FileName(Modules().ModuleAt(::dlsym(library, "main")));
            return name == utility::platform::WideFromPath(folder / "near.so") ? 0 : 2;
        });
    return child.ExitCode() == 0;
}

}

TEST(PosixModulesTest, FileNameIsThatOfTheFolderItWasLoadedFromWhicheverIsTheCurrentOne)
{
    const support::TemporaryFolder folder;
    EXPECT_TRUE(IsToldItsFileName(folder.Path(), [] { boost::filesystem::current_path("/"); }));
}

TEST(PosixModulesTest, FileNameFromAFolderThatIsGoneIsWhereItWas)
{
    const support::TemporaryFolder folder;
    EXPECT_TRUE(IsToldItsFileName(folder.Path(), [&] { boost::filesystem::remove_all(folder.Path()); }));
}

TEST(PosixModulesTest, FileNameMayHaveALineFeed)
{
    const support::TemporaryFolder temporary;
    const auto folder = temporary / "turning\nmilling";
    boost::filesystem::create_directory(folder);
    EXPECT_TRUE(IsToldItsFileName(folder, [] { boost::filesystem::current_path("/"); }));
}

TEST(PosixModulesTest, FileNameMayEndLikeTheMarkOfOneThatIsGone)
{
    const support::TemporaryFolder folder;
    const auto path = folder / "near.so (deleted)";
    support::TemporaryFolder::Copy(UTILITY_VERSIONED_MODULE, path);
    support::Child child(
        [&]
        {
            boost::filesystem::current_path(folder.Path());
            void* const library = ::dlopen("./near.so (deleted)", RTLD_NOW);
            const std::wstring name = Modules().FileName(Modules().ModuleAt(::dlsym(library, "main")));
            return name == utility::platform::WideFromPath(path) ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST(PosixModulesTest, PathsMayHaveAnyLengthThatTheSystemHas)
{
    const support::TemporaryFolder temporary;
    for (const std::size_t length : {255u, 260u, 300u, 1000u, 4000u})
    {
        boost::filesystem::path folder = temporary.Path() / std::to_string(length);
        while (folder.size() + 8 < length)
            folder /= std::string(std::min<std::size_t>(200, length - folder.size() - 8), 'x');
        boost::filesystem::create_directories(folder);
        support::TemporaryFolder::Copy(UTILITY_VERSIONED_MODULE, folder / "far.so");
        support::TemporaryFolder::Copy(UTILITY_TEST_MODULES "/Resources.dll", folder / "far.dll");
        void* const library = ::dlopen((folder / "far.so").c_str(), RTLD_NOW);
        ASSERT_NE(library, nullptr) << ::dlerror();
        EXPECT_EQ(Modules().FileName(Modules().ModuleAt(::dlsym(library, "main"))),
                  utility::platform::WideFromPath(folder / "far.so"));
        ::dlclose(library);
        const HINSTANCE module = Modules().Load(utility::platform::WideFromPath(folder / "far.dll").c_str());
        EXPECT_EQ(Modules().FileName(module), utility::platform::WideFromPath(folder / "far.dll"));
        EXPECT_TRUE(Modules().Free(module));
    }
}
