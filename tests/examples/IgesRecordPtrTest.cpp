#include "examples/iges/IgesRecordPtr.h"

#include "tests/support/IgesText.h"

#include <gtest/gtest.h>

#include <cmath>

using iges::Field;
using iges::FieldKind;

namespace
{

/// A record's fields, read to the end. The lines have exactly their characters, so that a sanitizer sees more.
class IgesRecordTest : public testing::Test
{
protected:
    const std::vector<Field>& Read(const std::vector<std::string>& lines, iges::Delimiters delimiters = {})
    {
        std::vector<std::vector<char>> exact;
        for (const std::string& line : lines)
            exact.emplace_back(line.begin(), line.end());
        std::vector<std::string_view> views;
        for (const std::vector<char>& line : exact)
            views.emplace_back(line.data(), line.size());
        iges::RecordPtr cursor(&messages.file, delimiters, views);
        fields.clear();
        do
        {
            cursor.ReadField(fields.emplace_back());
        } while (cursor.NextField());
        errors = messages.Take();
        return fields;
    }

    using Errors = std::vector<std::wstring>;

    support::Messages messages;
    std::vector<Field> fields;
    Errors errors;
};

TEST_F(IgesRecordTest, FieldsAreWhatTheirCharactersSay)
{
    Read({"110,-7,1.5,2E3,2.5D-1,,5HA;,B ,+.5;"});
    ASSERT_EQ(fields.size(), 8u);
    EXPECT_EQ(fields[0].kind, FieldKind::integer);
    EXPECT_EQ(fields[0].integer, 110);
    EXPECT_EQ(fields[1].integer, -7);
    EXPECT_EQ(fields[2].real, 1.5);
    EXPECT_EQ(fields[3].kind, FieldKind::real);
    EXPECT_EQ(fields[3].real, 2000.0);
    EXPECT_EQ(fields[4].real, 0.25);
    EXPECT_EQ(fields[5].kind, FieldKind::empty);
    EXPECT_EQ(fields[6].kind, FieldKind::text);
    EXPECT_EQ(fields[6].text, "A;,B ");
    EXPECT_EQ(fields[7].real, 0.5);
    EXPECT_EQ(errors, Errors());
}

TEST_F(IgesRecordTest, WhatStandsBehindTheRecordDelimiterIsAComment)
{
    EXPECT_EQ(Read({"116,1.; and, more;"}).size(), 2u);
    EXPECT_EQ(errors, Errors());
}

TEST_F(IgesRecordTest, AnEmptyLastFieldCounts)
{
    EXPECT_EQ(Read({"314,1.,;"}).size(), 3u);
    EXPECT_EQ(fields[2].kind, FieldKind::empty);
    EXPECT_EQ(Read({"   ;"}).size(), 1u);
    EXPECT_EQ(errors, Errors());
}

TEST_F(IgesRecordTest, NumbersRunOnFromOneLineIntoTheNext)
{
    Read({"110,12", "34,1.2", "5E", "1,  ", "  7  ", ";"});
    ASSERT_EQ(fields.size(), 4u);
    EXPECT_EQ(fields[1].integer, 1234);
    EXPECT_EQ(fields[2].kind, FieldKind::real);
    EXPECT_EQ(fields[2].real, 12.5);
    EXPECT_EQ(fields[3].integer, 7);
    EXPECT_EQ(errors, Errors());
}

TEST_F(IgesRecordTest, TextsRunOnWithTheBlanksAtTheEndOfALine)
{
    Read({"406,1,1", "0HA, ;B ", " C  ,3H", "1;2;"});
    ASSERT_EQ(fields.size(), 4u);
    EXPECT_EQ(fields[2].text, "A, ;B  C  ");
    EXPECT_EQ(fields[3].text, "1;2");
    EXPECT_EQ(errors, Errors());
}

TEST_F(IgesRecordTest, ATextOfNoCharactersIsAText)
{
    Read({"406,0H,1;"});
    ASSERT_EQ(fields.size(), 3u);
    EXPECT_EQ(fields[1].kind, FieldKind::text);
    EXPECT_EQ(fields[1].text, "");
    EXPECT_EQ(errors, Errors());
}

TEST_F(IgesRecordTest, BytesAreTakenAsTheyAreInATextAndAreBadInANumber)
{
    Read({std::string("406,3H\0\xE9\x07,4\xE9,5;", 15)});
    ASSERT_EQ(fields.size(), 4u);
    EXPECT_EQ(fields[1].text, std::string("\0\xE9\x07", 3));
    EXPECT_EQ(fields[2].kind, FieldKind::bad);
    EXPECT_EQ(fields[3].integer, 5);
    EXPECT_EQ(errors.size(), 2u);
}

TEST_F(IgesRecordTest, OwnDelimitersMakeTheUsualOnesOrdinary)
{
    Read({"212/3Ha/b/1,5/2;x"}, {'/', 'x'});
    ASSERT_EQ(fields.size(), 4u);
    EXPECT_EQ(fields[1].text, "a/b");
    EXPECT_EQ(fields[2].kind, FieldKind::bad);
    EXPECT_EQ(fields[3].kind, FieldKind::bad);
}

TEST_F(IgesRecordTest, ReadingGoesOnBehindABadField)
{
    Read({"126,1.5X,2-3,4,HELLO,1.2.3,5;"});
    ASSERT_EQ(fields.size(), 7u);
    EXPECT_EQ(fields[1].kind, FieldKind::bad);
    EXPECT_TRUE(std::isnan(fields[1].Number()));
    EXPECT_EQ(fields[2].kind, FieldKind::bad);
    EXPECT_EQ(fields[3].integer, 4);
    EXPECT_EQ(fields[4].kind, FieldKind::bad);
    EXPECT_EQ(fields[5].kind, FieldKind::bad);
    EXPECT_EQ(fields[6].integer, 5);
    ASSERT_EQ(errors.size(), 8u);
    EXPECT_EQ(errors[0], L"Invalid character (X) found whilst reading a real number.");
    EXPECT_EQ(errors[1], L"Field 2 is bad.");
    EXPECT_EQ(errors[2], L"Invalid character (-) found whilst reading an integer number.");
    EXPECT_EQ(errors[3], L"Field 3 is bad.");
    EXPECT_EQ(errors[7], L"Field 6 is bad.");
}

TEST_F(IgesRecordTest, AZeroByteIsABadCharacterAndNoEnd)
{
    Read({std::string("110,1\0,2,3\0.5,\0,4;", 18)});
    ASSERT_EQ(fields.size(), 6u);
    EXPECT_EQ(fields[1].kind, FieldKind::bad);
    EXPECT_EQ(fields[2].integer, 2);
    EXPECT_EQ(fields[3].kind, FieldKind::bad);
    EXPECT_EQ(fields[4].kind, FieldKind::bad);
    EXPECT_EQ(fields[5].integer, 4);
}

TEST_F(IgesRecordTest, AMissingRecordDelimiterIsSaidAndTheLastFieldKept)
{
    Read({"116,1.,2.  "});
    ASSERT_EQ(fields.size(), 3u);
    EXPECT_EQ(fields[2].real, 2.0);
    EXPECT_EQ(errors, Errors{L"The record delimiter is missing."});
    Read({"116,1.,"});
    EXPECT_EQ(fields.size(), 3u);
    EXPECT_EQ(errors, Errors{L"The record delimiter is missing."});
    Read({"116"});
    EXPECT_EQ(fields.size(), 1u);
    EXPECT_EQ(errors, Errors{L"The record delimiter is missing."});
}

TEST_F(IgesRecordTest, OfATextThatRunsPastTheRecordWhatThereIsIsKept)
{
    Read({"406,1,9Habc;"});
    ASSERT_EQ(fields.size(), 3u);
    EXPECT_EQ(fields[2].kind, FieldKind::text);
    EXPECT_EQ(fields[2].text, "abc;");
    EXPECT_EQ(errors, (Errors{L"A text runs past the end of the record.", L"Field 3 is bad.",
                              L"The record delimiter is missing."}));
}

TEST_F(IgesRecordTest, ATextsCountDoesNotWrap)
{
    for (const char* count : {"4294967297", "18446744073709551617", "99999999999999999999999999"})
    {
        Read({std::string("406,") + count + "Ha,1;"});
        EXPECT_EQ(fields[1].text, "a,1;") << count;
        EXPECT_EQ(errors.size(), 3u) << count;
    }
}

TEST_F(IgesRecordTest, ATextThatIsLongerThanItsCountIsSaid)
{
    Read({"406,2Habc,7;"});
    ASSERT_EQ(fields.size(), 3u);
    EXPECT_EQ(fields[1].text, "ab");
    EXPECT_EQ(fields[2].integer, 7);
    EXPECT_EQ(errors, (Errors{L"A text is longer than its count.", L"Field 2 is bad."}));
}

TEST_F(IgesRecordTest, IntegersHave32Bits)
{
    Read({"2147483647,-2147483648,0000000000001,2147483648,-2147483649,99999999999999999999999,", "00-2147483648;"});
    ASSERT_EQ(fields.size(), 7u);
    EXPECT_EQ(fields[0].integer, 2147483647);
    EXPECT_EQ(fields[1].integer, -2147483647 - 1);
    EXPECT_EQ(fields[2].integer, 1);
    for (std::size_t i = 3; i < 6; ++i)
        EXPECT_EQ(fields[i].kind, FieldKind::bad) << i;
    // A sign may follow zeros.
    EXPECT_EQ(fields[6].kind, FieldKind::integer);
    EXPECT_EQ(fields[6].integer, -2147483647 - 1);
    EXPECT_EQ(errors.size(), 6u);
}

TEST_F(IgesRecordTest, AFileThatIssuesNoMessagesIssuesNone)
{
    messages.file.SetIssueMessages(false);
    Read({"126,1.5X,9Habc"});
    EXPECT_EQ(errors, Errors());
}

}
