#include "utility/settings/internal/LibraryResources.h"

#include "utility/platform/Modules.h"

#include <gtest/gtest.h>

using utility::detail::LibraryResources;
using utility::detail::LibraryString;

namespace
{

// Made after the library's resources, although this is another source.
const std::wstring earlyString = LibraryString(8309);

const char here = 0;

}

TEST(LibraryResourcesTest, AreReadyBeforeTheStaticObjectsOfOthers) { EXPECT_EQ(earlyString, L"metres"); }

TEST(LibraryResourcesTest, ModuleIsTheOneThatHoldsTheLibrary)
{
    EXPECT_EQ(LibraryResources().GetDLL(), utility::platform::Modules().ModuleAt(&here));
}

TEST(LibraryResourcesTest, StringsAreThoseOfTheResourceModule)
{
    EXPECT_EQ(LibraryString(8305), utility::platform::Modules().StringOf(LibraryResources().GetResourceDLL(), 8305));
    EXPECT_EQ(LibraryString(8305), L"inch");
    EXPECT_EQ(LibraryString(8299), L"");
}
