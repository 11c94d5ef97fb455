#include "utility/logging/TimeLogger.h"

#include "tests/support/ForwardingLocale.h"
#include "tests/support/LogSettings.h"
#include "tests/support/ThreadLog.h"
#include "utility/logging/internal/TimeLine.h"
#include "utility/platform/Clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cwchar>
#include <limits>
#include <string>
#include <thread>
#include <vector>

using support::Logged;
using utility::detail::TimeLine;

namespace
{

using Clock = std::chrono::system_clock;

constexpr std::int64_t second = 10000000;
constexpr std::int64_t millisecond = 10000;
constexpr std::int64_t moment = 1700000000 * second;

std::wstring LocalTimeText(std::int64_t ticks)
{
    const std::tm local = utility::platform::LocalTime(ticks / second);
    wchar_t text[16];
    std::swprintf(text, 16, L"%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec);
    return text;
}

std::int64_t Milliseconds(Clock::duration duration)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
}

/// A locale whose time separator a test sets; none at all if there is no text.
struct Separator : support::ForwardingLocale
{
    explicit Separator(const wchar_t* separator) : text(separator) {}
    int TimeSeparator(LCID locale, wchar_t* buffer, int size) override
    {
        asked = locale;
        room = size;
        if (text == nullptr)
            return 0;
        std::wcscpy(buffer, text);
        return static_cast<int>(std::wcslen(text)) + 1;
    }
    const wchar_t* text;
    LCID asked = 0;
    int room = 0;
};

class TimeLoggerTest : public ::testing::Test
{
protected:
    TimeLoggerTest() { SetLogDebugMessages(true); }

    std::vector<Logged> Messages() const { return support::TakeLog(owner); }
    const CPlanDatabase* Database() const { return static_cast<const CPlanDatabase*>(owner); }

    const support::LogSettings settings;
    const void* const owner = support::NewOwner();
};

/// The parts of a line behind the time: milliseconds, step and words.
bool IsLine(const std::wstring& line, const std::wstring& words)
{
    return line.size() == 27 + words.size() && line[2] == L':' && line[5] == L':' && line[8] == L'.' &&
           line[12] == L' ' && line[26] == L' ' && line.substr(27) == words;
}

}

TEST(TimeLineTest, HasTheTimeOfTheBeginningTheLengthAndTheWords)
{
    EXPECT_EQ(TimeLine(moment + 7 * millisecond, moment + 1234 * millisecond + 9999, L"read part"),
              LocalTimeText(moment) + L".007          1227 read part");
}

TEST(TimeLineTest, ConversionsInTheWordsAreWords)
{
    EXPECT_EQ(TimeLine(moment, moment, L"%s %1% %"), LocalTimeText(moment) + L".000             0 %s %1% %");
}

TEST(TimeLineTest, LengthIsCutTo32BitsOfMilliseconds)
{
    const std::wstring line = TimeLine(moment, moment + 0x100000005 * millisecond, L"");
    EXPECT_EQ(line, LocalTimeText(moment) + L".000             5 ");
    EXPECT_EQ(TimeLine(moment, moment + 0x80000000 * millisecond, L""), LocalTimeText(moment) + L".000   -2147483648 ");
}

TEST(TimeLineTest, GlobalLocaleDoesNotGroupDigits)
{
    struct Grouping : std::numpunct<wchar_t>
    {
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale earlier = std::locale::global(std::locale(std::locale(), new Grouping));
    const std::wstring line = TimeLine(moment, moment + 1234567 * millisecond, L"");
    std::locale::global(earlier);
    EXPECT_EQ(line, LocalTimeText(moment) + L".000       1234567 ");
}

TEST_F(TimeLoggerTest, FirstLineBeginsWhenTheLoggerWasMade)
{
    const auto before = Clock::now();
    CTimeLogger timing;
    const auto made = Clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const std::wstring line = timing.LogNextTimeStr(L"first");
    const auto after = Clock::now();
    ASSERT_TRUE(IsLine(line, L"first")) << std::string(line.begin(), line.end());
    const int step = std::stoi(line.substr(13, 13));
    EXPECT_GE(step, 19);
    EXPECT_LE(step, Milliseconds(after - before));
    const int milliseconds = std::stoi(line.substr(9, 3));
    const auto earliest = Milliseconds(before.time_since_epoch()) % 1000;
    const auto latest = Milliseconds(made.time_since_epoch()) % 1000;
    EXPECT_TRUE(made - before >= std::chrono::seconds(1) || // where it may be any
                (earliest <= latest ? earliest <= milliseconds && milliseconds <= latest
                                    : earliest <= milliseconds || milliseconds <= latest));
}

TEST_F(TimeLoggerTest, NextStepBeginsWhereTheLastOneEnded)
{
    CTimeLogger timing;
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const auto begin = Clock::now();
    timing.LogNextTimeStr(L"");
    const std::wstring line = timing.LogNextTimeStr(L"");
    EXPECT_LE(std::stoi(line.substr(13, 13)), Milliseconds(Clock::now() - begin));
}

TEST_F(TimeLoggerTest, TrailHasALineForEachStepAndIsOneMessageThatEmptiesIt)
{
    CTimeLogger timing;
    EXPECT_EQ(timing.GetTimeLog(), L"");
    timing.LogNextTime(L"first");
    timing.LogNextTime(L"second");
    const std::wstring trail = timing.GetTimeLog();
    const std::size_t end = trail.find(L'\n');
    ASSERT_NE(end, std::wstring::npos);
    EXPECT_TRUE(IsLine(trail.substr(0, end), L"first"));
    EXPECT_TRUE(IsLine(trail.substr(end + 1), L"second\n"));
    EXPECT_EQ(timing.GetTimeLog(), trail);
    timing.PrintTimeLog(Database());
    EXPECT_EQ(Messages(), (std::vector<Logged>{{LogSeverityTiming, trail}}));
    EXPECT_EQ(timing.GetTimeLog(), L"");
}

TEST_F(TimeLoggerTest, LineGoesToTheLogAndNotToTheTrail)
{
    CTimeLogger timing;
    timing.PrintNextTime(Database(), L"step");
    const auto messages = Messages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].severity, LogSeverityTiming);
    EXPECT_TRUE(IsLine(messages[0].text, L"step\n"));
    EXPECT_EQ(timing.GetTimeLog(), L"");
}

TEST_F(TimeLoggerTest, LogThatTakesNothingStopsNeitherTheClockNorTheEmptying)
{
    SetLogDebugMessages(false);
    CTimeLogger timing;
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const auto begin = Clock::now();
    timing.PrintNextTime(Database(), L"step");
    timing.LogNextTime(L"next");
    EXPECT_LE(std::stoi(timing.GetTimeLog().substr(13, 13)), Milliseconds(Clock::now() - begin));
    timing.PrintTimeLog(Database());
    EXPECT_EQ(timing.GetTimeLog(), L"");
    EXPECT_EQ(Messages(), std::vector<Logged>());
}

TEST_F(TimeLoggerTest, CopyGoesOnByItself)
{
    CTimeLogger timing;
    timing.LogNextTime(L"first");
    CTimeLogger copy = timing;
    copy.LogNextTime(L"second");
    EXPECT_EQ(copy.GetTimeLog().substr(0, timing.GetTimeLog().size()), timing.GetTimeLog());
    EXPECT_GT(copy.GetTimeLog().size(), timing.GetTimeLog().size());
}

namespace
{

struct MachiningTime
{
    double seconds;
    const wchar_t* text;
};

class MachiningTimeTest : public ::testing::TestWithParam<MachiningTime>
{
};

}

TEST_P(MachiningTimeTest, IsHoursMinutesAndSeconds)
{
    const Separator separator(L":");
    EXPECT_EQ(FormatMachiningTime(GetParam().seconds), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Values, MachiningTimeTest,
                         ::testing::ValuesIn(std::vector<MachiningTime>{
                             {0, L"00:00:00"},
                             {-0.0, L"00:00:00"},
                             {0.999, L"00:00:00"},
                             {59.999, L"00:00:59"},
                             {60, L"00:01:00"},
                             {3599.5, L"00:59:59"},
                             {3661.9, L"01:01:01"},
                             {360000.0, L"100:00:00"},
                             {-0.5, L"00:00:00"},
                             {-90.0, L"00:-1:-30"},
                             {-3661.0, L"-1:-1:-1"},
                             {1e13, L"2777777777:46:40"},
                             // What a 64-bit integer does not hold.
                             {1e300, L"-2562047788015215:-30:-8"},
                             {-std::numeric_limits<double>::infinity(), L"-2562047788015215:-30:-8"},
                             {std::numeric_limits<double>::quiet_NaN(), L"-2562047788015215:-30:-8"},
                         }));

TEST(FormatMachiningTimeTest, SeparatorIsThatOfTheUsersLocale)
{
    Separator separator(L" h ");
    EXPECT_EQ(FormatMachiningTime(3661), L"01 h 01 h 01");
    EXPECT_EQ(separator.asked, utility::platform::Locale().UserDefault());
    EXPECT_EQ(separator.room, 256);
}

TEST(FormatMachiningTimeTest, PartsStandSideBySideWhereThereIsNoSeparator)
{
    const Separator none(nullptr);
    EXPECT_EQ(FormatMachiningTime(3661), L"010101");
}
