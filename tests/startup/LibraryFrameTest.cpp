#include "utility/startup/LibraryFrame.h"

#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"
#include "utility/framework/internal/ResourceModules.h"
#include "utility/settings/internal/LibraryResources.h"
#include "utility/text/ResourceString.h"

#include <gtest/gtest.h>

#include <utility>

using utility::framework::CurrentModuleState;
using utility::framework::FirstLibrary;

namespace
{

/// Puts the module state back as it was.
class KeepModuleState
{
public:
    KeepModuleState() : m_instance(CurrentModuleState().currentInstance) {}
    KeepModuleState(const KeepModuleState&) = delete;
    KeepModuleState& operator=(const KeepModuleState&) = delete;
    ~KeepModuleState() { CurrentModuleState().currentInstance = m_instance; }

private:
    HINSTANCE m_instance;
};

support::FakeModule moduleA;
support::FakeModule moduleB;
support::FakeModule resourcesA;

}

TEST(ZeloInitMFCExtensionDLLTest, SetsTheCurrentInstanceOfAHostWithoutOne)
{
    const KeepModuleState keep;
    CurrentModuleState().currentInstance = nullptr;
    ZeloInitMFCExtensionDLL(moduleA.Handle(), resourcesA.Handle());
    EXPECT_EQ(CurrentModuleState().currentInstance, moduleA.Handle());
}

TEST(ZeloInitMFCExtensionDLLTest, LeavesACurrentInstanceUnchanged)
{
    const KeepModuleState keep;
    CurrentModuleState().currentInstance = moduleA.Handle();
    ZeloInitMFCExtensionDLL(moduleB.Handle(), resourcesA.Handle());
    EXPECT_EQ(CurrentModuleState().currentInstance, moduleA.Handle());
}

TEST(ZeloInitMFCExtensionDLLTest, AddsALinkWithModuleAndResources)
{
    const auto* const earlier = FirstLibrary();
    ZeloInitMFCExtensionDLL(moduleA.Handle(), resourcesA.Handle());
    ASSERT_NE(FirstLibrary(), earlier);
    EXPECT_EQ(FirstLibrary()->Next(), earlier);
    EXPECT_EQ(FirstLibrary()->Module(), moduleA.Handle());
    EXPECT_EQ(FirstLibrary()->Resources(), resourcesA.Handle());
}

TEST(ZeloInitMFCExtensionDLLTest, StringsOfTheModuleThatJoinedLastAreFoundFirst)
{
    static support::FakeModule resourcesB;
    support::TableModules modules;
    modules.strings[{resourcesA.Handle(), 8304}] = L"A";
    modules.strings[{resourcesB.Handle(), 8304}] = L"B";
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    ZeloInitMFCExtensionDLL(moduleA.Handle(), resourcesA.Handle());
    EXPECT_EQ(resource_string(8304), L"A");
    ZeloInitMFCExtensionDLL(moduleB.Handle(), resourcesB.Handle());
    EXPECT_EQ(resource_string(8304), L"B");
    // What the later ones do not have is found further along.
    EXPECT_EQ(resource_string(8309), L"metres");
}

TEST(LoadResourceModuleTest, FileOfResourcesIsLoadedByItsPath)
{
    const HINSTANCE module = utility::LoadResourceModule(L"" UTILITY_TEST_MODULES "/Resources.dll");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(resource_string(module, 0), L"first of the first block");
    EXPECT_EQ(utility::LoadResourceModule(L"" UTILITY_TEST_MODULES "/Absent.dll"), nullptr);
}

TEST(InitialiseUtilityDLLTest, StandsForAHostWithoutACurrentInstance)
{
    const KeepModuleState keep;
    CurrentModuleState().currentInstance = nullptr;
    InitialiseUtilityDLL();
    EXPECT_NE(CurrentModuleState().currentInstance, nullptr);
    EXPECT_EQ(CurrentModuleState().currentInstance, FirstLibrary()->Module());
}

TEST(InitialiseUtilityDLLTest, MakesTheLibrarysStringsKnown)
{
    InitialiseUtilityDLL();
    EXPECT_EQ(resource_string(8304), L"mm");
    EXPECT_EQ(resource_string(FirstLibrary()->Resources(), 8304), L"mm");
}

TEST(InitialiseUtilityDLLTest, JoinsTheLibraryWithItsResourceModule)
{
    InitialiseUtilityDLL();
    EXPECT_EQ(FirstLibrary()->Module(), utility::detail::LibraryResources().GetDLL());
    EXPECT_EQ(FirstLibrary()->Resources(), utility::detail::LibraryResources().GetResourceDLL());
}

TEST(InitialiseUtilityDLLTest, SecondCallAddsASecondLinkAndHasNoOtherEffect)
{
    InitialiseUtilityDLL();
    const auto* const first = FirstLibrary();
    const HINSTANCE instance = CurrentModuleState().currentInstance;
    InitialiseUtilityDLL();
    ASSERT_NE(FirstLibrary(), first);
    EXPECT_EQ(FirstLibrary()->Next(), first);
    EXPECT_EQ(FirstLibrary()->Module(), first->Module());
    EXPECT_EQ(FirstLibrary()->Resources(), first->Resources());
    EXPECT_EQ(CurrentModuleState().currentInstance, instance);
    EXPECT_EQ(resource_string(8304), L"mm");
}
