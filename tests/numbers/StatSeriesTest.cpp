#include "utility/numbers/StatSeries.h"

#include "tests/support/Doubles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <new>
#include <utility>

namespace
{

using support::quietNan;

StatSeries SeriesOf(const std::deque<double>& values)
{
    StatSeries series;
    for (const double value : values)
        series.AddVal(value);
    return series;
}

TEST(StatSeriesTest, StartsWithoutValues)
{
    const StatSeries series;
    EXPECT_EQ(series.count, 0U);
    EXPECT_EQ(series.sum, 0.0);
    EXPECT_TRUE(series.values.empty());
}

TEST(StatSeriesTest, ExtremesAreUnsetUntilTheFirstValue)
{
    alignas(StatSeries) unsigned char place[sizeof(StatSeries)];
    volatile unsigned char* const bytes = place;
    for (std::size_t i = 0; i < sizeof place; ++i)
        bytes[i] = 0xA5;
    auto* const series = ::new (place) StatSeries;
    for (std::size_t i = offsetof(StatSeries, minimum); i < offsetof(StatSeries, sum); ++i)
        EXPECT_EQ(bytes[i], 0xA5) << i;
    series->AddVal(-7.0);
    EXPECT_EQ(series->minimum, -7.0);
    EXPECT_EQ(series->maximum, -7.0);
    series->~StatSeries();
}

TEST(StatSeriesTest, CountAndSumStandAroundTheExtremesAheadOfTheValues)
{
    EXPECT_EQ(sizeof(StatSeries::count), 4U);
    EXPECT_EQ(offsetof(StatSeries, count), 0U);
    EXPECT_EQ(offsetof(StatSeries, minimum), 8U);
    EXPECT_EQ(offsetof(StatSeries, maximum), 16U);
    EXPECT_EQ(offsetof(StatSeries, sum), 24U);
    EXPECT_EQ(offsetof(StatSeries, values), 32U);
}

TEST(StatSeriesTest, AddedValuesAreCountedAndKept)
{
    const StatSeries series = SeriesOf({3.0, 1.0, 2.0});
    EXPECT_EQ(series.count, 3U);
    EXPECT_EQ(series.minimum, 1.0);
    EXPECT_EQ(series.maximum, 3.0);
    EXPECT_EQ(series.sum, 6.0);
    EXPECT_EQ(series.values, (std::deque<double>{3.0, 1.0, 2.0}));
}

TEST(StatSeriesTest, ValuesNeedNotBeKept)
{
    StatSeries series;
    for (const double value : {3.0, 1.0, 2.0})
        series.AddValNotArray(value);
    EXPECT_EQ(series.count, 3U);
    EXPECT_EQ(series.minimum, 1.0);
    EXPECT_EQ(series.maximum, 3.0);
    EXPECT_EQ(series.sum, 6.0);
    EXPECT_TRUE(series.values.empty());
}

TEST(StatSeriesTest, BothWaysOfAddingCount)
{
    StatSeries series;
    series.AddVal(1.0);
    series.AddValNotArray(5.0);
    EXPECT_EQ(series.count, 2U);
    EXPECT_EQ(series.maximum, 5.0);
    EXPECT_EQ(series.values, (std::deque<double>{1.0}));
}

TEST(StatSeriesTest, SumIsMadeInTheOrderOfArrival)
{
    const StatSeries series = SeriesOf({1e16, 1.0, -1e16, 1.0});
    EXPECT_EQ(series.sum, ((1.0 + (-1e16 + (1.0 + 1e16)))));
    EXPECT_EQ(series.sum, 1.0);
}

TEST(StatSeriesTest, NanBecomesTheMinimumUntilTheNextValueReplacesIt)
{
    StatSeries series = SeriesOf({1.0, quietNan});
    EXPECT_TRUE(std::isnan(series.minimum));
    EXPECT_EQ(series.maximum, 1.0);
    series.AddVal(5.0);
    EXPECT_EQ(series.minimum, 5.0);
    // The value that replaces a NaN is not looked at as a maximum.
    EXPECT_EQ(series.maximum, 1.0);
    EXPECT_TRUE(std::isnan(series.sum));
    EXPECT_EQ(series.count, 3U);
}

TEST(StatSeriesTest, NanAsTheFirstValueStaysTheMaximum)
{
    const StatSeries series = SeriesOf({quietNan, 2.0, 9.0});
    EXPECT_EQ(series.minimum, 2.0);
    EXPECT_TRUE(std::isnan(series.maximum));
}

TEST(StatSeriesTest, CopyHasEverything)
{
    const StatSeries series = SeriesOf({3.0, 1.0});
    StatSeries assigned = SeriesOf({7.0});
    assigned = series;
    for (const StatSeries& copy : {StatSeries(series), assigned})
    {
        EXPECT_EQ(copy.count, 2U);
        EXPECT_EQ(copy.minimum, 1.0);
        EXPECT_EQ(copy.maximum, 3.0);
        EXPECT_EQ(copy.sum, 4.0);
        EXPECT_EQ(copy.values, series.values);
    }
}

TEST(StatSeriesTest, AssignedToItselfItStays)
{
    StatSeries series = SeriesOf({3.0, 1.0});
    const StatSeries& same = series;
    series = same;
    EXPECT_EQ(series.values, (std::deque<double>{3.0, 1.0}));
    EXPECT_EQ(series.count, 2U);
}

TEST(StatSeriesTest, MovedFromSeriesKeepsItsCountAndSumWithoutValues)
{
    StatSeries first = SeriesOf({3.0, 1.0});
    StatSeries second(std::move(first));
    StatSeries third;
    third = std::move(second);
    for (const StatSeries* const source : {&first, &second})
    {
        EXPECT_EQ(source->count, 2U);
        EXPECT_EQ(source->sum, 4.0);
        EXPECT_TRUE(source->values.empty());
    }
    EXPECT_EQ(third.count, 2U);
    EXPECT_EQ(third.minimum, 1.0);
    EXPECT_EQ(third.maximum, 3.0);
    EXPECT_EQ(third.sum, 4.0);
    EXPECT_EQ(third.values, (std::deque<double>{3.0, 1.0}));
}

}
