#include "utility/files/Places.h"

#include "tests/support/ForwardingFileSystem.h"
#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/Modules.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <utility>

using utility::framework::CurrentModuleState;
using utility::platform::Modules;

namespace
{

const char addressInThisProgram = 0;

/// For its lifetime another module stands for the program.
class CurrentInstance
{
public:
    explicit CurrentInstance(HINSTANCE module) : m_earlier(std::exchange(CurrentModuleState().currentInstance, module))
    {
    }
    CurrentInstance(const CurrentInstance&) = delete;
    CurrentInstance& operator=(const CurrentInstance&) = delete;
    ~CurrentInstance() { CurrentModuleState().currentInstance = m_earlier; }

private:
    HINSTANCE m_earlier;
};

}

TEST(PlacesTest, ModulesFileAndItsFolderAreToldWhole)
{
    const auto file = GetModuleFilename(Modules().ModuleAt(&addressInThisProgram));
    EXPECT_EQ(file.stem(), "UtilityTests");
    EXPECT_TRUE(exists(file));
    EXPECT_EQ(GetModuleFilename(nullptr), file);
    EXPECT_EQ(GetModulePath(nullptr), file.parent_path());
}

TEST(PlacesTest, ModuleThatIsNotLoadedHasNone)
{
    char none[1];
    const auto module = reinterpret_cast<HINSTANCE>(none);
    EXPECT_EQ(GetModuleFilename(module), "");
    EXPECT_EQ(GetModulePath(module), "");
}

TEST(PlacesTest, ProgramIsTheModuleThatTheFrameworkTakesForIt)
{
    {
        const CurrentInstance none(nullptr);
        EXPECT_EQ(GetExecutableFilename(), GetModuleFilename(nullptr));
        EXPECT_EQ(GetExecutablePath(), GetModulePath(nullptr));
    }
    const auto path = boost::filesystem::system_complete(UTILITY_TEST_MODULES "/Resources.dll");
    const HINSTANCE module = Modules().Load(boost::filesystem::path(path).make_preferred().wstring().c_str());
    ASSERT_NE(module, nullptr);
    const CurrentInstance other(module);
    EXPECT_EQ(GetExecutableFilename().filename(), "Resources.dll");
    EXPECT_TRUE(equivalent(GetExecutablePath(), UTILITY_TEST_MODULES));
    EXPECT_TRUE(Modules().Free(module));
}

TEST(PlacesTest, DocumentsAreWhereTheSystemSays)
{
    struct : support::ForwardingFileSystem
    {
        path DocumentsFolder() override { return "documents"; }
    } system;
    EXPECT_EQ(GetUserDocumentsFolder(), "documents");
}

TEST(PlacesTest, DocumentsOfNobodyAreNowhere)
{
    support::ForwardingFileSystem system;
    system.failing = {"DocumentsFolder"};
    EXPECT_EQ(GetUserDocumentsFolder(), "");
}

TEST(PlacesTest, SystemsFolderHasItsLibraries)
{
    const auto folder = GetSystemFolder();
    EXPECT_TRUE(folder.is_absolute()) << folder;
    EXPECT_TRUE(exists(folder / "libc.so.6") || exists(folder / "kernel32.dll")) << folder;
}

TEST(PlacesTest, SystemsFolderThatIsNotKnownIsEmpty)
{
    support::ForwardingFileSystem files;
    files.failing = {"SystemFolder"};
    EXPECT_EQ(GetSystemFolder(), "");
}
