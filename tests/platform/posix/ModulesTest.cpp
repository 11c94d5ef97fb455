#include "utility/platform/Modules.h"

#include <gtest/gtest.h>

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
