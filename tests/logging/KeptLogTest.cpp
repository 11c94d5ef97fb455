#include "utility/logging/internal/KeptLog.h"

#include "tests/support/LogSettings.h"
#include "tests/support/ThreadLog.h"
#include "utility/logging/LogStream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

using utility::detail::EachKeptMessage;
using utility::detail::KeptLog;
using utility::detail::KeptMessage;
using utility::detail::ReadMemory;

namespace
{

/// Byte by byte, as memory of another process may be copied.
bool ReadBytes(std::uint64_t address, void* bytes, std::size_t size)
{
    auto* const from = reinterpret_cast<unsigned char*>(address);
    for (std::size_t i = 0; i != size; ++i)
        static_cast<unsigned char*>(bytes)[i] = std::atomic_ref(from[i]).load(std::memory_order_acquire);
    return true;
}

struct KeptLogTest : testing::Test
{
    void Add(const void* owner, const std::wstring& text) { log->Add(owner, LogSeverityWarning, text); }

    std::vector<std::wstring> Texts(const ReadMemory& read = ReadBytes) const
    {
        std::vector<std::wstring> texts;
        EachKeptMessage(reinterpret_cast<std::uintptr_t>(log.get()), read,
                        [&texts](const KeptMessage& message) { texts.emplace_back(message.Text()); });
        return texts;
    }

    using Expected = std::vector<std::wstring>;
    const std::unique_ptr<KeptLog> log = std::make_unique<KeptLog>();
    const char owners[100] = {};
};

using KeptLogThreadTest = KeptLogTest;

}

TEST_F(KeptLogTest, ThereIsNothingAtFirst) { EXPECT_EQ(Texts(), Expected{}); }

TEST_F(KeptLogTest, MessagesOfAllOwnersComeInTheOrderInWhichTheyWereWritten)
{
    Add(&owners[1], L"one");
    Add(nullptr, L"two");
    Add(&owners[2], L"three");
    Add(&owners[1], L"four");
    EXPECT_EQ(Texts(), (Expected{L"one", L"two", L"three", L"four"}));
}

TEST_F(KeptLogTest, MessageHasItsOwnerSeverityThreadAndTime)
{
    const auto now = []
    {
        const auto time = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::microseconds>(time).count();
    };
    const std::int64_t before = now();
    log->Add(&owners[1], LogSeverityError, L"here");
    std::thread([&] { log->Add(nullptr, LogSeverityTiming, L"there"); }).join();
    const std::int64_t after = now();
    std::vector<KeptMessage> messages;
    EachKeptMessage(reinterpret_cast<std::uintptr_t>(log.get()), ReadBytes,
                    [&](const KeptMessage& message) { messages.push_back(message); });
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0].owner, reinterpret_cast<std::uintptr_t>(&owners[1]));
    EXPECT_EQ(messages[0].severity, LogSeverityError);
    EXPECT_EQ(messages[1].owner, 0u);
    EXPECT_EQ(messages[1].severity, LogSeverityTiming);
    EXPECT_NE(messages[0].thread, messages[1].thread);
    EXPECT_LE(before, messages[0].time);
    EXPECT_LE(messages[0].time, messages[1].time);
    EXPECT_LE(messages[1].time, after);
}

TEST_F(KeptLogTest, NoisyOwnerTakesThePlaceOfItsOwnMessagesAlone)
{
    Add(&owners[1], L"quiet");
    Add(nullptr, L"nobody's");
    for (int number = 1; number <= 1000; ++number)
        Add(&owners[2], std::to_wstring(number));
    Expected expected{L"quiet", L"nobody's"};
    for (int number = 1000 - 32 + 1; number <= 1000; ++number)
        expected.push_back(std::to_wstring(number));
    EXPECT_EQ(Texts(), expected);
}

TEST_F(KeptLogTest, MessagesWithoutAnOwnerStayHoweverManyOwnersThereAre)
{
    Add(nullptr, L"nobody's");
    for (int round = 0; round < 40; ++round)
    {
        for (const char& owner : owners)
            Add(&owner, L"text");
    }
    EXPECT_EQ(Texts().front(), L"nobody's");
}

TEST_F(KeptLogTest, OwnerThatWasSilentForTheLongestTimeGivesItsPlace)
{
    for (int owner = 0; owner < 31; ++owner)
        Add(&owners[owner], std::to_wstring(owner));
    for (int number = 0; number < 31; ++number)
        Add(&owners[0], L"again");
    for (int number = 0; number < 32; ++number)
        Add(&owners[31], L"new");
    const std::vector<std::wstring> texts = Texts();
    EXPECT_EQ(std::count(texts.begin(), texts.end(), L"1"), 0);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), L"0"), 1);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), L"2"), 1);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), L"new"), 32);
    EXPECT_EQ(texts.size(), 30u + 31u + 32u);
}

TEST_F(KeptLogTest, TextThatIsTooLongIsCut)
{
    const std::wstring longest(KeptMessage::textCapacity, L'x');
    for (const std::wstring& text : {longest, longest + L'y', std::wstring(1 << 20, L'x')})
        Add(nullptr, text);
    std::vector<bool> cut;
    EachKeptMessage(reinterpret_cast<std::uintptr_t>(log.get()), ReadBytes,
                    [&](const KeptMessage& message)
                    {
                        EXPECT_EQ(message.Text(), longest);
                        cut.push_back(message.IsCut());
                    });
    EXPECT_EQ(cut, (std::vector<bool>{false, true, true}));
}

TEST_F(KeptLogTest, MessageThatIsBeingWrittenIsLeftOut)
{
    Add(nullptr, L"one");
    Add(nullptr, L"two");
    log->lanes[0].messages[0].state |= 1;
    EXPECT_EQ(Texts(), Expected{L"two"});
}

TEST_F(KeptLogTest, MessageThatIsWrittenAnewWhileItIsReadIsLeftOut)
{
    for (int number = 0; number < 32; ++number)
        Add(nullptr, L"old");
    bool isWritten = false;
    const std::vector<std::wstring> texts = Texts(
        [&](std::uint64_t address, void* bytes, std::size_t size)
        {
            if (size == sizeof(KeptMessage) && !isWritten)
            {
                isWritten = true;
                ReadBytes(address, bytes, size);
                Add(nullptr, L"new");
                return true;
            }
            return ReadBytes(address, bytes, size);
        });
    EXPECT_EQ(texts, Expected(31, L"old"));
}

TEST_F(KeptLogTest, PlaceThatAnotherThreadWritesToIsLeftToIt)
{
    log->lanes[0].messages[0].state = 1;
    Add(nullptr, L"text");
    EXPECT_EQ(log->lanes[0].messages[0].state, 1u);
    EXPECT_EQ(Texts(), Expected{L"text"});
}

TEST_F(KeptLogTest, WriterDoesNotWaitWhereAllPlacesAreBeingWrittenTo)
{
    for (KeptMessage& message : log->lanes[0].messages)
        message.state = 1;
    Add(nullptr, L"lost");
    EXPECT_EQ(Texts(), Expected{});
}

TEST_F(KeptLogTest, NothingButTheBlockIsReadWhateverIsInIt)
{
    std::mt19937 random(4711);
    auto* const words = reinterpret_cast<std::uint32_t*>(log.get());
    const std::uint64_t begin = reinterpret_cast<std::uintptr_t>(log.get());
    for (std::size_t i = 0; i != sizeof(KeptLog) / sizeof *words; ++i)
        words[i] = static_cast<std::uint32_t>(random());
    std::size_t visited = 0;
    EachKeptMessage(
        begin,
        [begin](std::uint64_t address, void* bytes, std::size_t size)
        {
            EXPECT_GE(address, begin);
            EXPECT_LE(address + size, begin + sizeof(KeptLog));
            return ReadBytes(address, bytes, size);
        },
        [&visited](const KeptMessage& message) { visited += message.Text().size() <= KeptMessage::textCapacity; });
    EXPECT_GT(visited, 0u);
    EXPECT_LE(visited, KeptLog::laneCount * KeptLog::laneLength);
}

TEST_F(KeptLogTest, MessagesAheadOfOneThatCannotBeReadAreToldAlone)
{
    for (const wchar_t* const text : {L"one", L"two", L"three"})
        Add(nullptr, text);
    std::size_t readable = KeptLog::laneCount * KeptLog::laneLength + 3;
    EXPECT_EQ(Texts([&](std::uint64_t address, void* bytes, std::size_t size)
                    { return readable-- != 0 && ReadBytes(address, bytes, size); }),
              Expected{L"one"});
    EXPECT_EQ(Texts([](std::uint64_t, void*, std::size_t) { return false; }), Expected{});
}

TEST_F(KeptLogThreadTest, NoMessageIsTornWhileThreadsWrite)
{
    std::atomic<bool> over = false;
    std::vector<std::jthread> threads;
    for (int number = 0; number < 3; ++number)
    {
        threads.emplace_back(
            [&, number]
            {
                // More owners than lanes, and two threads for one of them.
                const std::wstring text(1 + 100 * number, static_cast<wchar_t>(L'a' + number));
                for (std::size_t i = 0; !over; ++i)
                    Add(i % 2 == 0 ? nullptr : &owners[i % std::size(owners)], text);
            });
    }
    std::size_t read = 0;
    for (int round = 0; round < 50 || read < 1000; ++round)
    {
        for (const std::wstring& text : Texts())
        {
            ++read;
            const auto number = static_cast<std::size_t>(text.front() - L'a');
            ASSERT_EQ(text, std::wstring(1 + 100 * number, text.front()));
        }
    }
    over = true;
}

TEST_F(KeptLogTest, HasWhatStoresAreGivenOnceItWasAskedFor)
{
    utility::detail::KeepLog();
    ASSERT_NE(utility::detail::TheKeptLog(), nullptr);
    const support::LogSettings settings;
    const void* const owner = support::NewOwner();
    LogFile(LogSeverityInformation, owner) << L"Number " << 7;
    CLogMessages::instance(owner).push(LogSeverityTiming, L"pushed");
    CLogMessages::instance(owner).push(LogSeverityTiming, L"");
    LogFile(LogSeverityNone, owner) << L"below the level";
    EXPECT_EQ(support::TakeLog(owner).size(), 2u); // which does not take it from the block
    std::vector<std::wstring> texts;
    EachKeptMessage(reinterpret_cast<std::uintptr_t>(utility::detail::TheKeptLog()), ReadBytes,
                    [&](const KeptMessage& message)
                    {
                        if (message.owner == reinterpret_cast<std::uintptr_t>(owner))
                            texts.emplace_back(message.Text());
                    });
    EXPECT_EQ(texts, (Expected{L"Number 7\n", L"pushed"}));
}
