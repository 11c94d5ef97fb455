#include "utility/records/RecordLines.h"

#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <type_traits>

namespace
{

template <class Tested>
class RecordLineOfBothFamiliesTest : public ::testing::Test
{
};

template <class Tested>
class RecordOfBothFamiliesTest : public ::testing::Test
{
};

template <class LineOfFamily, class CharacterOfFamily>
struct LineFamily
{
    using Line = LineOfFamily;
    using Character = CharacterOfFamily;
};

template <class RecordOfFamily, class CharacterOfFamily>
struct RecordFamily
{
    using Record = RecordOfFamily;
    using Character = CharacterOfFamily;
};

using LineFamilies = ::testing::Types<LineFamily<TextLine, char>, LineFamily<InputLine, unsigned char>>;
using RecordFamilies = ::testing::Types<RecordFamily<CTextRecord, char>, RecordFamily<CInputRecord, unsigned char>>;
TYPED_TEST_SUITE(RecordLineOfBothFamiliesTest, LineFamilies, );
TYPED_TEST_SUITE(RecordOfBothFamiliesTest, RecordFamilies, );

}

TYPED_TEST(RecordLineOfBothFamiliesTest, DefaultHasTwoNullPointers)
{
    const typename TypeParam::Line line;
    EXPECT_EQ(line.First(), nullptr);
    EXPECT_EQ(line.Last(), nullptr);
}

TYPED_TEST(RecordLineOfBothFamiliesTest, OneOfThePointersMayBeLeftOut)
{
    const typename TypeParam::Character bytes[] = {'a', 'b'};
    const typename TypeParam::Line line(bytes);
    EXPECT_EQ(line.First(), bytes);
    EXPECT_EQ(line.Last(), nullptr);
}

TYPED_TEST(RecordLineOfBothFamiliesTest, KeepsThePointersAsGiven)
{
    const typename TypeParam::Character bytes[] = {'a', 'b'};
    const typename TypeParam::Line line(bytes, bytes + 1);
    EXPECT_EQ(line.First(), bytes);
    EXPECT_EQ(line.Last(), bytes + 1);
    const typename TypeParam::Line copy(line);
    EXPECT_EQ(copy.First(), bytes);
    EXPECT_EQ(copy.Last(), bytes + 1);
}

TYPED_TEST(RecordLineOfBothFamiliesTest, EqualMeansTheSamePlace)
{
    using Line = typename TypeParam::Line;
    const typename TypeParam::Character bytes[] = {'a', 'b', 'a', 'b'};
    EXPECT_TRUE(Line(bytes, bytes + 1) == Line(bytes, bytes + 1));
    EXPECT_FALSE(Line(bytes, bytes + 1) == Line(bytes, bytes + 2));
    EXPECT_FALSE(Line(bytes, bytes + 3) == Line(bytes + 1, bytes + 3));
    EXPECT_TRUE(Line() == Line());
}

TYPED_TEST(RecordLineOfBothFamiliesTest, EqualTextAtAnotherPlaceIsAnotherLine)
{
    using Line = typename TypeParam::Line;
    const typename TypeParam::Character bytes[] = {'a', 'b', 'a', 'b'};
    EXPECT_FALSE(Line(bytes, bytes + 1) == Line(bytes + 2, bytes + 3));
}

TYPED_TEST(RecordLineOfBothFamiliesTest, IsJustTwoPointers)
{
    EXPECT_EQ(sizeof(typename TypeParam::Line), 2 * sizeof(void*));
    EXPECT_FALSE(std::is_polymorphic_v<typename TypeParam::Line>);
}

namespace
{

template <class Line>
concept HasAdvanceStart = requires(Line line)
{
    line.AdvanceStart(1);
};

}

TEST(InputLineTest, AdvanceStartMovesTheFirstPointerBothWays)
{
    const unsigned char bytes[8] = {};
    InputLine line(bytes + 4, bytes + 6);
    line.AdvanceStart(-1);
    EXPECT_EQ(line.First(), bytes + 3);
    line.AdvanceStart(2);
    EXPECT_EQ(line.First(), bytes + 5);
    line.AdvanceStart(0);
    EXPECT_EQ(line.First(), bytes + 5);
    EXPECT_EQ(line.Last(), bytes + 6);
}

TEST(InputLineTest, AdvanceStartIsNotCheckedAgainstTheLastPointer)
{
    const unsigned char bytes[8] = {};
    InputLine line(bytes, bytes + 2);
    line.AdvanceStart(5);
    EXPECT_EQ(line.First(), bytes + 5);
    EXPECT_EQ(line.Last(), bytes + 2);
}

TEST(TextLineTest, HasNoAdvanceStart)
{
    EXPECT_TRUE(HasAdvanceStart<InputLine>);
    EXPECT_FALSE(HasAdvanceStart<TextLine>);
}

TYPED_TEST(RecordOfBothFamiliesTest, NewOneHasNoLines)
{
    const typename TypeParam::Record record;
    EXPECT_TRUE(record.Lines().empty());
}

TYPED_TEST(RecordOfBothFamiliesTest, LinesStandInTheOrderOfAdd)
{
    const typename TypeParam::Character bytes[] = {'a', 'b', 'c', 'd'};
    typename TypeParam::Record record;
    record.Add(bytes + 2, bytes + 3);
    record.Add(bytes, bytes + 1);
    ASSERT_EQ(record.Lines().size(), 2u);
    EXPECT_EQ(record.Lines().front().First(), bytes + 2);
    EXPECT_EQ(record.Lines().front().Last(), bytes + 3);
    EXPECT_EQ(record.Lines().back().First(), bytes);
    EXPECT_EQ(record.Lines().back().Last(), bytes + 1);
}

TYPED_TEST(RecordOfBothFamiliesTest, SameLineTwiceMakesTwoEqualEntries)
{
    const typename TypeParam::Character bytes[] = {'a', 'b'};
    typename TypeParam::Record record;
    record.Add(bytes, bytes + 1);
    record.Add(bytes, bytes + 1);
    ASSERT_EQ(record.Lines().size(), 2u);
    EXPECT_TRUE(record.Lines().front() == record.Lines().back());
}

TYPED_TEST(RecordOfBothFamiliesTest, LinesAreTakenWithoutAnyCheck)
{
    const typename TypeParam::Character bytes[] = {'a', 'b'};
    typename TypeParam::Record record;
    record.Add(bytes + 1, bytes);
    record.Add(nullptr, nullptr);
    ASSERT_EQ(record.Lines().size(), 2u);
    EXPECT_EQ(record.Lines().front().First(), bytes + 1);
    EXPECT_EQ(record.Lines().front().Last(), bytes);
    EXPECT_EQ(record.Lines().back().First(), nullptr);
}

TYPED_TEST(RecordOfBothFamiliesTest, EarlierLinesStayWhereTheyAreWhenOneIsAdded)
{
    const typename TypeParam::Character bytes[] = {'a', 'b'};
    typename TypeParam::Record record;
    record.Add(bytes, bytes + 1);
    const auto* const first = &record.Lines().front();
    const auto place = record.Lines().begin();
    record.Add(bytes, bytes);
    EXPECT_EQ(&record.Lines().front(), first);
    EXPECT_EQ(std::next(place)->Last(), bytes);
}

TYPED_TEST(RecordOfBothFamiliesTest, IsJustTheList)
{
    using Record = typename TypeParam::Record;
    EXPECT_EQ(sizeof(Record), sizeof(std::declval<Record&>().Lines()));
    EXPECT_FALSE(std::is_polymorphic_v<Record>);
}

TEST(CInputRecordTest, CopyHasTheSameLinesInTheSameFile)
{
    const unsigned char bytes[8] = {};
    CInputRecord record;
    record.Add(bytes, bytes + 3);
    record.Add(bytes + 5, bytes + 8);
    const CInputRecord copy(record);
    EXPECT_EQ(copy.Lines(), record.Lines());
    EXPECT_NE(&copy.Lines().front(), &record.Lines().front());
}

TEST(CInputRecordTest, DestroyingACopyLeavesTheSourceIntact)
{
    const unsigned char bytes[8] = {};
    CInputRecord record;
    record.Add(bytes, bytes + 3);
    auto copy = std::make_unique<CInputRecord>(record);
    copy->Add(bytes + 4, bytes + 6);
    copy.reset();
    ASSERT_EQ(record.Lines().size(), 1u);
    EXPECT_EQ(record.Lines().front().First(), bytes);
    EXPECT_EQ(record.Lines().front().Last(), bytes + 3);
}

TEST(CTextRecordTest, CannotBeCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<CTextRecord>);
    EXPECT_TRUE(std::is_copy_constructible_v<CInputRecord>);
}
