#include "utility/records/TextRecordPtr.h"

#include "tests/support/GuardedText.h"
#include "tests/support/LogSettings.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TextRecordTrial.h"
#include "tests/support/Thorough.h"
#include "utility/failures/Failures.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using support::GuardedText;
using support::InlineCursor;
using support::Reading;
using support::TextFormat;
using support::TextRecordModel;
using support::VirtualCursor;

using Lines = std::vector<std::string>;

/// How a format has its tests called; every test of the readers runs with both.
enum class Calls
{
    virtualOnes,
    inlined,
};

void PrintTo(Calls calls, std::ostream* stream) { *stream << (calls == Calls::virtualOnes ? "Virtual" : "Inline"); }

std::string NameOf(Calls calls) { return calls == Calls::virtualOnes ? "Virtual" : "Inline"; }

constexpr std::size_t endOfRecord = TextRecordModel::end;

/// What a read gave.
template <class Value>
struct Outcome
{
    bool result;
    Value value;
    std::size_t place;
    std::vector<std::wstring> messages;
};

/// With formats for which comma, line feed and 0 end a field, unless a test says otherwise.
class Readers
{
protected:
    Readers()
    {
        SetLogLevel(LogSeverityInformation);
        SetLogDebugMessages(true);
    }

    std::vector<std::wstring> TakeMessages()
    {
        std::vector<std::wstring> texts;
        for (const support::Logged& message : log.Take())
        {
            EXPECT_EQ(message.severity, LogSeverityError);
            texts.push_back(message.text);
        }
        return texts;
    }

    /// Calls the function with a cursor over the lines.
    template <class Function>
    auto With(Calls calls, const Lines& lines, const TextFormat& format, Function function)
    {
        if (calls == Calls::virtualOnes)
        {
            VirtualCursor cursor(&file, lines, format);
            return function(cursor);
        }
        InlineCursor cursor(&file, lines, format);
        return function(cursor);
    }

    /// One read from the start of the lines; `before` is what the variable holds until then.
    Outcome<double> ReadReal(Calls calls, const Lines& lines, const TextFormat& format = {}, double before = 4711.0)
    {
        return With(calls, lines, format,
                    [&](auto& cursor)
                    {
                        double value = before;
                        const bool result = cursor.ReadReal(value);
                        return Outcome<double>{result, value, cursor.Place(), TakeMessages()};
                    });
    }

    Outcome<int> ReadInt(Calls calls, const Lines& lines, const TextFormat& format = {}, int before = 4711)
    {
        return With(calls, lines, format,
                    [&](auto& cursor)
                    {
                        int value = before;
                        const bool result = cursor.ReadInt(value);
                        return Outcome<int>{result, value, cursor.Place(), TakeMessages()};
                    });
    }

    const support::LogSettings settings;
    support::ThreadLog log;
    CTextInputOutputFile file;
};

TextFormat Terminators(std::string terminators)
{
    TextFormat format;
    format.terminators = std::move(terminators);
    return format;
}

const TextFormat zeroIsNoTerminator = Terminators(",\n");

std::wstring Message(int number, char character = '\0') { return support::TextOf({number, character}); }

std::vector<std::wstring> NoMessages() { return {}; }

/// Equal, and of the same sign if they are zeros.
::testing::AssertionResult SameBits(double found, double expected)
{
    if (std::bit_cast<std::uint64_t>(found) == std::bit_cast<std::uint64_t>(expected))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << std::hexfloat << found << " instead of " << expected;
}

/// The text as one line, and cut in two at each place.
std::vector<Lines> EverySplit(const std::string& text)
{
    std::vector<Lines> splits{{text}};
    for (std::size_t i = 1; i < text.size(); ++i)
        splits.push_back({text.substr(0, i), text.substr(i)});
    // As many lines as there are characters.
    Lines single;
    for (const char c : text)
        single.emplace_back(1, c);
    splits.push_back(single);
    return splits;
}

/// The same place in the text as one line.
std::size_t Unsplit(std::size_t place, const Lines& lines)
{
    if (place == endOfRecord)
        return place;
    std::size_t before = 0;
    for (std::size_t i = 0, start = 0; i < lines.size(); start += lines[i].size() + 1, ++i)
        before += place > start + lines[i].size() ? 1U : 0U;
    return place - before;
}

struct RealRow
{
    const char* text; ///< in front of a comma
    bool result;
    std::optional<double> value; ///< none if the variable keeps what it held
    std::size_t place;           ///< where the cursor is left
    int message = 0;
    char character = '\0';
};

void PrintTo(const RealRow& row, std::ostream* stream) { *stream << '"' << row.text << '"'; }

class ReadRealTable : public Readers, public ::testing::TestWithParam<RealRow>
{
protected:
    void ExpectRow(const Outcome<double>& outcome, const RealRow& row, std::size_t place)
    {
        constexpr double before = 4711.0;
        EXPECT_EQ(outcome.result, row.result);
        EXPECT_TRUE(SameBits(outcome.value, row.value.value_or(before)));
        EXPECT_EQ(place, row.place);
        EXPECT_EQ(outcome.messages, row.message == 0 ? NoMessages() : std::vector{Message(row.message, row.character)});
    }
};

}

TEST_P(ReadRealTable, InFrontOfAComma)
{
    const auto& row = GetParam();
    for (const Calls calls : {Calls::virtualOnes, Calls::inlined})
    {
        SCOPED_TRACE(NameOf(calls));
        const Outcome<double> outcome = ReadReal(calls, {row.text + std::string(",8")});
        ExpectRow(outcome, row, outcome.place);
    }
}

TEST_P(ReadRealTable, SplitOverLinesAnywhere)
{
    const auto& row = GetParam();
    for (const Calls calls : {Calls::virtualOnes, Calls::inlined})
    {
        SCOPED_TRACE(NameOf(calls));
        for (const Lines& lines : EverySplit(row.text + std::string(",8")))
        {
            SCOPED_TRACE(::testing::PrintToString(lines));
            const Outcome<double> outcome = ReadReal(calls, lines);
            ExpectRow(outcome, row, Unsplit(outcome.place, lines));
        }
    }
}

TEST_P(ReadRealTable, AtTheEndOfTheRecord)
{
    const auto& row = GetParam();
    for (const Calls calls : {Calls::virtualOnes, Calls::inlined})
    {
        SCOPED_TRACE(NameOf(calls));
        const std::string text = row.text;
        const Outcome<double> outcome = ReadReal(calls, text.empty() ? Lines() : Lines{text});
        RealRow expected = row;
        if (expected.place == text.size())
            expected.place = endOfRecord;
        ExpectRow(outcome, expected, outcome.place);
    }
}

TEST_P(ReadRealTable, BehindBlanks)
{
    const auto& row = GetParam();
    for (const Calls calls : {Calls::virtualOnes, Calls::inlined})
    {
        SCOPED_TRACE(NameOf(calls));
        const Outcome<double> outcome = ReadReal(calls, {" ", "  " + std::string(row.text) + ","});
        ExpectRow(outcome, row, outcome.place - 4);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ReadRealTable,
    ::testing::Values(
        RealRow{"", true, 0.0, 0}, RealRow{"12", true, 12.0, 2}, RealRow{"-12.5", true, -12.5, 5},
        RealRow{"+.5", true, 0.5, 3}, RealRow{"5.", true, 5.0, 2}, RealRow{".", true, 0.0, 1},
        RealRow{"-", true, -0.0, 1}, RealRow{"+", true, 0.0, 1}, RealRow{"-.", true, -0.0, 2},
        RealRow{"-0", true, -0.0, 2}, RealRow{"-0.0", true, -0.0, 4}, RealRow{"00-5", true, -5.0, 4},
        RealRow{"0+5", true, 5.0, 3}, RealRow{"00-", true, -0.0, 3}, RealRow{"0-.25", true, -0.25, 5},
        RealRow{"1-5", false, {}, 1, 8303, '-'}, RealRow{"--5", false, {}, 1, 8303, '-'},
        RealRow{"+-5", false, {}, 1, 8303, '-'}, RealRow{"-0-5", false, {}, 2, 8303, '-'},
        RealRow{"10+", false, {}, 2, 8303, '+'}, RealRow{"1.5E3", true, 1500.0, 5}, RealRow{"1.5e3", true, 1500.0, 5},
        RealRow{"1.5D3", true, 1500.0, 5}, RealRow{"1.5d3", true, 1500.0, 5}, RealRow{"1.5E+3", true, 1500.0, 6},
        RealRow{"1.5E-3", true, 1.5 * 0.001, 6}, RealRow{"1.5E", true, 1.5, 4}, RealRow{"1.5E-", true, 1.5, 5},
        RealRow{"1.5E 3", true, 1500.0, 6}, RealRow{"1.5E +3", true, 1500.0, 7}, RealRow{"1.5E3 ", true, 1500.0, 6},
        RealRow{"15E2", true, 1500.0, 4}, RealRow{"E5", true, 0.0, 2}, RealRow{"-E5", true, -0.0, 3},
        RealRow{".E5", true, 0.0, 3}, RealRow{"1E400", true, 1e308, 5}, RealRow{"1E-400", true, 1e-307, 6},
        RealRow{"1E308", true, 1e308, 5}, RealRow{"1E-308", true, 1e-307, 6}, RealRow{"10E308", true, HUGE_VAL, 6},
        RealRow{"0E999", true, 0.0, 5}, RealRow{"1E4294967297", true, 10.0, 12}, // the exponent wraps like any integer
        RealRow{"1.5.5", false, 1.5, 3, 8303, '.'}, RealRow{"1.5X", false, 1.5, 3, 8303, 'X'},
        RealRow{"1.5-", false, 1.5, 3, 8303, '-'}, RealRow{"-1.5X", false, -1.5, 4, 8303, 'X'},
        RealRow{"X", false, {}, 0, 8303, 'X'}, RealRow{"12X", false, {}, 2, 8303, 'X'},
        RealRow{"1.5EX", false, 1.5, 5, 8302, 'X'}, RealRow{"1.5E3X", false, 1.5, 6, 8302, 'X'},
        RealRow{"1.5E3.", false, 1.5, 6, 8302, '.'}, RealRow{"1.5EE3", false, 1.5, 5, 8302, 'E'},
        RealRow{"12  ", true, 12.0, 4}, RealRow{"1.5  ", true, 1.5, 5}, RealRow{"-  ", true, -0.0, 3},
        RealRow{"12 E5", false, {}, 3, 8303, 'E'}, RealRow{"1.5 E5", false, 1.5, 4, 8303, 'E'},
        RealRow{"1 2", false, {}, 2, 8303, '2'}, RealRow{"1.5 2", false, 1.5, 4, 8303, '2'},
        RealRow{"- 5", false, {}, 2, 8303, '5'}, RealRow{"12\t", false, {}, 2, 8303, '\t'},
        RealRow{"12\r", false, {}, 2, 8303, '\r'}, RealRow{"inf", false, {}, 0, 8303, 'i'},
        RealRow{"0x1p3", false, {}, 1, 8303, 'x'}, RealRow{"1,5", true, 1.0, 1},
        RealRow{"\xE4", false, {}, 0, 8303, '\xE4'}, RealRow{"1.\xE4", false, 1.0, 2, 8303, '\xE4'}));

namespace
{

struct IntRow
{
    const char* text; ///< in front of a comma
    bool result;
    int value;
    std::size_t place;
    int message = 0;
    char character = '\0';
};

void PrintTo(const IntRow& row, std::ostream* stream) { *stream << '"' << row.text << '"'; }

class ReadIntTable : public Readers, public ::testing::TestWithParam<IntRow>
{
protected:
    void ExpectRow(const Outcome<int>& outcome, const IntRow& row, std::size_t place)
    {
        EXPECT_EQ(outcome.result, row.result);
        EXPECT_EQ(outcome.value, row.value);
        EXPECT_EQ(place, row.place);
        EXPECT_EQ(outcome.messages, row.message == 0 ? NoMessages() : std::vector{Message(row.message, row.character)});
    }
};

}

TEST_P(ReadIntTable, InFrontOfAComma)
{
    const auto& row = GetParam();
    for (const Calls calls : {Calls::virtualOnes, Calls::inlined})
    {
        SCOPED_TRACE(NameOf(calls));
        const Outcome<int> outcome = ReadInt(calls, {row.text + std::string(",8")});
        ExpectRow(outcome, row, outcome.place);
    }
}

TEST_P(ReadIntTable, SplitOverLinesAnywhere)
{
    const auto& row = GetParam();
    for (const Calls calls : {Calls::virtualOnes, Calls::inlined})
    {
        SCOPED_TRACE(NameOf(calls));
        for (const Lines& lines : EverySplit(row.text + std::string(",8")))
        {
            SCOPED_TRACE(::testing::PrintToString(lines));
            const Outcome<int> outcome = ReadInt(calls, lines);
            ExpectRow(outcome, row, Unsplit(outcome.place, lines));
        }
    }
}

TEST_P(ReadIntTable, AtTheEndOfTheRecord)
{
    const auto& row = GetParam();
    for (const Calls calls : {Calls::virtualOnes, Calls::inlined})
    {
        SCOPED_TRACE(NameOf(calls));
        const std::string text = row.text;
        const Outcome<int> outcome = ReadInt(calls, text.empty() ? Lines() : Lines{text});
        IntRow expected = row;
        if (expected.place == text.size())
            expected.place = endOfRecord;
        ExpectRow(outcome, expected, outcome.place);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ReadIntTable,
    ::testing::Values(IntRow{"", true, 0, 0}, IntRow{"12", true, 12, 2}, IntRow{"-12", true, -12, 3},
                      IntRow{"+12", true, 12, 3}, IntRow{"-", true, 0, 1}, IntRow{"00-5", true, -5, 4},
                      IntRow{"00+5", true, 5, 4}, IntRow{"5-5", false, 5, 2, 8302, '-'},
                      IntRow{"-5-5", false, -5, 3, 8302, '-'}, IntRow{"--5", false, 0, 2, 8302, '-'},
                      IntRow{"-+5", false, 0, 2, 8302, '+'}, IntRow{"2147483647", true, INT_MAX, 10},
                      IntRow{"-2147483648", true, INT_MIN, 11}, IntRow{"2147483648", true, INT_MIN, 10},
                      IntRow{"4294967297", true, 1, 10}, IntRow{"-4294967297", true, -1, 11},
                      IntRow{"4294967296-5", true, -5, 12}, // wrapped to 0: a sign again
                      IntRow{"-4294967296-5", false, 0, 12, 8302, '-'}, IntRow{"12  ", true, 12, 4},
                      IntRow{"  ", true, 0, 2}, IntRow{"1 2", false, 1, 3, 8302, '2'},
                      IntRow{"- 5", false, 0, 3, 8302, '5'}, IntRow{"1.5", false, 1, 2, 8302, '.'},
                      IntRow{"1E5", false, 1, 2, 8302, 'E'}, IntRow{"X", false, 0, 1, 8302, 'X'},
                      IntRow{"1X2", false, 1, 2, 8302, 'X'}, IntRow{"12\t", false, 12, 3, 8302, '\t'},
                      IntRow{"\xE4", false, 0, 1, 8302, '\xE4'}));

// ---------------------------------------------------------------------------------------------------------------------

namespace
{

class CTextRecordPtrTest : public Readers, public ::testing::TestWithParam<Calls>
{
protected:
    Outcome<double> ReadReal(const Lines& lines, const TextFormat& format = {})
    {
        return Readers::ReadReal(GetParam(), lines, format);
    }
    Outcome<int> ReadInt(const Lines& lines, const TextFormat& format = {})
    {
        return Readers::ReadInt(GetParam(), lines, format);
    }
    template <class Function>
    auto With(const Lines& lines, Function function)
    {
        return Readers::With(GetParam(), lines, {}, function);
    }
};

using ReadRealTest = CTextRecordPtrTest;
using ReadIntTest = CTextRecordPtrTest;
using ReadCharTest = CTextRecordPtrTest;

const auto bothCalls = ::testing::Values(Calls::virtualOnes, Calls::inlined);
const auto nameOfCalls = [](const auto& test) { return NameOf(test.param); };

}

INSTANTIATE_TEST_SUITE_P(Cursors, CTextRecordPtrTest, bothCalls, nameOfCalls);
INSTANTIATE_TEST_SUITE_P(Cursors, ReadCharTest, bothCalls, nameOfCalls);
INSTANTIATE_TEST_SUITE_P(Cursors, ReadIntTest, bothCalls, nameOfCalls);
INSTANTIATE_TEST_SUITE_P(Cursors, ReadRealTest, bothCalls, nameOfCalls);

TEST_P(CTextRecordPtrTest, KeepsTheFileItIsGiven)
{
    With({"1"}, [this](auto& cursor) { EXPECT_EQ(cursor.InputFile(), &file); });
}

TEST_P(CTextRecordPtrTest, IsBornEmptyAndResetPutsItAtTheEnd)
{
    With({},
         [](auto& cursor)
         {
             EXPECT_TRUE(cursor.Lines().empty());
             cursor.Reset();
             EXPECT_TRUE(cursor.IsEndOfRecord());
             EXPECT_EQ(cursor.GetCurrentChar(), '\0');
             cursor.AdvancePtr();
             EXPECT_TRUE(cursor.IsEndOfRecord());
         });
}

TEST_P(CTextRecordPtrTest, HasOneCharacterUnderThreeNamesAndThePlaceUnderAFourth)
{
    With({"ab"},
         [](auto& cursor)
         {
             cursor.AdvancePtr();
             EXPECT_EQ(cursor.GetCurrentChar(), 'b');
             EXPECT_EQ(*cursor, 'b');
             EXPECT_EQ(static_cast<char>(cursor), 'b');
             EXPECT_EQ(static_cast<const char*>(cursor), cursor.Lines().front().Last());
         });
}

TEST_P(CTextRecordPtrTest, StepsVisitTheLastCharacterOfEachLineAndGoOnInTheNext)
{
    With({"ab", "c", "de"},
         [](auto& cursor)
         {
             std::string visited;
             for (; !cursor.IsEndOfRecord(); cursor.AdvancePtr())
                 visited += *cursor;
             EXPECT_EQ(visited, "abcde");
             cursor.AdvancePtr();
             EXPECT_TRUE(cursor.IsEndOfRecord());
         });
}

TEST_P(CTextRecordPtrTest, LinesWithoutACharacterArePassed)
{
    With({"", "a", "", "", "bc", ""},
         [](auto& cursor)
         {
             EXPECT_EQ(cursor.Lines().size(), 6u);
             std::string visited;
             for (; !cursor.IsEndOfRecord(); cursor.AdvancePtr())
                 visited += *cursor;
             EXPECT_EQ(visited, "abc");
         });
}

TEST_P(CTextRecordPtrTest, RecordOfNothingButLinesWithoutACharacterIsAtItsEnd)
{
    With({"", ""}, [](auto& cursor) { EXPECT_TRUE(cursor.IsEndOfRecord()); });
    // The whole of a file that is closed or empty.
    With({},
         [](auto& cursor)
         {
             const char* const none = nullptr;
             cursor.Add(none, reinterpret_cast<const char*>(std::uintptr_t{0} - 1));
             EXPECT_TRUE(cursor.IsEndOfRecord());
         });
}

TEST_P(CTextRecordPtrTest, ZeroByteInTheTextIsNoEndOfTheRecord)
{
    With({std::string("a\0b", 3)},
         [](auto& cursor)
         {
             cursor.AdvancePtr();
             EXPECT_EQ(cursor.GetCurrentChar(), '\0');
             EXPECT_FALSE(cursor.IsEndOfRecord());
             cursor.AdvancePtr();
             EXPECT_EQ(cursor.GetCurrentChar(), 'b');
             cursor.AdvancePtr();
             EXPECT_TRUE(cursor.IsEndOfRecord());
         });
}

TEST_P(CTextRecordPtrTest, AddAfterReadingHasBegunRewinds)
{
    With({"12,34"},
         [](auto& cursor)
         {
             int value = 0;
             EXPECT_TRUE(cursor.ReadInt(value));
             cursor.AdvancePtr();
             const std::string more = ",56";
             cursor.Add(more.data(), more.data() + 2);
             EXPECT_TRUE(cursor.ReadInt(value));
             EXPECT_EQ(value, 12);
             cursor.AdvancePtr();
             EXPECT_TRUE(cursor.ReadInt(value));
             EXPECT_EQ(value, 34);
             cursor.AdvancePtr();
             EXPECT_TRUE(cursor.ReadInt(value));
             EXPECT_EQ(value, 56);
             EXPECT_TRUE(cursor.IsEndOfRecord());
             cursor.Reset();
             EXPECT_EQ(*cursor, '1');
         });
}

TEST_P(CTextRecordPtrTest, SameLineTwiceIsReadTwice)
{
    With({"12"},
         [](auto& cursor)
         {
             const TextLine line = cursor.Lines().front();
             cursor.Add(line.First(), line.Last());
             int value = 0;
             EXPECT_TRUE(cursor.ReadInt(value));
             EXPECT_EQ(value, 1212);
         });
}

TEST_P(CTextRecordPtrTest, SkipBlanksPassesBlanksAndNothingElseAcrossLines)
{
    With({"  ", " \t "},
         [](auto& cursor)
         {
             cursor.CTextRecordPtr::SkipBlanks();
             EXPECT_EQ(*cursor, '\t');
             cursor.CTextRecordPtr::SkipBlanks();
             EXPECT_EQ(*cursor, '\t');
             cursor.AdvancePtr();
             cursor.CTextRecordPtr::SkipBlanks();
             EXPECT_TRUE(cursor.IsEndOfRecord());
         });
}

TEST_P(CTextRecordPtrTest, DAndEOfEitherCaseAreTheExponentLetters)
{
    With({"1"},
         [](auto& cursor)
         {
             std::string letters;
             for (int c = CHAR_MIN; c <= CHAR_MAX; ++c)
             {
                 if (cursor.CTextRecordPtr::IsExponentChar(static_cast<char>(c)))
                     letters += static_cast<char>(c);
             }
             EXPECT_EQ(letters, "DEde");
         });
}

TEST_P(CTextRecordPtrTest, SkipFieldPassesTheRestOfABadFieldAndNothingBehindIt)
{
    With({"1,x2", "4,3"},
         [](auto& cursor)
         {
             double sum = 0.0;
             for (double value = 0.0; !cursor.IsEndOfRecord(); cursor.AdvancePtr())
             {
                 if (cursor.ReadReal(value))
                     sum += value;
                 else
                     cursor.SkipField();
             }
             EXPECT_EQ(sum, 4.0);
         });
}

TEST_P(CTextRecordPtrTest, SkipFieldStaysOnATerminatorAndStopsAtTheEnd)
{
    With({",,abc"},
         [](auto& cursor)
         {
             cursor.SkipField();
             EXPECT_EQ(cursor.Place(), 0u);
             cursor.AdvancePtr();
             cursor.AdvancePtr();
             cursor.SkipField();
             EXPECT_TRUE(cursor.IsEndOfRecord());
             cursor.SkipField();
             EXPECT_TRUE(cursor.IsEndOfRecord());
         });
    Readers::With(GetParam(), {"abc"}, zeroIsNoTerminator,
                  [](auto& cursor)
                  {
                      cursor.SkipField();
                      EXPECT_TRUE(cursor.IsEndOfRecord());
                  });
}

TEST(CTextRecordPtrContract, TellsLineAndColumnInTheFile)
{
    const support::TemporaryFolder folder;
    CTextInputOutputFile file;
    ASSERT_TRUE(file.Open(folder.File("part", "1,2\n3,4x,5\n6\n")));
    VirtualCursor cursor(&file, {}, {});
    EXPECT_EQ(cursor.Position(), TextPosition());
    cursor.Add(file.DataPtr() + 4, file.DataPtr() + 8);
    EXPECT_EQ(cursor.Position(), (TextPosition{2, 1}));
    cursor.AdvancePtr();
    cursor.AdvancePtr();
    double value = 0.0;
    EXPECT_FALSE(cursor.ReadReal(value));
    EXPECT_EQ(cursor.Position(), (TextPosition{2, 4}));
    cursor.AdvancePtr();
    cursor.AdvancePtr();
    EXPECT_TRUE(cursor.IsEndOfRecord());
    EXPECT_EQ(cursor.Position(), (TextPosition{2, 6}));
}

TEST(CTextRecordPtrContract, HasNoLineAndColumnInTextThatIsNotTheFiles)
{
    CTextInputOutputFile file;
    EXPECT_EQ(VirtualCursor(&file, {"abc"}, {}).Position(), TextPosition());
    EXPECT_EQ(VirtualCursor(nullptr, {"abc"}, {}).Position(), TextPosition());
}

TEST_P(CTextRecordPtrTest, SkipLinePassesARunOfLineEndsBlankLinesIncluded)
{
    With({"a\r\n\r\nb"},
         [](auto& cursor)
         {
             cursor.SkipLine();
             EXPECT_EQ(*cursor, 'b');
         });
    With({"a\r", "\n", "\nb"},
         [](auto& cursor)
         {
             cursor.SkipLine();
             EXPECT_EQ(*cursor, 'b');
         });
}

TEST_P(CTextRecordPtrTest, SkipLineStopsAtTheEndOfTheRecordBehindALineEnd)
{
    With({"a\r\n"},
         [](auto& cursor)
         {
             cursor.SkipLine();
             EXPECT_TRUE(cursor.IsEndOfRecord());
         });
}

TEST_P(CTextRecordPtrTest, PlaceServesAFailureOfTheCallersOwn)
{
    With({"1X,"},
         [](auto& cursor)
         {
             double value = 0.0;
             ASSERT_FALSE(cursor.ReadReal(value));
             const char* const place = cursor;
             EXPECT_EQ(*place, 'X');
         });
}

TEST(CTextRecordPtrContract, WithoutAFileBadInputIsNotReported)
{
    const std::string text = "x,y";
    VirtualCursor cursor(nullptr, {text}, {});
    double real = 0.0;
    EXPECT_FALSE(cursor.ReadReal(real));
    EXPECT_EQ(cursor.GetCurrentChar(), 'x');
    int integer = 0;
    EXPECT_FALSE(cursor.ReadInt(integer));
    EXPECT_EQ(cursor.GetCurrentChar(), ',');
}

TEST(CTextRecordPtrContract, IsAbstractAndCannotBeCopied)
{
    static_assert(std::is_abstract_v<CTextRecordPtr>);
    static_assert(std::is_base_of_v<CTextRecord, CTextRecordPtr>);
    static_assert(std::has_virtual_destructor_v<CTextRecordPtr>);
    static_assert(!std::is_copy_constructible_v<VirtualCursor>);
    static_assert(!std::is_copy_assignable_v<VirtualCursor>);
}

// ---------------------------------------------------------------------------------------------------------------------

TEST_P(ReadCharTest, SkipsBlanksAcrossLinesAndSteps)
{
    With({"  ", " ab"},
         [](auto& cursor)
         {
             char c = '?';
             EXPECT_TRUE(cursor.ReadChar(c));
             EXPECT_EQ(c, 'a');
             EXPECT_EQ(*cursor, 'b');
         });
}

TEST_P(ReadCharTest, LeavesATerminatorWhereItIs)
{
    With({" ,a"},
         [](auto& cursor)
         {
             char c = '?';
             EXPECT_FALSE(cursor.ReadChar(c));
             EXPECT_FALSE(cursor.ReadChar(c));
             EXPECT_EQ(c, '?');
             EXPECT_EQ(*cursor, ',');
         });
}

TEST_P(ReadCharTest, GivesFalseAtTheEndWithoutAMessage)
{
    Readers::With(GetParam(), {"  "}, zeroIsNoTerminator,
                  [this](auto& cursor)
                  {
                      char c = '?';
                      EXPECT_FALSE(cursor.ReadChar(c));
                      EXPECT_EQ(c, '?');
                      EXPECT_TRUE(cursor.IsEndOfRecord());
                      EXPECT_EQ(TakeMessages(), NoMessages());
                  });
}

TEST_P(ReadCharTest, GivesAZeroByteThatIsNoTerminator)
{
    Readers::With(GetParam(), {std::string("\0a", 2)}, zeroIsNoTerminator,
                  [](auto& cursor)
                  {
                      char c = '?';
                      EXPECT_TRUE(cursor.ReadChar(c));
                      EXPECT_EQ(c, '\0');
                      EXPECT_EQ(*cursor, 'a');
                  });
}

// ---------------------------------------------------------------------------------------------------------------------

TEST_P(ReadIntTest, EndOfTheRecordIsReportedIfZeroIsNoTerminator)
{
    for (const Lines& lines : {Lines{}, Lines{"12"}, Lines{"12  "}, Lines{"-", "  "}})
    {
        SCOPED_TRACE(::testing::PrintToString(lines));
        const Outcome<int> outcome = ReadInt(lines, zeroIsNoTerminator);
        EXPECT_FALSE(outcome.result);
        EXPECT_EQ(outcome.place, endOfRecord);
        ASSERT_EQ(outcome.messages.size(), 1U);
    }
    EXPECT_EQ(ReadInt({}, zeroIsNoTerminator).messages, std::vector{Message(8300)});
    EXPECT_EQ(ReadInt({}, zeroIsNoTerminator).value, 0);
    EXPECT_EQ(ReadInt({"12"}, zeroIsNoTerminator).messages, std::vector{Message(8300)});
    EXPECT_EQ(ReadInt({"12"}, zeroIsNoTerminator).value, 12);
    // The test for the end comes before the blanks, so behind those it is a bad character.
    EXPECT_EQ(ReadInt({"12  "}, zeroIsNoTerminator).messages, std::vector{Message(8302, '\0')});
}

TEST_P(ReadIntTest, ZeroByteInTheTextIsABadCharacterIfItIsNoTerminator)
{
    const Outcome<int> outcome = ReadInt({std::string("12\0,", 4)}, zeroIsNoTerminator);
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.value, 12);
    EXPECT_EQ(outcome.place, 3U);
    EXPECT_EQ(outcome.messages, std::vector{Message(8302, '\0')});
    EXPECT_TRUE(ReadInt({std::string("12\0,", 4)}).result);
}

TEST_P(ReadIntTest, FailureLeavesTheCursorBehindTheBadCharacterInTheNextLine)
{
    const Lines lines{"5X", "7,"};
    const Outcome<int> outcome = ReadInt(lines);
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.place, 3U);
}

TEST_P(ReadIntTest, NothingElseIsADigit)
{
    for (int code = 1; code < 256; ++code)
    {
        const char c = static_cast<char>(code);
        if (std::string_view(" +-,\n").find(c) != std::string_view::npos)
            continue;
        const bool isDigit = c >= '0' && c <= '9';
        const Outcome<int> first = ReadInt({{c, ','}});
        EXPECT_EQ(first.result, isDigit) << code;
        EXPECT_EQ(first.value, isDigit ? c - '0' : 0) << code;
        const Outcome<int> second = ReadInt({{'1', c, ','}});
        EXPECT_EQ(second.result, isDigit) << code;
        EXPECT_EQ(second.value, isDigit ? 10 + c - '0' : 1) << code;
    }
}

TEST_P(ReadIntTest, DigitsMayEndFields)
{
    const Outcome<int> outcome = ReadInt({"1253"}, Terminators("5"));
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(outcome.value, 12);
    EXPECT_EQ(outcome.place, 2U);
}

TEST_P(ReadIntTest, AsksAboutEachCharacterOnceInOrderAlsoBehindABadOne)
{
    With({" 12X3"},
         [](auto& cursor)
         {
             int value = 0;
             cursor.ReadInt(value);
             using support::Question;
             const std::vector<Question> expected{{Question::blanks, '\0', 0},    {Question::terminator, '1', 1},
                                                  {Question::terminator, '2', 2}, {Question::terminator, 'X', 3},
                                                  {Question::blanks, '\0', 3},    {Question::terminator, 'X', 3},
                                                  {Question::terminator, '3', 4}};
             EXPECT_EQ(cursor.questions, expected);
         });
}

// ---------------------------------------------------------------------------------------------------------------------

TEST_P(ReadRealTest, EndOfTheRecordIsReportedIfZeroIsNoTerminator)
{
    for (const Lines& lines : {Lines{}, Lines{"12"}, Lines{"-"}, Lines{"12", "5"}})
    {
        SCOPED_TRACE(::testing::PrintToString(lines));
        const Outcome<double> outcome = ReadReal(lines, zeroIsNoTerminator);
        EXPECT_FALSE(outcome.result);
        EXPECT_EQ(outcome.value, 4711.0);
        EXPECT_EQ(outcome.place, endOfRecord);
        EXPECT_EQ(outcome.messages, std::vector{Message(8301)});
    }
}

TEST_P(ReadRealTest, EndOfTheRecordInTheFractionIsABadCharacterOfZero)
{
    for (const Lines& lines : {Lines{"1."}, Lines{"1.5"}, Lines{"1.5  "}})
    {
        SCOPED_TRACE(::testing::PrintToString(lines));
        const Outcome<double> outcome = ReadReal(lines, zeroIsNoTerminator);
        EXPECT_FALSE(outcome.result);
        EXPECT_EQ(outcome.value, lines[0] == "1." ? 1.0 : 1.5);
        EXPECT_EQ(outcome.place, endOfRecord);
        EXPECT_EQ(outcome.messages, std::vector{Message(8303, '\0')});
    }
}

TEST_P(ReadRealTest, EndOfTheRecordBehindBlanksIsABadCharacterOfZero)
{
    const Outcome<double> outcome = ReadReal({"12  "}, zeroIsNoTerminator);
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.value, 4711.0);
    EXPECT_EQ(outcome.messages, std::vector{Message(8303, '\0')});
}

TEST_P(ReadRealTest, EndOfTheRecordInTheExponentIsReportedAsThatOfAnInteger)
{
    const Outcome<double> outcome = ReadReal({"1.5E3"}, zeroIsNoTerminator);
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.value, 1.5);
    EXPECT_EQ(outcome.messages, std::vector{Message(8300)});
}

TEST_P(ReadRealTest, ZeroByteInTheTextIsNoEnd)
{
    const Outcome<double> outcome = ReadReal({std::string("12\0,", 4)}, zeroIsNoTerminator);
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.messages, std::vector{Message(8303, '\0')});
    EXPECT_EQ(outcome.place, 2U);
}

TEST_P(ReadRealTest, PointThatEndsFieldsDeliberatelyGoesOnWithTheNumberBehindAWholePart)
{
    const TextFormat format = Terminators(".,");
    Outcome<double> outcome = ReadReal({"12.5,"}, format);
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(outcome.value, 12.5);
    EXPECT_EQ(outcome.place, 4U);
    outcome = ReadReal({"12  .5,"}, format);
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(outcome.value, 12.5);
    outcome = ReadReal({".5.5,"}, format);
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(outcome.value, 0.5);
    EXPECT_EQ(outcome.place, 2U);
    outcome = ReadReal({"-12", ".5", "E1,"}, format);
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(outcome.value, -125.0);
}

TEST_P(ReadRealTest, ExponentLetterThatEndsFieldsDeliberatelyIntroducesTheExponent)
{
    for (const char* const text : {"12E2,", "12.E2,", "12  E2,", "E2,"})
    {
        SCOPED_TRACE(text);
        const Outcome<double> outcome = ReadReal({text}, Terminators("E,"));
        EXPECT_TRUE(outcome.result);
        EXPECT_EQ(outcome.value, text[0] == 'E' ? 0.0 : 1200.0);
        EXPECT_EQ(outcome.place, std::string(text).size() - 1);
    }
    // In the fraction the character in front of the blanks counts.
    const Outcome<double> outcome = ReadReal({"12.5  E2,"}, Terminators("E,"));
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(outcome.value, 12.5);
    EXPECT_EQ(outcome.place, 6U);
}

TEST_P(ReadRealTest, DigitsMayEndFields)
{
    const TextFormat format = Terminators("5,");
    EXPECT_EQ(ReadReal({"1253,"}, format).value, 12.0);
    EXPECT_EQ(ReadReal({"5,"}, format).value, 0.0);
    EXPECT_EQ(ReadReal({"1.253,"}, format).value, 1.2);
    EXPECT_EQ(ReadReal({"1.5,"}, format).place, 2U);
    EXPECT_EQ(ReadReal({"1.2E15,"}, format).value, 12.0);
    EXPECT_EQ(ReadReal({"1.2E15,"}, format).place, 5U);
}

TEST_P(ReadRealTest, FormatDecidesWhatABlankIs)
{
    TextFormat format;
    format.blanks = " \t_";
    EXPECT_EQ(ReadReal({"\t _12_\t,"}, format).value, 12.0);
    EXPECT_TRUE(ReadReal({"\t _12.5_\t,"}, format).result);
    EXPECT_EQ(ReadReal({"1.5E_2,"}, format).value, 150.0);
    EXPECT_EQ(ReadInt({"_12_,"}, format).value, 12);
    format.blanks = "";
    EXPECT_EQ(ReadReal({"12 ,"}, format).messages, std::vector{Message(8303, ' ')});
    EXPECT_EQ(ReadReal({" 12,"}, format).messages, std::vector{Message(8303, ' ')});
    // Digits skipped as blanks are no digits of the number, however long that is.
    format.blanks = "9";
    EXPECT_EQ(ReadReal({"991299,"}, format).messages, NoMessages());
    EXPECT_EQ(ReadReal({"991299,"}, format).value, 1299.0);
    EXPECT_EQ(ReadReal({"99121212121212121212121212121212,"}, format).value, 121212121212121212121212121212.0);
}

TEST_P(ReadRealTest, FormatDecidesWhatIntroducesAnExponent)
{
    TextFormat format;
    format.exponentLetters = "Q^";
    EXPECT_EQ(ReadReal({"1.5Q2,"}, format).value, 150.0);
    EXPECT_EQ(ReadReal({"15^-1,"}, format).value, 1.5);
    EXPECT_EQ(ReadReal({"1.5E2,"}, format).messages, std::vector{Message(8303, 'E')});
    // Even a sign, where it cannot be a sign, and a blank.
    format.exponentLetters = "-+ ";
    EXPECT_EQ(ReadReal({"-1.5-2,"}, format).value, -150.0);
    EXPECT_EQ(ReadReal({"15+2,"}, format).value, 1500.0);
    EXPECT_EQ(ReadReal({"15 2,"}, format).value, 1500.0);
}

TEST_P(ReadRealTest, AsksAboutEachCharacterOnceInOrderWithTheCursorOnIt)
{
    With({" -1", "2.5E3"},
         [](auto& cursor)
         {
             double value = 0.0;
             cursor.ReadReal(value);
             using support::Question;
             const std::vector<Question> expected{
                 {Question::blanks, '\0', 0},    {Question::terminator, '-', 1},
                 {Question::terminator, '1', 2}, {Question::terminator, '2', 4},
                 {Question::terminator, '.', 5}, {Question::terminator, '5', 6},
                 {Question::terminator, 'E', 7}, {Question::exponent, 'E', 7},
                 {Question::exponent, 'E', 7},   {Question::blanks, '\0', 8},
                 {Question::terminator, '3', 8}, {Question::terminator, '\0', endOfRecord}};
             EXPECT_EQ(cursor.questions, expected);
         });
}

TEST_P(ReadRealTest, ValueIsTheSumOfTwoPartsAndNotCorrectlyRounded)
{
    const auto chain = [](const std::string& digits)
    {
        double sum = 0.0;
        for (const char c : digits)
            sum = sum * 10.0 + (c - '0');
        return sum;
    };
    int rounded = 0;
    for (const char* const text :
         {"9007199254740991", "9007199254740992", "9007199254740993", "90071992547409935", "12345678901234567",
          "123456789012345678", "1234567890123456789", "12345678901234567890", "99999999999999999999999999",
          "000000000000000000000000000012", "9999999999999999999", "5000000000000000000000000000000000001"})
    {
        const std::string digits = text;
        SCOPED_TRACE(digits);
        EXPECT_TRUE(SameBits(ReadReal({digits + ","}).value, chain(digits)));
        EXPECT_TRUE(SameBits(ReadReal({"-" + digits + ","}).value, -chain(digits)));
        const double fraction = chain(digits) / pow10(static_cast<int>(digits.size()));
        EXPECT_TRUE(SameBits(ReadReal({"." + digits + ","}).value, fraction));
        EXPECT_TRUE(SameBits(ReadReal({"1" + digits + "." + digits + ","}).value, fraction + chain("1" + digits)));
        EXPECT_TRUE(SameBits(ReadReal({"1." + digits + "E5,"}).value, 1e5 * (fraction + 1.0)));
        rounded += fraction != std::strtod(("." + digits).c_str(), nullptr);
    }
    EXPECT_GT(rounded, 0);
}

TEST_P(ReadRealTest, NumberOfAThousandDigitsIsStillOne)
{
    const std::string zeros(1000, '0');
    EXPECT_TRUE(SameBits(ReadReal({zeros + "-5,"}).value, -5.0));
    EXPECT_TRUE(SameBits(ReadReal({"1" + zeros + ","}).value, HUGE_VAL));
    // The power is infinite from 309 digits on.
    EXPECT_TRUE(SameBits(ReadReal({"." + zeros + "5,"}).value, 0.0));
    EXPECT_TRUE(std::isnan(ReadReal({".5" + zeros + ","}).value));
}

TEST_P(ReadRealTest, NothingOutsideTheLinesIsRead)
{
    for (const std::string text : {"1",
                                   "-",
                                   ".",
                                   "1.",
                                   "12",
                                   "-12.5",
                                   "1234567",
                                   "12345678",
                                   "123456789",
                                   "1.5E3",
                                   "-1234567.1234567E-12",
                                   "1234567890123456789",
                                   "123456789012345678901234567890",
                                   "12.",
                                   "1.5E",
                                   "1.5E+",
                                   "12 ",
                                   "12.5 ",
                                   "   ",
                                   "1.5X",
                                   "X",
                                   "12345678901234567.5",
                                   "123456789012345678.5",
                                   "0.1234567890123456789"})
    {
        SCOPED_TRACE(text);
        for (const auto touches : {GuardedText::Touches::pageBehind, GuardedText::Touches::pageInFront})
        {
            const GuardedText guarded(text, touches);
            const auto read = [&](auto& cursor)
            {
                cursor.Add(guarded.First(), guarded.Last());
                double real = 4711.0;
                cursor.ReadReal(real);
                int integer = 0;
                cursor.Reset();
                cursor.ReadInt(integer);
                cursor.Reset();
                char c = '\0';
                while (cursor.ReadChar(c))
                    continue;
                return real;
            };
            EXPECT_TRUE(SameBits(With({}, read), ReadReal({text}).value));
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------

namespace
{

class AgainstTheModel : public CTextRecordPtrTest
{
protected:
    AgainstTheModel() { format.terminators = std::string(",\0", 2); }

    void Compare(const Lines& lines, const std::vector<Reading>& readings)
    {
        const std::string difference = GetParam() == Calls::virtualOnes
                                           ? trial.Difference<VirtualCursor>(lines, format, readings)
                                           : trial.Difference<InlineCursor>(lines, format, readings);
        ASSERT_EQ(difference, "") << ::testing::PrintToString(lines);
    }

    /// The text with each '|' made a line end.
    static Lines LinesOf(const std::string& text)
    {
        Lines lines(1);
        for (const char c : text)
        {
            if (c == '|')
                lines.emplace_back();
            else
                lines.back() += c;
        }
        std::erase(lines, "");
        return lines;
    }

    /// Every text of the length over the alphabet.
    template <class Function>
    static void ForEachText(std::size_t length, const std::string& alphabet, Function function)
    {
        std::string text(length, alphabet[0]);
        std::vector<std::size_t> letters(length);
        while (!::testing::Test::HasFatalFailure())
        {
            function(text);
            std::size_t i = 0;
            while (i < length && ++letters[i] == alphabet.size())
            {
                letters[i] = 0;
                text[i++] = alphabet[0];
            }
            if (i == length)
                return;
            text[i] = alphabet[letters[i]];
        }
    }

    TextFormat format;
    support::TextRecordTrial trial;
};

const std::string alphabet = "059+-.ED ,X|";

}

INSTANTIATE_TEST_SUITE_P(Cursors, AgainstTheModel, bothCalls, nameOfCalls);

TEST_P(AgainstTheModel, EveryShortText)
{
    // Of all with five characters and less, every twelfth has fewer than five.
    const std::size_t longest = support::Thorough() ? 5 : 4;
    for (std::size_t length = 0; length <= longest; ++length)
    {
        ForEachText(length, alphabet,
                    [this](const std::string& text)
                    {
                        const Lines lines = LinesOf(text);
                        Compare(lines, {Reading::real, Reading::integer});
                        Compare(lines, {Reading::integer, Reading::real});
                    });
    }
}

TEST_P(AgainstTheModel, EveryShortTextWithZeroNoTerminator)
{
    format.terminators = ",";
    for (std::size_t length = 0; length <= 4; ++length)
    {
        ForEachText(length, alphabet,
                    [this](const std::string& text)
                    {
                        const Lines lines = LinesOf(text);
                        Compare(lines, {Reading::real, Reading::character, Reading::real});
                        Compare(lines, {Reading::integer});
                    });
    }
}

TEST_P(AgainstTheModel, EveryShortTextWithPerverseFormats)
{
    for (const char* const terminators : {".", "E", "5", "-", " ", "X"})
    {
        for (const char* const exponents : {"E", "-", ". ", "5,"})
        {
            format.terminators = terminators;
            format.exponentLetters = exponents;
            format.blanks = exponents[0] == 'E' ? " X" : " ";
            for (std::size_t length = 0; length <= 3; ++length)
            {
                ForEachText(length, alphabet,
                            [this](const std::string& text) {
                                Compare(LinesOf(text), {Reading::real, Reading::integer, Reading::real});
                            });
            }
        }
    }
}

TEST_P(AgainstTheModel, RandomTextsOfRandomLength)
{
    std::mt19937 random(19'990'731);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    const std::string digits = "0123456789";
    const int texts = support::Cases(200'000);
    for (int i = 0; i < texts && !HasFatalFailure(); ++i)
    {
        // Mostly numbers, of which some characters are others or missing.
        std::string text;
        const std::size_t fields = 1 + below(3);
        for (std::size_t field = 0; field < fields; ++field)
        {
            const auto addDigits = [&](std::size_t limit)
            {
                for (std::size_t left = below(limit); left != 0; --left)
                    text += digits[below(10)];
            };
            const std::size_t longest = below(8) == 0 ? 30 : 9;
            text += std::vector<std::string>{"", "", "-", "+", " ", "  -", "00"}[below(7)];
            addDigits(longest);
            if (below(4) != 0)
            {
                text += '.';
                addDigits(longest);
            }
            if (below(3) == 0)
            {
                text += std::vector<std::string>{"E", "D+", "e-", "d ", "E -"}[below(5)];
                addDigits(5);
            }
            text += std::vector<std::string>{"", " ", "   "}[below(3)];
            text += std::vector<std::string>{",", ",", "\n", "", std::string(1, '\0')}[below(5)];
        }
        for (std::size_t change = below(4); change > 1 && !text.empty(); --change)
            text[below(text.size())] = (alphabet + std::string("\xE4\0\n1.", 5))[below(alphabet.size() + 5)];
        for (std::size_t split = below(3); split != 0; --split)
            text.insert(below(text.size() + 1), 1, '|');

        std::vector<Reading> readings;
        for (std::size_t left = 1 + below(5); left != 0; --left)
            readings.push_back(static_cast<Reading>(below(4)));
        readings.insert(readings.begin(), Reading::real);
        format.terminators = below(4) == 0 ? std::string(",\n") : std::string(",\n\0", 3);
        Compare(LinesOf(text), readings);
    }
}

// ---------------------------------------------------------------------------------------------------------------------

namespace
{

/// How many doubles apart two finite values of the same sign are.
std::int64_t UlpsApart(double a, double b)
{
    return std::abs(std::bit_cast<std::int64_t>(std::fabs(a)) - std::bit_cast<std::int64_t>(std::fabs(b)));
}

/// The numbers with a point in a text, each as it stands, FORTRAN's exponents included.
std::vector<std::string> RealsIn(const std::string& text)
{
    std::vector<std::string> reals;
    const auto isDigit = [&text](std::size_t i) { return i < text.size() && text[i] >= '0' && text[i] <= '9'; };
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (!isDigit(i) || (i != 0 && std::string("0123456789.").find(text[i - 1]) != std::string::npos))
            continue;
        const std::size_t start = i != 0 && (text[i - 1] == '-' || text[i - 1] == '+') ? i - 1 : i;
        std::size_t end = i;
        while (isDigit(end))
            ++end;
        if (end == text.size() || text[end] != '.')
            continue;
        ++end;
        while (isDigit(end))
            ++end;
        if (end < text.size() && std::string("DdEe").find(text[end]) != std::string::npos)
        {
            const std::size_t sign =
                end + 1 < text.size() && std::string("+-").find(text[end + 1]) != std::string::npos;
            if (isDigit(end + 1 + sign))
            {
                end += 1 + sign;
                while (isDigit(end))
                    ++end;
            }
        }
        reals.push_back(text.substr(start, end - start));
        i = end - 1;
    }
    return reals;
}

class RealsOfFiles : public CTextRecordPtrTest
{
protected:
    /// Reads each number in front of a comma and compares with the C library's.
    void ExpectCloseToStrtod(const std::vector<std::string>& reals)
    {
        for (const std::string& text : reals)
        {
            const Outcome<double> outcome = ReadReal({text + ","});
            std::string plain = text;
            for (char& c : plain)
                c = c == 'D' || c == 'd' ? 'E' : c;
            const double expected = std::strtod(plain.c_str(), nullptr);
            ASSERT_TRUE(outcome.result) << text;
            ASSERT_EQ(outcome.place, text.size()) << text;
            ASSERT_EQ(std::signbit(outcome.value), std::signbit(expected)) << text;
            ASSERT_LE(UlpsApart(outcome.value, expected), 4) << text << " is read as " << outcome.value;
        }
    }
};

}

INSTANTIATE_TEST_SUITE_P(Cursors, RealsOfFiles, bothCalls, nameOfCalls);

TEST_P(RealsOfFiles, SampleLinesAreCloseToTheStandardConversion)
{
    // Satellite ephemerides, molecule energies, thermodynamic coefficients, stiffness: one line of each kind of writer.
    const std::vector<std::string> reals =
        RealsIn("    0.424818000000D+06-0.135287336889D-10 0.588268041611D-03\n"
                " 8.54512953E+04 4.80150373E+00-3.21537724E-04 7.33792245E-07    3\n"
                " -4.325581E-02      4.325581E-02      0.000000E+00\n"
                " BODY10_RADII = ( 696000.  696000. 2.2380E-15 )\n"
                " 0.123456789012345678 12345678901234567890.5 1.7976931348623157e308\n");
    ASSERT_EQ(reals.size(), 16U);
    ExpectCloseToStrtod(reals);
}

TEST_P(RealsOfFiles, RealFilesAreCloseToTheStandardConversion)
{
    const std::filesystem::path folder = std::filesystem::path(UTILITY_TEST_DATA) / "text";
    if (std::string(UTILITY_TEST_DATA).empty())
        GTEST_SKIP() << "No folder of real files is given (UTILITY_TEST_DATA): only the samples are read";
    ASSERT_TRUE(std::filesystem::is_directory(folder)) << folder;
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
    {
        SCOPED_TRACE(entry.path().string());
        std::ifstream stream(entry.path(), std::ios::binary);
        const std::vector<std::string> reals = RealsIn({std::istreambuf_iterator<char>(stream), {}});
        ExpectCloseToStrtod(reals);
        count += reals.size();
    }
    RecordProperty("reals", static_cast<int>(count));
    EXPECT_GT(count, 1000U);
}
