#include "utility/records/DelimitedTextRecordPtr.h"

#include "tests/support/ForcedMethod.h"
#include "tests/support/GuardedText.h"
#include "tests/support/LogSettings.h"
#include "tests/support/MethodTest.h"
#include "tests/support/RunTrial.h"
#include "tests/support/Thorough.h"
#include "utility/records/internal/RunMethods.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <climits>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{

using support::GuardedText;
using support::RunCase;
using support::RunTrial;
using support::SlowDelimitedCursor;
using utility::detail::RunMethod;
using utility::detail::runMethods;

/// A cursor without a file over one line.
class OneLine : public CDelimitedTextRecordPtr
{
public:
    explicit OneLine(std::string_view text, std::string_view ends = ",;") : CDelimitedTextRecordPtr(nullptr, ends)
    {
        Add(text.data(), text.data() + text.size() - 1);
    }
};

/// With a method by its name.
class RunMethodTest : public support::MethodTest<runMethods>
{
protected:
    void SetUp() override
    {
        MethodTest::SetUp();
        if (m_method == nullptr)
            return;
        m_forced.emplace(runMethods, *m_method);
        SetLogDebugMessages(true);
    }

    void ExpectSame(const RunCase& each)
    {
        const std::string reals = m_trial.Difference<double>(each);
        const std::string integers = m_trial.Difference<int>(each);
        if (!reals.empty() || !integers.empty())
        {
            std::string text;
            for (const std::string_view line : each.lines)
                text += '"' + std::string(line) + "\" ";
            FAIL() << "reals: " << reals.substr(0, 500) << "\nintegers: " << integers.substr(0, 500) << "\nof "
                   << text.substr(0, 500);
        }
    }

    /// Gives how many there are, those in folders of this one included.
    std::size_t ExpectSameOfFilesIn(const std::filesystem::path& folder)
    {
        const std::size_t most = support::Thorough() ? 20'000 : 1'500;
        std::size_t files = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        {
            if (!entry.is_regular_file())
                continue;
            SCOPED_TRACE(entry.path().string());
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::string text{std::istreambuf_iterator<char>(stream), {}};
            // As a program would read the columns of numbers, and as it should not.
            std::vector<std::string_view> columns;
            std::vector<std::string_view> lines;
            for (std::string_view rest = text; !rest.empty() && lines.size() < most;)
            {
                const std::string_view line = rest.substr(0, rest.find('\n'));
                rest.remove_prefix(std::min(line.size() + 1, rest.size()));
                lines.push_back(line);
                columns.push_back(line.substr(0, 64));
            }
            ExpectSame({columns});
            ExpectSame({lines, ",;\r", ',', 33});
            ++files;
        }
        return files;
    }

    std::mt19937 m_random{20'000'077};

private:
    support::LogSettings m_settings;
    std::optional<support::ForcedMethod<RunMethod>> m_forced;
    RunTrial m_trial;
};

/// Made of what numbers are made of, and now and then of something else.
class FieldMaker
{
public:
    explicit FieldMaker(std::mt19937& random) : m_random(random) {}

    std::string Next()
    {
        switch (Below(12))
        {
        case 0:
            return Usual() + std::string(Below(4), ' ');
        case 1:
            return Odd();
        case 2:
            return std::string(Below(40), ' ') + Usual();
        default:
            return Usual();
        }
    }

    std::size_t Below(std::size_t limit) { return m_random() % limit; }

private:
    std::string Digits(std::size_t count)
    {
        std::string digits;
        while (digits.size() < count)
            digits += static_cast<char>('0' + (Below(8) == 0 ? (Below(2) == 0 ? 0 : 9) : Below(10)));
        return digits;
    }

    std::string Usual()
    {
        const char* const signs[] = {"", "", "-", "+"};
        std::string field = signs[Below(4)] + Digits(Below(6) == 0 ? Below(22) : Below(6));
        if (Below(3) != 0)
            field += '.' + Digits(Below(3) == 0 ? Below(24) : Below(8));
        if (Below(3) == 0)
            field += "DEde"[Below(4)] + std::string(signs[Below(4)]) + Digits(Below(10) == 0 ? Below(12) : Below(3));
        return field;
    }

    std::string Odd()
    {
        constexpr std::string_view characters =
            "0123456789+-.. DEde000--  \0x/:\xB0\xAD\xFF\t\r"; // the last ones no part
        std::string field;
        for (std::size_t left = Below(20); left != 0; --left)
            field += characters[Below(characters.size())];
        return field;
    }

    std::mt19937& m_random;
};

/// A text in lines of such lengths.
std::vector<std::string_view> Cut(std::string_view text, const std::function<std::size_t()>& length)
{
    std::vector<std::string_view> lines;
    while (!text.empty())
    {
        lines.push_back(text.substr(0, std::max<std::size_t>(length(), 1)));
        text.remove_prefix(lines.back().size());
    }
    return lines;
}

}

INSTANTIATE_TEST_SUITE_P(By, RunMethodTest, testing::Values("512 bits", "256 bits", "128 bits", "single reads"),
                         support::NameOfMethod);

TEST(DelimitedTextRecordPtrTest, EndsAreTheCharactersThatItIsGiven)
{
    OneLine cursor("1|2:3,4|", "|:");
    int value = 0;
    EXPECT_TRUE(cursor.ReadInt(value));
    EXPECT_EQ(value, 1);
    EXPECT_EQ(*cursor, '|');
    cursor.AdvancePtr();
    EXPECT_TRUE(cursor.ReadInt(value));
    EXPECT_EQ(value, 2);
    EXPECT_EQ(*cursor, ':');
    cursor.AdvancePtr();
    EXPECT_FALSE(cursor.ReadInt(value));
    EXPECT_FALSE(cursor.IsTerminator(','));
}

TEST(DelimitedTextRecordPtrTest, RecordsEndIsAnEndAndAZeroOnlyIfItIsOneOfThem)
{
    const std::string text("5\0006", 3);
    double value = 0.0;
    OneLine without(text);
    EXPECT_FALSE(without.ReadReal(value));
    OneLine with(text, std::string_view(",\0", 2));
    EXPECT_TRUE(with.ReadReal(value));
    EXPECT_EQ(value, 5.0);
    with.AdvancePtr();
    EXPECT_TRUE(with.ReadReal(value));
    EXPECT_EQ(value, 6.0);
    EXPECT_TRUE(with.IsEndOfRecord());
}

TEST(DelimitedTextRecordPtrTest, WithoutEndsTheRecordIsOneField)
{
    OneLine cursor("12.5", "");
    std::vector<double> values(3, -1.0);
    std::size_t count = 9;
    EXPECT_TRUE(cursor.ReadReals(values, ',', count));
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(values, (std::vector<double>{12.5, -1.0, -1.0}));
    EXPECT_TRUE(cursor.IsEndOfRecord());
}

TEST_P(RunMethodTest, RunEndsOnWhatIsNoSeparator)
{
    OneLine cursor("1,-2.5,3D2;4,");
    std::vector<double> values(9, -1.0);
    std::size_t count = 0;
    EXPECT_TRUE(cursor.ReadReals(values, ',', count));
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(values, (std::vector<double>{1.0, -2.5, 300.0, -1.0, -1.0, -1.0, -1.0, -1.0, -1.0}));
    EXPECT_EQ(*cursor, ';');
    // From there on an empty field, as a single read gives it.
    EXPECT_TRUE(cursor.ReadReals(values, ',', count));
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(values[0], 0.0);
    EXPECT_EQ(*cursor, ';');
}

TEST_P(RunMethodTest, RunEndsOnTheSeparatorWhereThereAreNoMoreValues)
{
    OneLine cursor("1,2,3,4");
    std::vector<int> values(2);
    std::size_t count = 0;
    EXPECT_TRUE(cursor.ReadInts(values, ',', count));
    EXPECT_EQ(values, (std::vector<int>{1, 2}));
    EXPECT_EQ(static_cast<const char*>(cursor) - cursor.Lines().front().First(), 3);
    EXPECT_TRUE(cursor.ReadInts({}, ',', count));
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(static_cast<const char*>(cursor) - cursor.Lines().front().First(), 3);
}

TEST_P(RunMethodTest, FormsTellWhatTheFieldsLookLike)
{
    OneLine cursor("7, ,-7,7.,.5,7E1, d ,+,,0");
    std::vector<double> values(10);
    std::vector<TextFieldForm> forms(10);
    std::size_t count = 0;
    EXPECT_TRUE(cursor.ReadReals(values, ',', count, forms));
    EXPECT_EQ(count, 10U);
    using enum TextFieldForm;
    EXPECT_EQ(forms, (std::vector<TextFieldForm>{whole, empty, whole, real, real, real, real, whole, empty, whole}));
}

TEST_P(RunMethodTest, BadFieldEndsTheRunWithItsMessage)
{
    ExpectSame({{"1,2X,3;"}});
    ExpectSame({{"1,2.5.5,3;"}});
    ExpectSame({{"1,1-5,3;"}});
    ExpectSame({{"1,1 2,3;"}});
    ExpectSame({{"1,1.5EX,3;"}});
    ExpectSame({{"1,1E5 E,3;"}});
    ExpectSame({{"5HHello,1;"}});
}

TEST_P(RunMethodTest, EachNumberOfTheTableIsWhatASingleReadGives)
{
    const char* const numbers[] = {"",
                                   "12",
                                   "-12.5",
                                   "+.5",
                                   "5.",
                                   ".",
                                   "-",
                                   "00-5",
                                   "1-5",
                                   "--5",
                                   "1.5E3",
                                   "1.5e3",
                                   "1.5D3",
                                   "1.5d3",
                                   "1.5E+3",
                                   "1.5E-3",
                                   "1.5E",
                                   "1.5E 3",
                                   "E5",
                                   "1E400",
                                   "1E-400",
                                   "1.5.5",
                                   "1.5X",
                                   "1.5EX",
                                   "12   ",
                                   "12 E5",
                                   "1 2",
                                   "-0",
                                   "-.",
                                   "-E5",
                                   "-0.0",
                                   "+",
                                   "1E+",
                                   "1E-",
                                   "1E-0",
                                   "1E+308",
                                   "1E-307",
                                   "1E-308",
                                   "1E309",
                                   "9E99999",
                                   "1E0005",
                                   "1E00005",
                                   "1.E5",
                                   "-.5D-3",
                                   "1E5.5",
                                   "0-",
                                   "0+5",
                                   "00+5.5",
                                   "-0-5",
                                   "5-",
                                   "5 -",
                                   "- 5",
                                   "1,5",
                                   ";",
                                   "1.5;",
                                   "1E- 5",
                                   "1D5 ",
                                   "1.5 ",
                                   " 1.5",
                                   "/",
                                   ":",
                                   "1/",
                                   "1:",
                                   "1./",
                                   "1.:",
                                   "1E/",
                                   "1E:",
                                   "\x80",
                                   "1\xB0",
                                   "1.\xB9",
                                   "1E\xB1",
                                   "\xAD"
                                   "5",
                                   "4294967297",
                                   "-2147483648",
                                   "2147483648",
                                   "99999999999999999999"};
    for (const char* const number : numbers)
    {
        const std::string first = std::string(number) + ",7,8;";
        const std::string middle = "3," + std::string(number) + ",7;";
        const std::string last = "3,4," + std::string(number);
        for (const std::string& text : {first, middle, last})
        {
            ExpectSame({{text}});
            ExpectSame({{text}, ",;", ',', 2});
            ExpectSame({{text}, ",;", ';'});
        }
    }
}

TEST_P(RunMethodTest, AnyNumberOfDigitsIsWhatASingleReadGives)
{
    for (std::size_t whole = 0; whole <= 36; ++whole)
    {
        for (std::size_t fraction = 0; fraction <= 36; ++fraction)
        {
            for (const char digit : {'0', '1', '9'})
            {
                const std::string number = std::string(whole, digit) + '.' + std::string(fraction, digit);
                const std::string text = number + ",-" + number + ",   " + number + "E-12," + number + " ," + number;
                ExpectSame({{text}});
            }
        }
    }
    // On both sides of the most that all bits of a double hold.
    for (const char* const number : {"9007199254740991", "9007199254740992", "9007199254740993", "9007199199999999",
                                     "9007199200000000", "9999999999999999"})
    {
        const std::string text = std::string(number) + ",0." + number + ",1." + number + "E3,-" + number + '.' + number;
        ExpectSame({{text}});
    }
}

TEST(RunMethodsTest, FirstThatTheProcessorHasIsInUse) { support::ExpectFastestInUse(runMethods); }

TEST_P(RunMethodTest, UsualNumbersNeedNoReadOfTheirOwn)
{
    using namespace utility::detail;
    const RunMethod& method = runMethods.Used();
    if (method.find == nullptr)
        return;
    const std::string_view reals =
        "1,-2,+3.5,.5,5.,,    7,1.5E3,1.5e-3,1D+12,-1d5,123456789012345.1234567890123456,"
        "                                        -0.5E-07,1E0123,-.1234567890123456789,0.0001234567890123456E-3,;";
    const std::string_view integers = "1,-2,+3,,    7,1234567890123456,                                        -12;";
    const RunEnds ends{{',', ';'}, 2};
    for (const bool isReal : {true, false})
    {
        RunText text{};
        RunFields fields;
        fields.Clear();
        const std::string_view numbers = isReal ? reals : integers;
        method.find(text, numbers.copy(text.text, RunText::capacity), ends, fields);
        EXPECT_TRUE(fields.endsRun);
        EXPECT_EQ(fields.count, isReal ? 17U : 7U);
        std::vector<double> realValues(20);
        std::vector<int> integerValues(20);
        EXPECT_EQ(isReal ? method.readReals(text, fields, 0, 20, realValues.data(), nullptr)
                         : method.readInts(text, fields, 0, 20, integerValues.data()),
                  fields.count);
    }
    // More than are looked at in one go.
    RunText text{};
    RunFields fields;
    fields.Clear();
    std::string many;
    for (int i = 0; i < 100; ++i)
        many += std::to_string(i) + ".5,";
    method.find(text, many.copy(text.text, RunText::capacity), ends, fields);
    std::vector<double> values(100);
    std::size_t reads = 0;
    for (std::size_t read = 0; read != 100 && reads < 100; ++reads)
        read += method.readReals(text, fields, read, 100, &values[read], nullptr);
    EXPECT_EQ(reads, 2U);
}

TEST_P(RunMethodTest, EachExponentIsWhatASingleReadGives)
{
    for (int exponent = -1100; exponent <= 1100; exponent += exponent > -330 && exponent < 330 ? 1 : 7)
    {
        const std::string number = "1.25E" + std::to_string(exponent);
        const std::string text = number + ",-" + number + ",5D" + std::to_string(exponent) + " ,7";
        ExpectSame({{text}});
    }
}

TEST_P(RunMethodTest, EachCharacterAnywhereInANumberIsWhatASingleReadGives)
{
    for (const std::string number : {"-123.456E-07", "7.1234567890123456789"})
    {
        for (std::size_t place = 0; place <= number.size(); ++place)
        {
            for (int c = 0; c < 256; ++c)
            {
                std::string other = number;
                other.insert(place, 1, static_cast<char>(c));
                if (place < number.size())
                    other.erase(place + 1, 1);
                const std::string text = "1.5," + other + ",2.5,3";
                ExpectSame({{text}});
            }
        }
    }
}

TEST_P(RunMethodTest, NumberCutAnywhereByTheEndOfALineIsWhatASingleReadGives)
{
    const std::string text = "1.5,-12345.6789D-12,,   17,+.5 ,1E5,100;1,2";
    for (std::size_t first = 1; first < text.size(); ++first)
    {
        for (std::size_t second = first + 1; second < text.size(); ++second)
        {
            const std::string_view view = text;
            ExpectSame({{view.substr(0, first), view.substr(first, second - first), view.substr(second)}});
        }
    }
}

TEST_P(RunMethodTest, LinesWithoutACharacterArePassed)
{
    const std::string text = "1.5,2.5;";
    const std::string_view view = text;
    const std::string_view none = view.substr(2, 0);
    ExpectSame({{none, view.substr(0, 2), none, none, view.substr(2), none}});
    ExpectSame({{none}});
    ExpectSame({{}});

    CDelimitedTextRecordPtr cursor(nullptr, ",;");
    cursor.Add(nullptr, nullptr);
    cursor.Add(text.data(), text.data() + 2);
    cursor.Add(nullptr, nullptr);
    cursor.Add(text.data() + 6, text.data() + 1);
    cursor.Add(text.data() + 3, text.data() + 6);
    std::vector<double> values(3);
    std::size_t count = 0;
    EXPECT_TRUE(cursor.ReadReals(values, ',', count));
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(values, (std::vector<double>{1.5, 2.5, 0.0}));
}

TEST_P(RunMethodTest, AnySetOfEndsIsWhatASingleReadGives)
{
    const std::string text = "1.5;2|3:4.5/6,-7&8=9#10!11 12.5E3,4e5\t6";
    for (const char* const ends :
         {"", ",", ";,|:/&=#", ",;|:/&=#!", " ,", ".,", "5,", "-,", "E,", ",,,;", "\t,;|:/&=#!\n"})
    {
        for (const char separator : {',', ';', '|', '.', ' ', '?'})
            ExpectSame({{text}, ends, separator, 4});
    }
    for (std::size_t length = 60; length < 70; ++length)
        ExpectSame({{std::string_view(text + std::string(length, ' ')).substr(0, length)}, std::string(",\0", 2), ','});
    const std::string zeros("1,2\0003,4", 7);
    ExpectSame({{zeros}, std::string(",\0", 2), ','});
    ExpectSame({{zeros}, std::string(",\0", 2), '\0'});
    ExpectSame({{zeros}, ",", '\0'});
}

TEST_P(RunMethodTest, FieldsLongerThanAPieceAreWhatSingleReadsGive)
{
    for (const std::size_t length : {30U, 40U, 100U, 2000U, 2047U, 2048U, 2049U, 5000U})
    {
        const std::string text = "1," + std::string(length, ' ') + "2.5," + std::string(length, '7') + ',' +
                                 std::string(length, '0') + "5," + "3" + std::string(length, ' ') + ",4";
        ExpectSame({{text}});
        ExpectSame({Cut(text, [] { return 64; })});
        ExpectSame({{text}, ",;", ',', 1});
        const std::string number(length, '7');
        ExpectSame({{number}, std::string(",\0", 2), '\0'});
    }
}

TEST_P(RunMethodTest, AnyNumberOfValuesAtATimeIsWhatSingleReadsGive)
{
    FieldMaker maker(m_random);
    std::string text;
    for (int i = 0; i < 700; ++i)
        text += maker.Next() + ',';
    for (std::size_t together = 1; together < 300; together += together < 70 ? 1 : 37)
        ExpectSame({Cut(text, [] { return 64; }), ",;", ',', together});
}

TEST_P(RunMethodTest, MillionsOfMadeFieldsAreWhatSingleReadsGive)
{
    FieldMaker maker(m_random);
    const int records = support::Cases(30'000);
    for (int i = 0; i < records && !HasFailure(); ++i)
    {
        std::string text;
        for (std::size_t fields = maker.Below(200); fields != 0; --fields)
            text += maker.Next() + (maker.Below(40) == 0 ? ';' : ',');
        const std::size_t length = maker.Below(3) == 0 ? 64 : 1 + maker.Below(100);
        const bool isEven = maker.Below(2) == 0;
        ExpectSame({Cut(text, [&] { return isEven ? length : 1 + maker.Below(length); }), ",;",
                    maker.Below(20) == 0 ? ';' : ',', 1 + maker.Below(150)});
    }
}

TEST_P(RunMethodTest, NothingOutsideTheLinesIsRead)
{
    const std::string text = "-1234.5678E-12,17, 1.5,2.75,3,-4,5.125D+1,60000000,0.00001,123456789012345.5,9,8,7;,x,1";
    for (std::size_t length = 1; length <= text.size(); ++length)
    {
        for (const auto touches : {GuardedText::Touches::pageBehind, GuardedText::Touches::pageInFront})
        {
            const GuardedText guarded(text.substr(0, length), touches);
            ExpectSame({{{guarded.First(), length}}});
        }
    }
    // Each line in pages of its own.
    const GuardedText first(text.substr(0, 31), GuardedText::Touches::pageBehind);
    const GuardedText second(text.substr(31), GuardedText::Touches::pageInFront);
    ExpectSame({{{first.First(), 31}, {second.First(), text.size() - 31}}});
}

TEST_P(RunMethodTest, RoundingIsThatOfASingleRead)
{
    const std::string text = "0.1,-0.1,1.7,-1.7E-5,123456.789,-3D7,.333333333,-2.718281828E22,-0,7";
    for (const int rounding : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO, FE_TONEAREST})
    {
        ASSERT_EQ(std::fesetround(rounding), 0);
        ExpectSame({{text}});
    }
}

TEST_P(RunMethodTest, NumbersThatNeedNoRoundingRaiseNoFloatingPointException)
{
    for (const char* const number : {"1.5,", "1.5E2,"})
    {
        std::string text;
        for (std::size_t count = 1; count < 20; ++count)
        {
            text += number;
            OneLine cursor(text);
            std::vector<double> values(count);
            std::size_t read = 0;
            std::feclearexcept(FE_ALL_EXCEPT);
            EXPECT_TRUE(cursor.ReadReals(values, ',', read));
            EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0) << text;
            EXPECT_EQ(read, count);
        }
    }
}

TEST_P(RunMethodTest, ThreadsReadAtOnce)
{
    std::vector<std::thread> threads;
    std::vector<double> sums(4);
    for (double& sum : sums)
        threads.emplace_back(
            [&sum]
            {
                for (int i = 0; i < 500; ++i)
                {
                    OneLine cursor("1.5,2.5,-3,4E1;");
                    std::vector<double> values(10);
                    std::size_t count = 0;
                    cursor.ReadReals(values, ',', count);
                    sum += values[0] + values[1] + values[2] + values[3];
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    for (const double sum : sums)
        EXPECT_EQ(sum, 500 * 41.0);
}

TEST_P(RunMethodTest, HostileFilesAreWhatSingleReadsGive)
{
    EXPECT_GT(ExpectSameOfFilesIn(UTILITY_SAMPLES), 3U);
    EXPECT_GT(ExpectSameOfFilesIn(UTILITY_CORPUS), 10U);
}

TEST_P(RunMethodTest, RealFilesAreWhatSingleReadsGive)
{
    if (std::string(UTILITY_TEST_DATA).empty())
        GTEST_SKIP() << "No folder of real files is given (UTILITY_TEST_DATA): only made ones are read";
    const std::filesystem::path folder = UTILITY_TEST_DATA;
    EXPECT_GT(ExpectSameOfFilesIn(folder / "iges"), 10U); // malformed ones among them
    EXPECT_GT(ExpectSameOfFilesIn(folder / "text"), 3U);
}

TEST(RunsOneByOneTest, AnyCursorReadsRuns)
{
    const support::LogSettings settings;
    SetLogDebugMessages(true);
    RunTrial trial;
    std::mt19937 random(20'000'078);
    FieldMaker maker(random);
    for (int i = 0; i < 300; ++i)
    {
        std::string text;
        for (std::size_t fields = maker.Below(20); fields != 0; --fields)
            text += maker.Next() + (maker.Below(10) == 0 ? ';' : ',');
        const RunCase each{Cut(text, [&] { return 1 + maker.Below(70); }), ",;", ',', 1 + maker.Below(12)};
        EXPECT_EQ((trial.Difference<double, SlowDelimitedCursor>(each)), "") << text;
        EXPECT_EQ((trial.Difference<int, SlowDelimitedCursor>(each)), "") << text;
    }
}

TEST(RunsOneByOneTest, InlineCursorsReadRuns)
{
    class CommaCursor final : public CInlineTextRecordPtr<CommaCursor>
    {
    public:
        using CInlineTextRecordPtr::CInlineTextRecordPtr;
        bool IsTerminator(char c) override { return c == ',' || c == '\0'; }
    };
    const std::string_view text = "1.5, 2,,x";
    CommaCursor cursor(nullptr);
    cursor.Add(text.data(), text.data() + text.size() - 1);
    std::vector<double> reals(9, -1.0);
    std::vector<TextFieldForm> forms(9);
    std::size_t count = 0;
    EXPECT_FALSE(cursor.ReadReals(reals, ',', count, forms));
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(reals, (std::vector<double>{1.5, 2.0, 0.0, -1.0, -1.0, -1.0, -1.0, -1.0, -1.0}));
    EXPECT_EQ(forms[0], TextFieldForm::real);
    EXPECT_EQ(forms[1], TextFieldForm::whole);
    EXPECT_EQ(forms[2], TextFieldForm::empty);
    EXPECT_EQ(*cursor, 'x');
}
