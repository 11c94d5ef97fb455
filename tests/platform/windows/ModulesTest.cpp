#include "utility/platform/Modules.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

using utility::platform::Modules;
using utility::platform::SatelliteStem;

TEST(SatelliteStemTest, IsThePathWithoutItsExtension)
{
    EXPECT_EQ(SatelliteStem(L"C:\\App.d\\Utility.dll"), L"C:\\App.d\\Utility");
    EXPECT_EQ(SatelliteStem(L"C:\\App.d\\Utility"), L"C:\\App.d\\Utility");
    EXPECT_EQ(SatelliteStem(L"C:\\App\\libMilling.1.dll"), L"C:\\App\\libMilling.1");
    EXPECT_EQ(SatelliteStem(L""), L"");
}

TEST(WindowsModulesTest, ModuleFindsWhatItNeedsBesideIt)
{
    auto path = boost::filesystem::system_complete(UTILITY_NEEDING_MODULE);
    const HINSTANCE module = Modules().Load(path.make_preferred().c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(Modules().Free(module));
}
