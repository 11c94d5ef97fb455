#include "utility/platform/Modules.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <dlfcn.h>
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

TEST(PosixModulesTest, FileNameFromAFolderThatIsGoneSaysWhy)
{
    const support::TemporaryFolder folder;
    boost::filesystem::copy_file(UTILITY_VERSIONED_MODULE, folder / "near.so");
    support::Child child(
        [&]
        {
            boost::filesystem::current_path(folder.Path());
            void* const library = ::dlopen("./near.so", RTLD_NOW);
            if (library == nullptr)
                return 1;
            boost::filesystem::remove_all(folder.Path());
            wchar_t name[260];
            const HINSTANCE module = Modules().ModuleAt(::dlsym(library, "main"));
            return Modules().FileName(module, name, 260) == 0 && LastError() == ERROR_FILE_NOT_FOUND ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}
