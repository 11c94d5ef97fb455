#include "utility/platform/Modules.h"

#include <gtest/gtest.h>

using utility::platform::SatelliteStem;

TEST(SatelliteStemTest, IsThePathWithoutItsExtension)
{
    EXPECT_EQ(SatelliteStem(L"C:\\App.d\\Utility.dll"), L"C:\\App.d\\Utility");
    EXPECT_EQ(SatelliteStem(L"C:\\App.d\\Utility"), L"C:\\App.d\\Utility");
    EXPECT_EQ(SatelliteStem(L"C:\\App\\libMilling.1.dll"), L"C:\\App\\libMilling.1");
    EXPECT_EQ(SatelliteStem(L""), L"");
}
