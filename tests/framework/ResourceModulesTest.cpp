#include "utility/framework/internal/ResourceModules.h"

#include "tests/support/StripModule.h"
#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"

#include <gtest/gtest.h>

using utility::framework::DynLinkLibrary;
using utility::framework::FirstLibrary;
using utility::framework::StringOfChain;

namespace
{

/// Two modules at the head of the chain, with strings for the length of a test.
class ResourceModulesTest : public ::testing::Test
{
protected:
    static HINSTANCE Older() { return Chain().older.Handle(); }
    static HINSTANCE Newer() { return Chain().newer.Handle(); }

    support::TableModules m_modules;

private:
    struct Links
    {
        support::FakeModule code;
        support::FakeModule older;
        support::FakeModule newer;
        const DynLinkLibrary* olderLink = new DynLinkLibrary(code.Handle(), older.Handle());
        const DynLinkLibrary* newerLink = new DynLinkLibrary(code.Handle(), newer.Handle());
    };

    static Links& Chain()
    {
        static Links links;
        return links;
    }

    const Links& m_links = Chain();
    const support::Substitute<utility::platform::ModuleService> m_scope{utility::platform::ModulesSlot(), m_modules};
};

}

TEST_F(ResourceModulesTest, ModuleThatJoinedLastIsAskedFirst)
{
    m_modules.strings = {{{Older(), 61000}, L"older"}, {{Newer(), 61000}, L"newer"}, {{Older(), 61001}, L"alone"}};
    EXPECT_EQ(StringOfChain(61000), L"newer");
    EXPECT_EQ(StringOfChain(61001), L"alone");
}

TEST_F(ResourceModulesTest, ModuleWithAnEmptyStringDoesNotHoldIt)
{
    m_modules.strings = {{{Newer(), 61000}, std::wstring()}, {{Older(), 61000}, L"older"}};
    EXPECT_EQ(StringOfChain(61000), L"older");
}

TEST_F(ResourceModulesTest, StringIsLookedUpOnce)
{
    m_modules.strings = {{{FirstLibrary()->Resources(), 61000}, L"first"}};
    EXPECT_EQ(StringOfChain(61000), L"first");
    EXPECT_EQ(m_modules.lookups, 1);
}

TEST_F(ResourceModulesTest, NumberThatNoModuleHoldsIsEmpty) { EXPECT_EQ(StringOfChain(61999), L""); }

TEST_F(ResourceModulesTest, NumberThatNoModuleHoldsIsLookedUpInTheProgram)
{
    m_modules.strings = {{{nullptr, 61999}, L"program"}};
    EXPECT_EQ(StringOfChain(61999), L"program");
}

TEST_F(ResourceModulesTest, LibrarysStringsAreFoundBehindThoseOfOthers)
{
    m_modules.strings = {{{Newer(), 8304}, L"Millimeter"}};
    EXPECT_EQ(StringOfChain(8304), L"Millimeter");
    EXPECT_EQ(StringOfChain(8306), L"inches");
}

TEST_F(ResourceModulesTest, ResourceIsThatOfTheModuleThatHasIt)
{
    constexpr UINT bitmap = 2;
    const HINSTANCE strips = support::StripModule();
    EXPECT_EQ(utility::framework::ModuleOfResource(bitmap, L"Tools"), strips);
    EXPECT_EQ(utility::framework::ModuleOfResource(bitmap, support::NumberedResource(101)), strips);
    EXPECT_EQ(utility::framework::ModuleOfResource(bitmap, L"absent"), nullptr);
    EXPECT_EQ(utility::framework::ModuleOfResource(10, L"Tools"), nullptr);
}

TEST_F(ResourceModulesTest, NewLinkStandsAheadOfAllEarlierOnes)
{
    const DynLinkLibrary* const earlier = FirstLibrary();
    // A link is for the rest of the process: nothing takes it out of the chain.
    const auto* const link = new DynLinkLibrary(Older(), Newer());
    EXPECT_EQ(FirstLibrary(), link);
    EXPECT_EQ(link->Next(), earlier);
    EXPECT_EQ(link->Module(), Older());
    EXPECT_EQ(link->Resources(), Newer());
}
