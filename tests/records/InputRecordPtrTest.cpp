#include "utility/records/InputRecordPtr.h"

#include "tests/support/SlowInputCursor.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/InputOutputFile.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

/// Every byte tells its place.
class CInputRecordPtrTest : public ::testing::Test
{
protected:
    CInputRecordPtrTest()
    {
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<unsigned char>(i);
    }

    /// Where the cursor stands, -1 at the end of the record.
    static int Place(const CInputRecordPtr& cursor)
    {
        return cursor.IsEndOfRecord() ? -1 : static_cast<unsigned char>(cursor.GetCurrentByte());
    }

    void Add(CInputRecordPtr& cursor, int first, int last) { cursor.Add(&bytes[0] + first, &bytes[0] + last); }

    std::array<unsigned char, 256> bytes;
};

}

TEST_F(CInputRecordPtrTest, KeepsTheFileItIsGiven)
{
    CInputOutputFile file;
    const CInputRecordPtr cursor(&file);
    EXPECT_EQ(cursor.InputFile(), &file);
    const CInputRecordPtr withoutFile(nullptr);
    EXPECT_EQ(withoutFile.InputFile(), nullptr);
}

TEST_F(CInputRecordPtrTest, IsBornEmpty)
{
    const CInputRecordPtr cursor(nullptr);
    EXPECT_TRUE(cursor.Lines().empty());
}

TEST_F(CInputRecordPtrTest, RecordWithoutLinesIsAtTheEndAfterReset)
{
    CInputRecordPtr cursor(nullptr);
    cursor.Reset();
    EXPECT_TRUE(cursor.IsEndOfRecord());
    char value = 'x';
    EXPECT_FALSE(cursor.ReadChar(value));
    cursor.AdvancePtr();
    cursor.AdvancePtr(3);
    EXPECT_TRUE(cursor.IsEndOfRecord());
}

TEST_F(CInputRecordPtrTest, AddRewindsToTheFirstByteOfTheFirstLine)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 10, 14);
    EXPECT_EQ(Place(cursor), 10);
    cursor.AdvancePtr(2);
    Add(cursor, 20, 24);
    EXPECT_EQ(Place(cursor), 10);
    cursor.AdvancePtr(100);
    EXPECT_TRUE(cursor.IsEndOfRecord());
    Add(cursor, 30, 34);
    EXPECT_EQ(Place(cursor), 10);
    EXPECT_EQ(cursor.Lines().size(), 3u);
}

TEST_F(CInputRecordPtrTest, ResetRewinds)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 10, 14);
    Add(cursor, 20, 24);
    cursor.AdvancePtr(6);
    EXPECT_EQ(Place(cursor), 22);
    cursor.Reset();
    EXPECT_EQ(Place(cursor), 10);
}

TEST_F(CInputRecordPtrTest, StepsAcrossTheLinesAsOneStream)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 10, 12);
    Add(cursor, 30, 31);
    Add(cursor, 20, 23);
    std::vector<int> places;
    for (; !cursor.IsEndOfRecord(); cursor.AdvancePtr())
        places.push_back(Place(cursor));
    EXPECT_EQ(places, (std::vector<int>{10, 11, 30, 20, 21, 22}));
}

TEST_F(CInputRecordPtrTest, StepAtTheEndOfTheRecordDoesNothing)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 10, 12);
    cursor.AdvancePtr(2);
    ASSERT_TRUE(cursor.IsEndOfRecord());
    cursor.AdvancePtr();
    cursor.AdvancePtr(1000);
    EXPECT_TRUE(cursor.IsEndOfRecord());
}

TEST_F(CInputRecordPtrTest, AdvanceByZeroDoesNothing)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 10, 12);
    cursor.AdvancePtr(0);
    EXPECT_EQ(Place(cursor), 10);
}

// The count is unsigned. These are some 10^13 steps: they can only be done by not taking them.
TEST_F(CInputRecordPtrTest, NegativeAdvanceGoesToTheEndOfTheRecordAtOnce)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 10, 12);
    Add(cursor, 20, 24);
    for (int i = 0; i < 1000; ++i)
    {
        cursor.Reset();
        cursor.AdvancePtr(-1);
        ASSERT_TRUE(cursor.IsEndOfRecord());
        cursor.AdvancePtr(-1);
        ASSERT_TRUE(cursor.IsEndOfRecord());
        cursor.AdvancePtr(INT_MIN);
        ASSERT_TRUE(cursor.IsEndOfRecord());
    }
}

TEST_F(CInputRecordPtrTest, CopyStandsAtTheStartOfTheRecord)
{
    CInputOutputFile file;
    CInputRecordPtr cursor(&file);
    Add(cursor, 10, 12);
    Add(cursor, 20, 24);
    cursor.AdvancePtr(3);
    CInputRecordPtr copy(cursor);
    EXPECT_EQ(Place(copy), 10);
    EXPECT_EQ(Place(cursor), 21);
    EXPECT_EQ(copy.InputFile(), &file);
    EXPECT_EQ(copy.Lines(), cursor.Lines());
    copy.AdvancePtr(2);
    EXPECT_EQ(Place(copy), 20);
    EXPECT_EQ(Place(cursor), 21);
}

TEST_F(CInputRecordPtrTest, CopyOutlivesItsSource)
{
    auto cursor = std::make_unique<CInputRecordPtr>(nullptr);
    Add(*cursor, 10, 12);
    Add(*cursor, 20, 22);
    CInputRecordPtr copy(*cursor);
    cursor.reset();
    copy.AdvancePtr(3);
    EXPECT_EQ(Place(copy), 21);
}

TEST_F(CInputRecordPtrTest, CopyOfAnEmptyRecordIsAtTheEnd)
{
    const CInputRecordPtr cursor(nullptr);
    const CInputRecordPtr copy(cursor);
    EXPECT_TRUE(copy.IsEndOfRecord());
}

TEST_F(CInputRecordPtrTest, IsAPlainClass) { EXPECT_FALSE(std::is_polymorphic_v<CInputRecordPtr>); }

TEST_F(CInputRecordPtrTest, ReadFourBytesOfARecordOfFour)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 0x10, 0x14);
    int value = 0;
    EXPECT_TRUE(cursor.ReadInt(value));
    EXPECT_EQ(value, 0x13121110);
    EXPECT_TRUE(cursor.IsEndOfRecord());
}

TEST_F(CInputRecordPtrTest, ReadCharOnTheLastByteOfALineMovesToTheNextLine)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 10, 12);
    Add(cursor, 20, 22);
    cursor.AdvancePtr();
    char value = 0;
    EXPECT_TRUE(cursor.ReadChar(value));
    EXPECT_EQ(value, 11);
    EXPECT_EQ(Place(cursor), 20);
}

namespace
{

struct ReadCase
{
    const char* name;
    int size;
    bool (*read)(CInputRecordPtr& cursor, void* destination);
};

template <class Value, bool (CInputRecordPtr::*operation)(Value&)>
bool ReadValue(CInputRecordPtr& cursor, void* destination)
{
    Value value;
    std::memcpy(&value, destination, sizeof(value));
    const bool result = (cursor.*operation)(value);
    std::memcpy(destination, &value, sizeof(value));
    return result;
}

template <int size>
bool ReadBytes(CInputRecordPtr& cursor, void* destination)
{
    return cursor.Read(destination, size);
}

const ReadCase readCases[] = {
    {"ReadChar", 1, ReadValue<char, &CInputRecordPtr::ReadChar>},
    {"ReadInt", 4, ReadValue<int, &CInputRecordPtr::ReadInt>},
    {"ReadFloat", 4, ReadValue<float, &CInputRecordPtr::ReadFloat>},
    {"ReadReal", 8, ReadValue<double, &CInputRecordPtr::ReadReal>},
    {"ReadOne", 1, ReadBytes<1>},
    {"ReadTwo", 2, ReadBytes<2>},
    {"ReadSeventeen", 17, ReadBytes<17>},
};

/// Each value read, seen from a line that ends at 100 and is followed in the record by one that starts at 200.
class CInputRecordPtrReadTest : public CInputRecordPtrTest, public ::testing::WithParamInterface<ReadCase>
{
protected:
    CInputRecordPtrReadTest() : cursor(nullptr)
    {
        destination.fill(0xEE);
        Add(cursor, 50, 100);
        Add(cursor, 200, 250);
    }

    void StandAt(int place)
    {
        cursor.Reset();
        cursor.AdvancePtr(place - 50);
    }

    bool Read() { return GetParam().read(cursor, destination.data()); }

    void ExpectBytesFrom(int place)
    {
        const auto size = static_cast<std::size_t>(GetParam().size);
        for (std::size_t i = 0; i < size; ++i)
            EXPECT_EQ(destination[i], place + static_cast<int>(i));
        EXPECT_EQ(destination[size], 0xEE);
    }

    CInputRecordPtr cursor;
    std::array<unsigned char, 32> destination;
};

std::string NameOf(const ::testing::TestParamInfo<ReadCase>& info) { return info.param.name; }

}

INSTANTIATE_TEST_SUITE_P(Widths, CInputRecordPtrReadTest, ::testing::ValuesIn(readCases), NameOf);

TEST_P(CInputRecordPtrReadTest, CopiesTheBytesInTheirOrderAndStepsOverThem)
{
    ASSERT_TRUE(Read());
    ExpectBytesFrom(50);
    EXPECT_EQ(Place(cursor), 50 + GetParam().size);
    // Not aligned either.
    StandAt(51);
    ASSERT_TRUE(Read());
    ExpectBytesFrom(51);
}

TEST_P(CInputRecordPtrReadTest, ValueThatEndsTheLineMovesToTheNextLine)
{
    StandAt(100 - GetParam().size);
    ASSERT_TRUE(Read());
    ExpectBytesFrom(100 - GetParam().size);
    EXPECT_EQ(Place(cursor), 200);
}

TEST_P(CInputRecordPtrReadTest, BoundIsDeliberatelyOneByteWiderThanTheSteps)
{
    if (GetParam().size == 1)
        return; // a cursor never stands on the last pointer
    StandAt(101 - GetParam().size);
    ASSERT_TRUE(Read());
    ExpectBytesFrom(101 - GetParam().size);
    // The last step is one of the next line.
    EXPECT_EQ(Place(cursor), 201);
}

TEST_P(CInputRecordPtrReadTest, BytesOfTwoLinesAreNeverJoined)
{
    for (int place = 102 - GetParam().size; place < 100; ++place)
    {
        StandAt(place);
        EXPECT_FALSE(Read()) << place;
        EXPECT_EQ(Place(cursor), place);
        EXPECT_EQ(destination[0], 0xEE);
    }
}

TEST_P(CInputRecordPtrReadTest, ReadAtTheEndOfTheRecordFails)
{
    cursor.AdvancePtr(100);
    ASSERT_TRUE(cursor.IsEndOfRecord());
    EXPECT_FALSE(Read());
    EXPECT_EQ(destination[0], 0xEE);
    EXPECT_TRUE(cursor.IsEndOfRecord());
}

TEST_F(CInputRecordPtrTest, ThreeBytesLeftInTheOnlyLineAreEnoughForAnInt)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 0x10, 0x14);
    cursor.AdvancePtr();
    int value = 0;
    EXPECT_TRUE(cursor.ReadInt(value));
    EXPECT_EQ(value, 0x14131211);
    // The fourth step is lost at the end of the record.
    EXPECT_TRUE(cursor.IsEndOfRecord());
}

TEST_F(CInputRecordPtrTest, TwoBytesLeftInTheOnlyLineAreNotEnoughForAnInt)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 0x10, 0x14);
    cursor.AdvancePtr(2);
    int value = 77;
    EXPECT_FALSE(cursor.ReadInt(value));
    EXPECT_EQ(value, 77);
    EXPECT_EQ(Place(cursor), 0x12);
}

TEST_F(CInputRecordPtrTest, ValueAcrossAdjoiningLinesIsReadByTheWideBound)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 0x10, 0x13);
    Add(cursor, 0x13, 0x18);
    int value = 0;
    EXPECT_TRUE(cursor.ReadInt(value));
    EXPECT_EQ(value, 0x13121110);
    EXPECT_EQ(Place(cursor), 0x14);
}

TEST_F(CInputRecordPtrTest, ReadOfNothingSucceedsAndMovesNothing)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 10, 12);
    unsigned char byte = 0xEE;
    EXPECT_TRUE(cursor.Read(&byte, 0));
    EXPECT_EQ(byte, 0xEE);
    EXPECT_EQ(Place(cursor), 10);
    EXPECT_TRUE(cursor.Read(nullptr, 0));
}

TEST_F(CInputRecordPtrTest, ReadOfNothingAtTheEndOfTheRecordFails)
{
    CInputRecordPtr cursor(nullptr);
    cursor.Reset();
    EXPECT_FALSE(cursor.Read(nullptr, 0));
}

TEST_F(CInputRecordPtrTest, FloatAndIntAreTheSameFourBytes)
{
    const unsigned char one[] = {0x00, 0x00, 0x80, 0x3F};
    CInputRecordPtr cursor(nullptr);
    cursor.Add(one, one + 4);
    float real = 0;
    EXPECT_TRUE(cursor.ReadFloat(real));
    EXPECT_EQ(real, 1.0F);
    cursor.Reset();
    int integer = 0;
    EXPECT_TRUE(cursor.ReadInt(integer));
    EXPECT_EQ(integer, 0x3F800000);
}

TEST_F(CInputRecordPtrTest, ReadIntDoesNothingAboutSigns)
{
    const unsigned char minusTwo[] = {0xFE, 0xFF, 0xFF, 0xFF};
    CInputRecordPtr cursor(nullptr);
    cursor.Add(minusTwo, minusTwo + 4);
    int value = 0;
    EXPECT_TRUE(cursor.ReadInt(value));
    EXPECT_EQ(value, -2);
}

TEST_F(CInputRecordPtrTest, ReadRealTakesEightLittleEndianBytes)
{
    const unsigned char third[] = {0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0xD5, 0x3F};
    CInputRecordPtr cursor(nullptr);
    cursor.Add(third, third + 8);
    double value = 0;
    EXPECT_TRUE(cursor.ReadReal(value));
    EXPECT_EQ(value, 1.0 / 3.0);
}

TEST_F(CInputRecordPtrTest, SignallingNansArriveUnaltered)
{
    const unsigned char nans[] = {0x01, 0x00, 0xA0, 0x7F, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF4, 0xFF};
    CInputRecordPtr cursor(nullptr);
    cursor.Add(nans, nans + sizeof(nans));
    float single = 0;
    double real = 0;
    ASSERT_TRUE(cursor.ReadFloat(single));
    ASSERT_TRUE(cursor.ReadReal(real));
    EXPECT_EQ(std::memcmp(&single, nans, 4), 0);
    EXPECT_EQ(std::memcmp(&real, nans + 4, 8), 0);
}

TEST_F(CInputRecordPtrTest, EmptyLineIsRunPast)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 10, 10);
    Add(cursor, 20, 24);
    EXPECT_EQ(Place(cursor), 10);
    cursor.AdvancePtr();
    EXPECT_EQ(Place(cursor), 11);
    cursor.AdvancePtr(100);
    EXPECT_EQ(Place(cursor), 111);
}

TEST_F(CInputRecordPtrTest, EmptyLineBehindAnotherIsRunPastToo)
{
    CInputRecordPtr cursor(nullptr);
    Add(cursor, 10, 12);
    Add(cursor, 50, 50);
    Add(cursor, 20, 24);
    cursor.AdvancePtr(2);
    EXPECT_EQ(Place(cursor), 50);
    cursor.AdvancePtr(7);
    EXPECT_EQ(Place(cursor), 57);
}

TEST_F(CInputRecordPtrTest, SeveralCursorsReadTheSameBytes)
{
    CInputRecordPtr one(nullptr);
    CInputRecordPtr other(nullptr);
    Add(one, 10, 20);
    Add(other, 10, 20);
    char value = 0;
    EXPECT_TRUE(one.ReadChar(value));
    EXPECT_TRUE(one.ReadChar(value));
    EXPECT_EQ(Place(one), 12);
    EXPECT_EQ(Place(other), 10);
}

// Records of any shape, any sequence of calls: the cursor is at every moment where single steps would have led.
TEST_F(CInputRecordPtrTest, AgreesWithTakingOneStepAtATime)
{
    std::mt19937 random(20240229);
    const auto upTo = [&random](int limit)
    { return static_cast<int>(random() % static_cast<unsigned int>(limit + 1)); };
    int fits = 0;
    int failures = 0;
    int ends = 0;
    for (int record = 0; record < 4000; ++record)
    {
        CInputRecordPtr cursor(nullptr);
        support::SlowInputCursor slow;
        cursor.Reset();
        const bool withEmptyLines = upTo(9) == 0;
        int adjoining = upTo(40);
        const auto addLine = [&]
        {
            const int first = upTo(2) == 0 ? upTo(80) : adjoining;
            adjoining = first + (withEmptyLines && upTo(2) == 0 ? 0 : 1 + upTo(11));
            cursor.Add(&bytes[0] + first, &bytes[0] + adjoining);
            slow.Add(&bytes[0] + first, &bytes[0] + adjoining);
            adjoining %= 100;
        };
        for (int lines = upTo(5); lines > 0; --lines)
            addLine();
        for (int call = 0; call < 40; ++call)
        {
            unsigned char got[24];
            unsigned char expected[24];
            std::memset(got, 0xEE, sizeof(got));
            std::memset(expected, 0xEE, sizeof(expected));
            bool result = true;
            bool slowResult = true;
            switch (upTo(9))
            {
            case 0:
                cursor.AdvancePtr();
                slow.Step();
                break;
            case 1:
            {
                // One that has run past an empty line would never end.
                const int count = upTo(9) == 0 && !withEmptyLines ? static_cast<int>(random() | 0x40000000U) : upTo(20);
                cursor.AdvancePtr(count);
                slow.Advance(count);
                break;
            }
            case 2:
                cursor.Reset();
                slow.Reset();
                break;
            case 3:
                if (upTo(9) == 0)
                    addLine();
                break;
            default:
            {
                const ReadCase& read = readCases[static_cast<std::size_t>(upTo(std::size(readCases) - 1))];
                result = read.read(cursor, got);
                slowResult = slow.Read(expected, read.size);
                ++(result ? fits : failures);
            }
            }
            ASSERT_EQ(result, slowResult);
            ASSERT_EQ(std::memcmp(got, expected, sizeof(got)), 0);
            ASSERT_EQ(cursor.IsEndOfRecord(), slow.Current() == nullptr);
            if (cursor.IsEndOfRecord())
                ++ends;
            else if (slow.Current() - &bytes[0] < 200)
                ASSERT_EQ(Place(cursor), slow.Current() - &bytes[0]);
            else
            {
                cursor.Reset();
                slow.Reset();
            }
        }
    }
    // All of it was met, and not only once.
    EXPECT_GT(fits, 10000);
    EXPECT_GT(failures, 10000);
    EXPECT_GT(ends, 10000);
}

namespace
{

class CInputRecordPtrOnAFileTest : public ::testing::TestWithParam<std::size_t>
{
};

}

// Such a line is followed by nothing where the file fills its last page.
INSTANTIATE_TEST_SUITE_P(LengthsInBytes, CInputRecordPtrOnAFileTest,
                         ::testing::Values(16, 4095, 4096, 4097, 8192, 65535, 65536, 131072));

TEST_P(CInputRecordPtrOnAFileTest, ByteBehindALineThatEndsTheFileCanBeRead)
{
    const support::TemporaryFolder folder;
    CInputOutputFile file(folder.File("bytes", std::string(GetParam() - 3, '.') + "\x11\x12\x13"));
    ASSERT_TRUE(file.IsValid());
    const auto* const bytes = static_cast<const unsigned char*>(file.GetBase());
    CInputRecordPtr cursor(&file);
    cursor.Add(bytes, bytes + file.GetFileSize());
    cursor.AdvancePtr(static_cast<int>(GetParam()) - 3);
    int value = 0;
    ASSERT_TRUE(cursor.ReadInt(value));
    EXPECT_EQ(value & 0xFFFFFF, 0x131211);
    EXPECT_TRUE(cursor.IsEndOfRecord());
}
