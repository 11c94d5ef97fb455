#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

using utility::platform::PathFromWide;
using utility::platform::WideFromPath;

class PathTextTest : public ::testing::TestWithParam<std::wstring>
{
};

TEST_P(PathTextTest, SurvivesTheTripThroughAPath)
{
    EXPECT_EQ(WideFromPath(PathFromWide(GetParam().c_str())), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Texts, PathTextTest,
                         ::testing::Values(std::wstring(), L"plain.igs", L"/a folder/file", L"\u00E4\u00DF\u20AC",
                                           L"\u65E5\u672C\u8A9E.igs", L"\U0001F600"));

TEST(PathsTest, PathsAreJoinedAsAnyOther)
{
    EXPECT_EQ(PathFromWide(L"folder") / PathFromWide(L"\u65E5"), PathFromWide(L"folder/\u65E5"));
}

TEST(PathsTest, NullIsTheEmptyPath) { EXPECT_TRUE(PathFromWide(nullptr).empty()); }
