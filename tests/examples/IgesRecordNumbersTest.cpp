#include "examples/iges/RecordNumbers.h"

#include "tests/support/IgesText.h"

#include <gtest/gtest.h>

#include <bit>

namespace
{

/// Reads one record after the other with the same reader.
class IgesRecordNumbersTest : public testing::Test
{
protected:
    /// Whether the reader takes the record. Then it gives the same as its fields one by one, to the bit.
    bool IsTaken(const std::string& text, const std::string& global = "")
    {
        support::IgesText part(global);
        std::vector<std::string> lines;
        for (std::size_t at = 0; at < text.size(); at += iges::Record::width)
            lines.push_back(text.substr(at, iges::Record::width));
        part.Entity(116, lines);
        const std::string bytes = part.Bytes();
        const iges::File file(bytes.data(), bytes.size(), &m_messages.file);
        const iges::Record& record = file.Records().at(0);
        if (!m_numbers.Read(record, file.FieldDelimiters()))
            return false;

        std::vector<std::uint64_t> expected;
        std::uint64_t integers = 0;
        std::uint64_t reals = 0;
        iges::RecordPtr cursor(&m_messages.file, file.FieldDelimiters(), record.Lines());
        iges::Field field;
        do
        {
            EXPECT_TRUE(cursor.ReadField(field));
            expected.push_back(std::bit_cast<std::uint64_t>(field.Number()));
            integers += field.kind == iges::FieldKind::integer;
            reals += field.kind == iges::FieldKind::real;
        } while (cursor.NextField());
        std::vector<std::uint64_t> found;
        for (const double number : m_numbers.Numbers())
            found.push_back(std::bit_cast<std::uint64_t>(number));
        EXPECT_EQ(found, expected) << text;
        EXPECT_EQ(m_numbers.Integers(), integers) << text;
        EXPECT_EQ(m_numbers.Reals(), reals) << text;
        return true;
    }

private:
    support::Messages m_messages;
    iges::RecordNumbers m_numbers;
};

std::string Repeated(const std::string& text, std::size_t count)
{
    std::string all;
    for (; count != 0; --count)
        all += text;
    return all;
}

TEST_F(IgesRecordNumbersTest, AreThoseOfTheFields)
{
    EXPECT_TRUE(IsTaken("116;"));
    EXPECT_TRUE(IsTaken("116,-0,+0,-0.,-0E5,0.,,  ,-,5;"));
    EXPECT_TRUE(IsTaken("116,2147483647,-2147483648,2147483648.,1E300;"));
    // Among reals, which are counted several at a time, and more than are read at once.
    for (const char* const field : {"7,", "-0,", ","})
    {
        for (std::size_t reals = 0; reals < 20; ++reals)
            EXPECT_TRUE(IsTaken("116," + Repeated("1.5,", reals) + field + Repeated("-0.,", reals) + field + "2.5;"));
        for (const std::size_t reals : {500U, 510U, 511U, 512U, 513U, 1023U, 1024U, 1500U})
            EXPECT_TRUE(IsTaken(field + Repeated("-2.5E-3,", reals) + field + "1.;"));
    }
    EXPECT_TRUE(IsTaken("116,1.5;"));
}

TEST_F(IgesRecordNumbersTest, RecordsOfWhatIsNoNumberAreNotTaken)
{
    EXPECT_FALSE(IsTaken("116,2147483648,1,1.5;"));
    EXPECT_FALSE(IsTaken("116,-2147483649,1,1.5;"));
    EXPECT_FALSE(IsTaken("116," + Repeated("1.5,", 600) + "1E5,99999999999," + Repeated("1.5,", 20) + "7;"));
    EXPECT_FALSE(IsTaken("116,5HHello,1;"));
    EXPECT_FALSE(IsTaken("116,1.5X;"));
    EXPECT_FALSE(IsTaken("116,1.5"));
    EXPECT_FALSE(IsTaken("116D1.5;", "1HDD1H;D"));
    EXPECT_TRUE(IsTaken("116,1.5;"));
}

}
