#include "utility/logging/LogStream.h"

#include "tests/support/GlobalLocale.h"
#include "tests/support/LogSettings.h"
#include "tests/support/Substitute.h"
#include "tests/support/Thorough.h"
#include "utility/platform/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <functional>
#include <iomanip>
#include <iterator>
#include <limits>
#include <locale>
#include <new>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

static_assert(std::is_base_of_v<std::basic_ostream<wchar_t>, CLogStream>);
static_assert(std::has_virtual_destructor_v<CLogStream>);
static_assert(std::is_base_of_v<std::basic_stringbuf<wchar_t>, CLogStream::CLogStreamBuffer>);
static_assert(!std::is_polymorphic_v<CLogStreamHelper>);
static_assert(!std::is_copy_constructible_v<CLogStreamHelper> && !std::is_move_constructible_v<CLogStreamHelper>);

namespace
{

using Message = std::pair<LogSeverity, std::wstring>;
using Messages = std::vector<Message>;

Messages Take(const void* owner)
{
    boost::circular_buffer_space_optimized<CLogMessage> ring;
    CLogMessages::instance(owner).pop(ring);
    Messages messages;
    for (const CLogMessage& message : ring)
        messages.emplace_back(message.m_eSeverity, message.m_strMessage);
    return messages;
}

class LogStreamTest : public ::testing::Test
{
protected:
    /// One message, an error.
    void ExpectMessage(const std::wstring& text) { EXPECT_EQ(Take(owner), (Messages{{LogSeverityError, text}})); }
    void ExpectNothing() { EXPECT_EQ(Take(owner), Messages{}); }
    /// Whether the owner has a store: one that is made now has another capacity.
    bool HasStore()
    {
        CLogMessages::SetDefaultLogCapacity(7);
        boost::circular_buffer_space_optimized<CLogMessage> ring;
        CLogMessages::instance(owner).pop(ring);
        return ring.capacity().capacity() != 7;
    }

    const support::LogSettings settings;
    const void* const owner = support::NewOwner();
};

using LogStreamThreadTest = LogStreamTest;
using DebugLogStreamTest = LogStreamTest;

/// Counts how often it was formatted.
struct Counting
{
    int* count;
    friend std::wostream& operator<<(std::wostream& stream, const Counting& counting)
    {
        ++*counting.count;
        return stream << L"counted";
    }
};

struct Message8 : std::string
{
    using std::string::string;
};

/// The system's text service with its calls recorded, which can be made to fail.
class RecordingText : public utility::platform::TextService
{
public:
    int ToCodePage(UINT codePage, const wchar_t* text, int length, char* out, int capacity) override
    {
        return m_system.ToCodePage(codePage, text, length, out, capacity);
    }
    int FromCodePage(UINT codePage, const char* text, int length, wchar_t* out, int capacity) override
    {
        calls.emplace_back(codePage, length, capacity);
        return calls.size() >= firstFailure ? 0 : m_system.FromCodePage(codePage, text, length, out, capacity);
    }
    DWORD SystemMessage(DWORD error, DWORD languageId, wchar_t* buffer, DWORD size) override
    {
        return m_system.SystemMessage(error, languageId, buffer, size);
    }
    std::wstring WholeSystemMessage(DWORD error, DWORD languageId) override
    {
        return m_system.WholeSystemMessage(error, languageId);
    }

    std::vector<std::tuple<UINT, int, int>> calls;
    std::size_t firstFailure = std::numeric_limits<std::size_t>::max();

private:
    utility::platform::TextService& m_system = utility::platform::Text();
    support::Substitute<utility::platform::TextService> m_scope{utility::platform::TextSlot(), *this};
};

}

TEST_F(LogStreamTest, NothingInsertedMakesNoStore)
{
    CLogMessages::SetDefaultLogCapacity(3);
    LogFile(LogSeverityError, owner);
    LogFile(LogSeverityError, owner) << std::flush;
    LogFile(LogSeverityError, owner) << L"" << "" << std::wstring() << std::hex;
    EXPECT_FALSE(HasStore());
}

TEST_F(LogStreamTest, RefusedMessageMakesNoStore)
{
    CLogMessages::SetDefaultLogCapacity(3);
    LogFile(LogSeverityNone, owner) << L"text" << 1 << std::endl << std::flush;
    EXPECT_FALSE(HasStore());
}

TEST_F(LogStreamTest, NarrowTextAndANumberAreOneMessageWithALineFeed)
{
    LogFile(LogSeverityWarning, owner) << "tool " << 12;
    EXPECT_EQ(Take(owner), (Messages{{LogSeverityWarning, L"tool 12\n"}}));
}

TEST_F(LogStreamTest, NullIsAnOwner)
{
    Take(nullptr);
    LogFile(LogSeverityError, nullptr) << L"nobody's";
    EXPECT_EQ(Take(nullptr), (Messages{{LogSeverityError, L"nobody's\n"}}));
}

TEST_F(LogStreamTest, MessageThatEndsInALineFeedGetsNoOther)
{
    LogFile(LogSeverityError, owner) << L"text\n";
    ExpectMessage(L"text\n");
}

TEST_F(LogStreamTest, LineFeedIsNoEndOfAMessage)
{
    LogFile(LogSeverityError, owner) << L"one\ntwo\n" << L"three";
    ExpectMessage(L"one\ntwo\nthree\n");
}

TEST_F(LogStreamTest, ManyLineFeedsAreKept)
{
    LogFile(LogSeverityError, owner) << L"\n\n";
    ExpectMessage(L"\n\n");
}

TEST_F(LogStreamTest, FlushDeliversAtOnceAndTheStreamGoesOnEmpty)
{
    auto&& helper = LogFile(LogSeverityError, owner);
    helper << L"one" << std::flush;
    ExpectMessage(L"one\n");
    helper << L"two" << std::endl;
    ExpectMessage(L"two\n");
    helper << std::endl;
    ExpectMessage(L"\n");
    helper << 3.5 << std::flush << std::flush;
    ExpectMessage(L"3.5\n");
    helper << L"four" << std::endl;
    ExpectMessage(L"four\n");
}

TEST_F(LogStreamTest, TextDeliveredAlreadyIsNotDeliveredAgainAtTheEnd)
{
    LogFile(LogSeverityError, owner) << L"one" << std::endl << L"two" << std::flush;
    EXPECT_EQ(Take(owner), (Messages{{LogSeverityError, L"one\n"}, {LogSeverityError, L"two\n"}}));
}

TEST_F(LogStreamTest, LongTextsAreWhole)
{
    const std::wstring longText(1000, L'x');
    LogFile(LogSeverityError, owner) << L"a" << longText << 1 << longText << std::flush << L"b"
                                     << std::wstring(256, L'y');
    EXPECT_EQ(Take(owner), (Messages{{LogSeverityError, L"a" + longText + L"1" + longText + L"\n"},
                                     {LogSeverityError, L"b" + std::wstring(256, L'y') + L"\n"}}));
}

TEST_F(LogStreamTest, TextsAroundTheLengthThatFitsAreWhole)
{
    for (std::size_t length = 250; length < 262; ++length)
    {
        LogFile(LogSeverityError, owner) << std::wstring(length, L'x');
        ExpectMessage(std::wstring(length, L'x') + L"\n");
        LogFile(LogSeverityError, owner) << std::wstring(length, L'x') << L'\n';
        ExpectMessage(std::wstring(length, L'x') + L"\n");
        LogFile(LogSeverityError, owner) << std::wstring(length, L'x') << 0.5;
        ExpectMessage(std::wstring(length, L'x') + L"0.5\n");
    }
}

TEST_F(LogStreamTest, MessageIsDeliberatelyCutAtTheFirstNullAndItsLineFeedWithIt)
{
    LogFile(LogSeverityError, owner) << std::wstring(L"ab\0cd", 5);
    ExpectMessage(L"ab");
    LogFile(LogSeverityError, owner) << L"ab" << L'\0' << 0.5;
    ExpectMessage(L"ab");
}

TEST_F(LogStreamTest, TextThatBeginsWithANullIsDroppedButItsOwnerHasAStore)
{
    CLogMessages::SetDefaultLogCapacity(3);
    LogFile(LogSeverityError, owner) << L'\0' << L"lost";
    EXPECT_TRUE(HasStore());
    ExpectNothing();
    LogFile(LogSeverityError, owner) << std::string("\0lost", 5) << std::flush << L"kept";
    ExpectMessage(L"kept\n");
}

TEST_F(LogStreamTest, WhatIsFormattedBehindANullIsStillOfTheSameMessage)
{
    CLogStreamHelper helper(owner, LogSeverityError);
    helper << L"a" << std::wstring_view(L"b\0c", 3) << 1 << 0.5 << L"d" << std::flush << 2 << L"\0" << 255;
    ExpectMessage(L"ab");
    helper << std::flush;
    ExpectMessage(L"2255\n");
}

TEST_F(LogStreamTest, ArrayEndsAtItsNullAndMoreMayFollow)
{
    const wchar_t array[8] = L"ab";
    wchar_t changing[4] = L"c";
    LogFile(LogSeverityError, owner) << array << changing << L"d" << std::endl;
    ExpectMessage(L"abcd\n");
}

TEST_F(LogStreamTest, RefusedHelperIsNotMadeAndNotDestroyed)
{
    // Whatever was there before: a text that is destroyed gives memory back that was never taken.
    alignas(CLogStreamHelper) unsigned char place[sizeof(CLogStreamHelper)];
    std::fill(std::begin(place), std::end(place), 0xFF);
    asm volatile("" : : "r"(place) : "memory");
    auto* const helper = ::new (place) CLogStreamHelper(owner, LogSeverityNone);
    *helper << L"text" << 1 << 0.5 << "narrow" << std::hex << std::wstring(300, L'x') << std::endl;
    helper->~CLogStreamHelper();
    ExpectNothing();
}

TEST_F(LogStreamTest, LevelZeroLetsSeverityZeroPass)
{
    LogFile(LogSeverityNone, owner) << L"refused";
    SetLogLevel(LogSeverityNone);
    LogFile(LogSeverityNone, owner) << L"stored";
    EXPECT_EQ(Take(owner), (Messages{{LogSeverityNone, L"stored\n"}}));
}

class LogStreamLevelTest : public LogStreamTest, public ::testing::WithParamInterface<std::tuple<int, int>>
{
};

TEST_P(LogStreamLevelTest, MessagePassesIfItsSeverityIsAtLeastTheLevel)
{
    const auto [severity, level] = GetParam();
    SetLogLevel(static_cast<LogSeverity>(level));
    LogFile(static_cast<LogSeverity>(severity), owner) << L"text";
    EXPECT_EQ(GetLogLevel(), static_cast<LogSeverity>(level));
    EXPECT_EQ(Take(owner),
              severity >= level ? (Messages{{static_cast<LogSeverity>(severity), L"text\n"}}) : Messages{});
}

constexpr int severities[] = {std::numeric_limits<int>::min(), -1, 0, 1, 2, 3, 4, 8, std::numeric_limits<int>::max()};
INSTANTIATE_TEST_SUITE_P(Severities, LogStreamLevelTest,
                         ::testing::Combine(::testing::ValuesIn(severities), ::testing::ValuesIn(severities)));

TEST_F(LogStreamTest, StreamKeepsTheOutcomeOfItsTestForLife)
{
    auto&& passing = LogFile(LogSeverityError, owner);
    SetLogLevel(LogSeverityTiming);
    auto&& refused = LogFile(LogSeverityError, owner);
    SetLogLevel(LogSeverityInformation);
    passing << L"passing" << std::flush;
    refused << L"refused" << std::flush;
    ExpectMessage(L"passing\n");
}

TEST_F(LogStreamTest, RefusedValueIsNotFormatted)
{
    int count = 0;
    LogFile(LogSeverityNone, owner) << Counting{&count};
    EXPECT_EQ(count, 0);
    LogFile(LogSeverityError, owner) << Counting{&count};
    EXPECT_EQ(count, 1);
    ExpectMessage(L"counted\n");
}

TEST_F(LogStreamTest, RefusedManipulatorIsNotCalled)
{
    static int calls;
    calls = 0;
    std::wostream& (*const manipulator)(std::wostream&) = [](std::wostream& stream) -> std::wostream&
    {
        ++calls;
        return stream << L"called";
    };
    LogFile(LogSeverityNone, owner) << manipulator;
    EXPECT_EQ(calls, 0);
    LogFile(LogSeverityError, owner) << manipulator;
    EXPECT_EQ(calls, 1);
    ExpectMessage(L"called\n");
}

TEST_F(LogStreamTest, InsertionsGiveBackTheHelper)
{
    CLogStreamHelper helper(owner, LogSeverityError);
    const std::string narrow("narrow");
    EXPECT_EQ(&(helper << L"wide"), &helper);
    EXPECT_EQ(&(helper << 1), &helper);
    EXPECT_EQ(&(helper << std::endl), &helper);
    EXPECT_EQ(&(helper << "narrow"), &helper);
    EXPECT_EQ(&(helper << narrow), &helper);
    EXPECT_EQ(&(helper << std::hex), &helper);
}

TEST_F(LogStreamTest, FormattingStateLastsAsOnAnyStream)
{
    LogFile(LogSeverityError, owner) << 255 << L' ' << std::hex << std::showbase << 255 << std::setw(6) << L"ab"
                                     << std::setw(4) << "c" << -1;
    ExpectMessage(L"255 0xff    ab   c0xffffffff\n");
}

TEST_F(LogStreamTest, NullWideTextSpoilsTheStreamAsAnyOther)
{
    LogFile(LogSeverityError, owner) << L"before" << static_cast<const wchar_t*>(nullptr) << L"after" << 1;
    ExpectMessage(L"before\n");
}

TEST_F(LogStreamTest, NumbersFollowTheGlobalLocale)
{
    const support::GlobalLocale scope(support::GroupingLocale());
    LogFile(LogSeverityError, owner) << 1234567 << L' ' << std::boolalpha << true;
    ExpectMessage(L"1_234_567 yes\n");
}

TEST_F(LogStreamTest, LocaleIsTheGlobalOneOfTheBeginning)
{
    CLogStreamHelper early(owner, LogSeverityError);
    {
        const support::GlobalLocale scope(support::GroupingLocale());
        early << 1234567 << L' ' << 1234.0 << L' ' << 1234567 << std::flush;
        ExpectMessage(L"1234567 1234 1234567\n");
    }
    std::optional<CLogStreamHelper> late;
    {
        const support::GlobalLocale scope(support::GroupingLocale());
        late.emplace(owner, LogSeverityError);
    }
    *late << 1234567 << std::flush;
    ExpectMessage(L"1_234_567\n");
}

TEST_F(LogStreamTest, StreamWithoutAHelperAlwaysDelivers)
{
    SetLogLevel(LogSeverityTiming);
    {
        CLogStream stream(owner, LogSeverityNone);
        stream << L"one" << std::endl << L"two";
        EXPECT_EQ(Take(owner), (Messages{{LogSeverityNone, L"one\n"}}));
    }
    EXPECT_EQ(Take(owner), (Messages{{LogSeverityNone, L"two\n"}}));
}

TEST_F(LogStreamTest, StreamWithoutAHelperCutsAndDropsInTheSameWay)
{
    CLogMessages::SetDefaultLogCapacity(3);
    CLogStream stream(owner, LogSeverityError);
    stream << std::flush;
    stream << std::wstring(L"\0a", 2) << std::flush;
    EXPECT_TRUE(HasStore());
    ExpectNothing();
    stream << std::wstring(L"ab\0c", 4) << std::flush;
    ExpectMessage(L"ab");
}

// Narrow text

TEST_F(LogStreamTest, NarrowTextIsConvertedInATemporaryAndInAVariable)
{
    char array[20] = "array\0rest";
    char* const pointer = array;
    const std::string text("text");
    LogFile(LogSeverityError, owner) << "literal " << array << pointer << text << std::string(" temporary ")
                                     << Message8("derived");
    ExpectMessage(L"literal arrayarraytext temporary derived\n");
    LogFile(LogSeverityError, owner) << array;
    ExpectMessage(L"array\n");
    LogFile(LogSeverityError, owner) << pointer;
    ExpectMessage(L"array\n");
    LogFile(LogSeverityError, owner) << text;
    ExpectMessage(L"text\n");
    LogFile(LogSeverityError, owner) << Message8("derived");
    ExpectMessage(L"derived\n");
    CLogStreamHelper helper(owner, LogSeverityError);
    helper << "literal " << array << pointer << text << std::flush;
    ExpectMessage(L"literal arrayarraytext\n");
}

TEST_F(LogStreamTest, NullNarrowTextInsertsNothingAndDoesNotFail)
{
    LogFile(LogSeverityError, owner) << static_cast<const char*>(nullptr) << L"after";
    ExpectMessage(L"after\n");
    LogFile(LogSeverityError, owner) << 0.5 << static_cast<char*>(nullptr) << L"after";
    ExpectMessage(L"0.5after\n");
}

TEST_F(LogStreamTest, NullsWithinAStdStringAreConvertedAndCutLater)
{
    RecordingText text;
    LogFile(LogSeverityError, owner) << std::string("ab\0cd", 5) << L"\n";
    EXPECT_EQ(text.calls, (std::vector<std::tuple<UINT, int, int>>{{CP_ACP, 5, 0}, {CP_ACP, 5, 5}}));
    ExpectMessage(L"ab");
}

TEST_F(LogStreamTest, RefusedNarrowTextIsConvertedAllTheSame)
{
    RecordingText text;
    LogFile(LogSeverityNone, owner) << "abc";
    EXPECT_EQ(text.calls, (std::vector<std::tuple<UINT, int, int>>{{CP_ACP, 3, 0}, {CP_ACP, 3, 3}}));
}

TEST_F(LogStreamTest, FailedConversionGivesTheEmptyTextWithoutReport)
{
    for (const std::size_t firstFailure : {std::size_t{1}, std::size_t{2}})
    {
        RecordingText text;
        text.firstFailure = firstFailure;
        LogFile(LogSeverityError, owner) << "lost" << L"kept";
        EXPECT_EQ(text.calls.size(), firstFailure);
        ExpectMessage(L"kept\n");
    }
}

TEST_F(LogStreamTest, NarrowTextIsInTheSystemsCodePage)
{
    const std::string narrow("\xC3\xBC");
    wchar_t wide[4];
    const int length = utility::platform::Text().FromCodePage(CP_ACP, narrow.data(), 2, wide, 4);
    ASSERT_GT(length, 0);
    LogFile(LogSeverityError, owner) << narrow;
    ExpectMessage(std::wstring(wide, static_cast<std::size_t>(length)) + L"\n");
}

TEST_F(LogStreamTest, NarrowTextOfAnySizeIsConverted)
{
    LogFile(LogSeverityError, owner) << std::string(5000, 'x') << 1;
    ExpectMessage(std::wstring(5000, L'x') + L"1\n");
}

// Messages for debugging

TEST_F(DebugLogStreamTest, AreOffAtFirst)
{
    DbgLogFile(LogSeverityError, owner) << L"refused";
    ExpectNothing();
}

TEST_F(DebugLogStreamTest, PassWithTheirSeverityWhenSwitchedOn)
{
    SetLogDebugMessages(true);
    DbgLogFile(LogSeverityWarning, owner) << L"text";
    EXPECT_EQ(Take(owner), (Messages{{LogSeverityWarning, L"text\n"}}));
}

TEST_F(DebugLogStreamTest, AreStillFilteredByTheLevelWhenSwitchedOn)
{
    SetLogDebugMessages(true);
    SetLogLevel(LogSeverityTiming);
    DbgLogFile(LogSeverityError, owner) << L"refused";
    ExpectNothing();
}

TEST_F(DebugLogStreamTest, PassWithSeverityZeroAtLevelZeroWhenSwitchedOff)
{
    SetLogLevel(LogSeverityNone);
    DbgLogFile(LogSeverityError, owner) << L"text";
    EXPECT_EQ(Take(owner), (Messages{{LogSeverityNone, L"text\n"}}));
}

TEST_F(DebugLogStreamTest, TakeADatabaseAsOwner)
{
    auto* const database = static_cast<CEntityDatabase*>(const_cast<void*>(owner));
    DbgLogFile(LogSeverityError, database) << L"refused";
    ExpectNothing();
    SetLogDebugMessages(true);
    DbgLogFile(LogSeverityError, database) << "text";
    ExpectMessage(L"text\n");
}

// The helper against a stream

namespace
{

/// Inserts the same value into the helper and into the stream.
struct Insertion
{
    std::function<void(CLogStreamHelper&)> intoHelper;
    std::function<void(CLogStream&)> intoStream;
};

template <class T>
Insertion Same(T value)
{
    return {[value](CLogStreamHelper& helper) { helper << value; }, [value](CLogStream& stream) { stream << value; }};
}

Insertion Narrow(const std::string& text)
{
    return {[text](CLogStreamHelper& helper) { helper << text; },
            [text](CLogStream& stream) { stream << std::wstring(text.begin(), text.end()); }};
}

template <class T>
void AddExtremes(std::vector<Insertion>& insertions)
{
    for (const T value :
         {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), T(0), T(1), T(7), T(100), T(-1)})
        insertions.push_back(Same(value));
}

using Manipulator = std::wostream& (*)(std::wostream&);
using BaseManipulator = std::ios_base& (*)(std::ios_base&);

std::vector<Insertion> TextsAndIntegers()
{
    std::vector<Insertion> all{
        Same(L"text"),
        Same(L""),
        Same(L"line\n"),
        Same(std::wstring(L"a\0b", 3)),
        Same(std::wstring(100, L'x')),
        Same(std::wstring(300, L'y')),
        Same(std::wstring_view(L"view")),
        Same(L'c'),
        Same(L'\n'),
        Same('c'),
        Same('\n'),
        Same(true),
        Same(false),
        Narrow("narrow"),
        Narrow(""),
        Narrow(std::string(260, 'n')),
        Same(Manipulator(std::endl)),
        Same(Manipulator(std::flush)),
    };
    AddExtremes<signed char>(all);
    AddExtremes<unsigned char>(all);
    AddExtremes<short>(all);
    AddExtremes<unsigned short>(all);
    AddExtremes<int>(all);
    AddExtremes<unsigned int>(all);
    AddExtremes<long>(all);
    AddExtremes<unsigned long>(all);
    AddExtremes<long long>(all);
    AddExtremes<unsigned long long>(all);
    AddExtremes<float>(all);
    AddExtremes<double>(all);
    for (const double value : {0.1, -0.0, 2.5, 123456.5, 1234567.5, 99999.95, 1e-5, 0.0001, -1e300, 5e-324})
        all.push_back(Same(value));
    return all;
}

enum Plain
{
    plainValue = 42
};

std::vector<Insertion> Others()
{
    return {
        Same(0.1),
        Same(-1e300),
        Same(2.5F),
        Same(1.0L / 3),
        Same(static_cast<const void*>(nullptr)),
        Same(reinterpret_cast<const void*>(std::uintptr_t{0xABC})),
        Same(static_cast<const wchar_t*>(nullptr)),
        Same(nullptr),
        Same(plainValue),
        Same(BaseManipulator(std::hex)),
        Same(BaseManipulator(std::oct)),
        Same(BaseManipulator(std::showbase)),
        Same(BaseManipulator(std::showpos)),
        Same(BaseManipulator(std::boolalpha)),
        Same(BaseManipulator(std::left)),
        Same(BaseManipulator(std::unitbuf)),
        Same(std::setw(9)),
        Same(std::setfill(L'*')),
        Same(std::setprecision(3)),
        Same(Manipulator(std::ends)),
    };
}

Messages Written(const std::vector<const Insertion*>& insertions, bool throughHelper)
{
    const void* const owner = support::NewOwner();
    if (throughHelper)
    {
        CLogStreamHelper helper(owner, LogSeverityError);
        for (const Insertion* insertion : insertions)
            insertion->intoHelper(helper);
    }
    else
    {
        CLogStream stream(owner, LogSeverityError);
        for (const Insertion* insertion : insertions)
            insertion->intoStream(stream);
    }
    return Take(owner);
}

}

class LogStreamEquivalenceTest : public LogStreamTest, public ::testing::WithParamInterface<bool>
{
};

TEST_P(LogStreamEquivalenceTest, HelperWritesWhatAStreamWrites)
{
    const support::GlobalLocale scope(GetParam() ? support::GroupingLocale() : std::locale::classic());
    const auto plain = TextsAndIntegers();
    const auto others = Others();
    std::mt19937 random(20240229);
    for (int round = 0; round < 4000; ++round)
    {
        // Most have none or one of the others, so that both ways and the step between them are met.
        std::vector<const Insertion*> insertions;
        for (auto left = random() % 10; left != 0; --left)
            insertions.push_back(random() % 8 == 0 ? &others[random() % others.size()]
                                                   : &plain[random() % plain.size()]);
        ASSERT_EQ(Written(insertions, true), Written(insertions, false)) << "round " << round;
    }
}

TEST_P(LogStreamEquivalenceTest, EachValueAloneIsWrittenAsAStreamWritesIt)
{
    const support::GlobalLocale scope(GetParam() ? support::GroupingLocale() : std::locale::classic());
    auto all = TextsAndIntegers();
    // Only here: it widens to the mark of the end, which a stream keeps or loses as the room in its buffer happens to
    // be.
    all.push_back(Same('\xE4'));
    for (Insertion& insertion : Others())
        all.push_back(std::move(insertion));
    for (std::size_t i = 0; i < all.size(); ++i)
        EXPECT_EQ(Written({&all[i]}, true), Written({&all[i]}, false)) << "insertion " << i;
}

TEST_F(LogStreamTest, NumberIsRoundedAsAStreamRoundsItInTheThread)
{
    const std::vector<Insertion> numbers = {Same(0.1234565), Same(2.5000001F), Same(-0.1234565)};
    for (const int direction : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO})
    {
        std::fesetround(direction);
        for (const Insertion& number : numbers)
            EXPECT_EQ(Written({&number}, true), Written({&number}, false)) << direction;
    }
    std::fesetround(FE_TONEAREST);
}

INSTANTIATE_TEST_SUITE_P(Locales, LogStreamEquivalenceTest, ::testing::Bool());

/// Some numbers in one message, through a helper and through a stream.
void ExpectAsFromAStream(const std::vector<double>& values)
{
    const void* const owner = support::NewOwner();
    std::wostringstream stream;
    stream.imbue(std::locale::classic());
    {
        CLogStreamHelper helper(owner, LogSeverityError);
        for (const double value : values)
        {
            helper << value << L' ';
            stream << value << L' ';
        }
    }
    ASSERT_EQ(Take(owner), (Messages{{LogSeverityError, stream.str() + L'\n'}}));
}

TEST_F(LogStreamTest, NumbersOfAllSizesAreThoseOfAStream)
{
    std::mt19937_64 random(6);
    CLogStreamHelper helper(owner, LogSeverityError);
    std::wostringstream stream;
    stream.imbue(std::locale::classic());
    for (int i = 0; i < support::Cases(3'000'000); ++i)
    {
        double value = std::bit_cast<double>(random());
        const std::uint64_t digits = random() % 2'000'000;
        switch (random() % 4)
        {
        case 0: // any size
            break;
        case 1: // the usual sizes
            value = static_cast<double>(static_cast<std::int64_t>(random())) * 0x1p-63 *
                    std::pow(10.0, static_cast<int>(random() % 16) - 6);
            break;
        case 2: // a few digits, and those halfway between two texts
            value = static_cast<double>(digits) / std::pow(10.0, static_cast<int>(random() % 12));
            break;
        default: // an exact tie, or a value beside one
            value = std::ldexp(static_cast<double>(digits | 1), -static_cast<int>(random() % 24));
            value = random() % 3 == 0 ? std::nextafter(value, static_cast<double>(random() % 2) * 1e9) : value;
        }
        helper << value << L' ';
        stream << value << L' ';
        if (i % 18 == 17)
        {
            helper << std::flush;
            ASSERT_EQ(Take(owner), (Messages{{LogSeverityError, stream.str() + L'\n'}}));
            stream.str(std::wstring());
        }
    }
}

TEST_F(LogStreamTest, NumbersBesideAPowerOfTenAreThoseOfAStream)
{
    for (int exponent = -320; exponent <= 308; ++exponent)
    {
        for (const double digits : {1.0, 1.000005, 1.0000049999, 9.999995, 9.9999949999, 9.999985, 5.0})
        {
            double value = digits * std::pow(10.0, exponent);
            std::vector<double> values;
            for (int step = 0; step < 4; ++step)
                value = std::nextafter(value, 0.0);
            for (int step = 0; step < 8; ++step, value = std::nextafter(value, 1e308))
                values.insert(values.end(), {value, -value});
            ExpectAsFromAStream(values);
        }
    }
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    ExpectAsFromAStream(
        {0.0, -0.0, 999'999.5, 999'999.4999999999, -999'999.5, 1e-4, 0.00009999995, infinity, -infinity});
    ExpectAsFromAStream({notANumber, 0.1F, 16'777'216.0F, 123'456.5F});
}

TEST_F(LogStreamTest, NumbersAroundTheLengthThatFitsAreWhole)
{
    for (std::size_t length = 225; length < 262; ++length)
    {
        const std::wstring text(length, L'x');
        LogFile(LogSeverityError, owner) << text << -1234567 << 0.000123457 << 18446744073709551615U << -1.5e-300;
        ExpectMessage(text + L"-12345670.00012345718446744073709551615-1.5e-300\n");
        LogFile(LogSeverityError, owner) << text << -0.000123457;
        ExpectMessage(text + L"-0.000123457\n");
        LogFile(LogSeverityError, owner) << text << std::numeric_limits<std::int64_t>::min();
        ExpectMessage(text + L"-9223372036854775808\n");
    }
}

// Several threads

TEST_F(LogStreamThreadTest, MessagesOfSeveralThreadsStayWhole)
{
    constexpr int threadCount = 3;
    constexpr int messageCount = 300;
    CLogMessages::instance(owner).SetLogCapacity(threadCount * messageCount);
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back(
            [this, t]
            {
                for (int i = 0; i < messageCount; ++i)
                {
                    CLogStreamHelper helper(owner, static_cast<LogSeverity>(t + 1));
                    helper << t << L' ' << "number " << i;
                    if (i % 3 == 0)
                        helper << L' ' << 0.5;
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    std::vector<int> next(threadCount, 0);
    for (const auto& [severity, text] : Take(owner))
    {
        const int t = severity - 1;
        const int i = next.at(static_cast<std::size_t>(t))++;
        EXPECT_EQ(text, std::to_wstring(t) + L" number " + std::to_wstring(i) + (i % 3 == 0 ? L" 0.5\n" : L"\n"));
    }
    EXPECT_EQ(next, std::vector<int>(threadCount, messageCount));
}

TEST_F(LogStreamThreadTest, SettingsChangeWhileOthersWrite)
{
    std::thread writer(
        [this]
        {
            for (int i = 0; i < 1000; ++i)
                DbgLogFile(LogSeverityWarning, owner) << L"text";
        });
    for (int i = 0; i < 1000; ++i)
    {
        SetLogLevel(i % 2 == 0 ? LogSeverityError : LogSeverityNone);
        SetLogDebugMessages(i % 3 == 0);
        CLogMessages::SetDefaultLogCapacity(500);
    }
    writer.join();
    for (const auto& [severity, text] : Take(owner))
    {
        EXPECT_TRUE(severity == LogSeverityWarning || severity == LogSeverityNone);
        EXPECT_EQ(text, L"text\n");
    }
}
