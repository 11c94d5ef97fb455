#include "utility/platform/Modules.h"

#include <gtest/gtest.h>

#include <utility>

class SatelliteStemTest : public ::testing::TestWithParam<std::pair<const wchar_t*, const wchar_t*>>
{
};

TEST_P(SatelliteStemTest, IsThePathWithoutWhatTheSystemAdds)
{
    EXPECT_EQ(utility::platform::SatelliteStem(GetParam().first), GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, SatelliteStemTest,
    ::testing::Values(std::pair{L"/usr/lib/libUtility.so.0.1", L"/usr/lib/Utility"},
                      std::pair{L"/usr/lib/libUtility.so", L"/usr/lib/Utility"},
                      std::pair{L"/opt/Milling.so.2", L"/opt/Milling"}, std::pair{L"/opt/app", L"/opt/app"},
                      std::pair{L"/opt/app.bin", L"/opt/app"}, std::pair{L"/opt/app.1.bin", L"/opt/app.1"},
                      std::pair{L"/opt/library", L"/opt/library"}, std::pair{L"/opt/lib.social", L"/opt/lib"},
                      std::pair{L"/opt/libfoo.bin", L"/opt/libfoo"}, std::pair{L"/opt/x.so.d/app", L"/opt/x.so.d/app"},
                      std::pair{L"/opt/.app", L"/opt/.app"},
                      std::pair{L"/lib\u00FC.d/libM\u00FChle.so.1", L"/lib\u00FC.d/M\u00FChle"},
                      std::pair{L"app.bin", L"app"}, std::pair{L"", L""}));
