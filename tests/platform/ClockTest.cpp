#include "utility/platform/Clock.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>

using utility::platform::LocalTime;

TEST(ClockTest, LocalTimeIsWhatTheRuntimeHas)
{
    const std::time_t moment = 1700000000;
    const std::tm expected = *std::localtime(&moment);
    const std::tm local = LocalTime(moment);
    EXPECT_EQ(local.tm_year, expected.tm_year);
    EXPECT_EQ(local.tm_yday, expected.tm_yday);
    EXPECT_EQ(local.tm_hour, expected.tm_hour);
    EXPECT_EQ(local.tm_min, expected.tm_min);
    EXPECT_EQ(local.tm_sec, 20);
}

TEST(ClockTest, MomentThatTheSystemCannotTellIsAllZeros)
{
    const std::tm local = LocalTime(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(local.tm_year, 0);
    EXPECT_EQ(local.tm_mday, 0);
    EXPECT_EQ(local.tm_sec, 0);
}
