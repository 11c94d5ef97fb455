#include "utility/logging/LogMessages.h"

#include "tests/support/LogSettings.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

static_assert(sizeof(LogSeverity) == 4);
static_assert(!std::is_default_constructible_v<CLogMessage>);
static_assert(std::is_copy_constructible_v<CLogMessage> && std::is_copy_assignable_v<CLogMessage>);
static_assert(!std::is_constructible_v<CLogMessages, std::uint64_t>);
static_assert(std::is_destructible_v<CLogMessages>);

namespace
{

using Ring = boost::circular_buffer_space_optimized<CLogMessage>;

const LogSeverity levelAtStart = GetLogLevel();
const bool debugMessagesAtStart = LogDebugMessages();
CLogMessages& storeMadeAtStart = CLogMessages::instance(&levelAtStart);

struct LogMessagesTest : ::testing::Test
{
    std::vector<std::wstring> Texts()
    {
        store.pop(ring);
        std::vector<std::wstring> texts;
        for (const CLogMessage& message : ring)
            texts.push_back(message.m_strMessage);
        return texts;
    }
    void Push(const std::wstring& text) { store.push(LogSeverityError, text); }

    using Expected = std::vector<std::wstring>;
    support::LogSettings settings;
    CLogMessages& store = CLogMessages::instance(support::NewOwner());
    Ring ring;
};

using LogSettingsTest = LogMessagesTest;
using LogMessagesThreadTest = LogMessagesTest;

}

TEST(LogSeverityTest, ValuesAreThoseOfTheStoredMessages)
{
    EXPECT_EQ(static_cast<int>(LogSeverityNone), 0);
    EXPECT_EQ(static_cast<int>(LogSeverityInformation), 1);
    EXPECT_EQ(static_cast<int>(LogSeverityWarning), 2);
    EXPECT_EQ(static_cast<int>(LogSeverityError), 4);
    EXPECT_EQ(static_cast<int>(LogSeverityTiming), 8);
}

TEST(LogMessageTest, CopyAndMoveAreMemberwise)
{
    const std::wstring text(100, L'x');
    CLogMessage message(LogSeverityWarning, text);
    const CLogMessage copy(message);
    EXPECT_EQ(copy.m_eSeverity, LogSeverityWarning);
    EXPECT_EQ(copy.m_strMessage, text);
    CLogMessage moved(std::move(message));
    EXPECT_EQ(moved.m_eSeverity, LogSeverityWarning);
    EXPECT_EQ(moved.m_strMessage, text);
    EXPECT_EQ(message.m_eSeverity, LogSeverityWarning);
    EXPECT_EQ(message.m_strMessage, L"");
    message = std::move(moved);
    EXPECT_EQ(message.m_strMessage, text);
    EXPECT_EQ(moved.m_eSeverity, LogSeverityWarning);
    EXPECT_EQ(moved.m_strMessage, L"");
    CLogMessage assigned(LogSeverityNone, L"");
    assigned = copy;
    EXPECT_EQ(assigned.m_eSeverity, LogSeverityWarning);
    EXPECT_EQ(assigned.m_strMessage, text);
}

TEST_F(LogMessagesTest, SameOwnerHasTheSameStoreAndNullIsAnOwner)
{
    CLogMessages& ofNobody = CLogMessages::instance(nullptr);
    EXPECT_EQ(&CLogMessages::instance(nullptr), &ofNobody);
    EXPECT_NE(&store, &ofNobody);
    const void* const owner = support::NewOwner();
    CLogMessages& ofOwner = CLogMessages::instance(owner);
    for (int i = 0; i < 100; ++i)
        CLogMessages::instance(support::NewOwner());
    EXPECT_EQ(&CLogMessages::instance(owner), &ofOwner);
}

TEST_F(LogMessagesTest, StoresShareNoCacheLineWithAnything)
{
    const auto address = [] { return reinterpret_cast<std::uintptr_t>(&CLogMessages::instance(support::NewOwner())); };
    std::set<std::uintptr_t> lines;
    for (int i = 0; i < 100; ++i)
    {
        const std::uintptr_t first = address();
        EXPECT_EQ(first % 64, 0U);
        for (std::uintptr_t line = first; line < first + sizeof(CLogMessages); line += 64)
            EXPECT_TRUE(lines.insert(line).second);
    }
}

TEST_F(LogMessagesTest, MessageInAFullStoreIsWholeWhetherLongerOrShorterThanTheOldest)
{
    store.SetLogCapacity(2);
    for (const std::size_t length : {1U, 2U, 3U, 4U, 5U, 31U, 32U, 33U, 100U, 160U, 161U, 500U})
    {
        const std::wstring text(length, static_cast<wchar_t>(L'a' + length % 26));
        Push(text);
        Push(L"other");
        EXPECT_EQ(Texts(), (Expected{text, L"other"})) << length;
        Push(L"the first of those that are full");
        Push(L"b");
    }
}

TEST_F(LogMessagesTest, MessagesComeBackOldestFirstAsTheyWerePushed)
{
    store.push(LogSeverityNone, L"no line feed");
    store.push(static_cast<LogSeverity>(-3), std::wstring(L"a\0b\n", 4));
    store.pop(ring);
    ASSERT_EQ(ring.size(), 2u);
    EXPECT_EQ(ring[0].m_eSeverity, LogSeverityNone);
    EXPECT_EQ(ring[0].m_strMessage, L"no line feed");
    EXPECT_EQ(ring[1].m_eSeverity, static_cast<LogSeverity>(-3));
    EXPECT_EQ(ring[1].m_strMessage, std::wstring(L"a\0b\n", 4));
}

TEST_F(LogMessagesTest, LevelDoesNotMatterToAStore)
{
    SetLogLevel(LogSeverityTiming);
    store.push(LogSeverityNone, L"a");
    EXPECT_EQ(Texts(), Expected{L"a"});
}

TEST_F(LogMessagesTest, EmptyMessageIsIgnored)
{
    store.SetLogCapacity(2);
    Push(L"a");
    Push(L"");
    Push(L"b");
    Push(L"");
    EXPECT_EQ(Texts(), (Expected{L"a", L"b"}));
}

TEST_F(LogMessagesTest, FiveHundredAreHeldAndTheOldestGoesFirst)
{
    for (int i = 1; i <= 501; ++i)
        Push(std::to_wstring(i));
    const auto texts = Texts();
    ASSERT_EQ(texts.size(), 500u);
    EXPECT_EQ(texts.front(), L"2");
    EXPECT_EQ(texts.back(), L"501");
}

TEST_F(LogMessagesTest, FullStoreKeepsTheOrderHoweverLongTheMessages)
{
    for (const std::size_t capacity : {std::size_t{1}, std::size_t{2}, std::size_t{3}, std::size_t{16}})
    {
        store.SetLogCapacity(capacity);
        Expected all;
        for (std::size_t i = 0; i < 50; ++i)
        {
            all.push_back(std::wstring(i * 37 % 11 * 100 + 1, static_cast<wchar_t>(L'a' + i % 26)));
            store.push(static_cast<LogSeverity>(i), all.back());
        }
        store.pop(ring);
        ASSERT_EQ(ring.size(), capacity);
        for (std::size_t i = 0; i < capacity; ++i)
        {
            EXPECT_EQ(ring[i].m_strMessage, all[50 - capacity + i]);
            EXPECT_EQ(static_cast<std::size_t>(ring[i].m_eSeverity), 50 - capacity + i);
        }
    }
}

TEST_F(LogMessagesTest, ShortMessageDoesNotKeepTheMemoryOfALongOne)
{
    store.SetLogCapacity(1);
    for (const std::wstring text : {L"a", L"longer than what a string holds without memory"})
    {
        Push(std::wstring(100000, L'x'));
        Push(text);
        store.pop(ring);
        EXPECT_EQ(ring.front().m_strMessage, text);
        EXPECT_LT(ring.front().m_strMessage.capacity(), 1000u);
    }
}

TEST_F(LogMessagesTest, MessageUsesTheMemoryOfTheOldestThatWasALittleLonger)
{
    store.SetLogCapacity(1);
    for (const auto& [spare, isUsed] : {std::pair(100u, true), std::pair(200u, false)})
    {
        Push(std::wstring(1000 + spare, L'x'));
        Push(std::wstring(1000, L'x'));
        store.pop(ring);
        EXPECT_EQ(ring.front().m_strMessage.capacity() >= 1000 + spare, isUsed) << spare;
    }
}

TEST_F(LogMessagesTest, CapacityZeroDiscardsEverything)
{
    Push(L"a");
    store.SetLogCapacity(0);
    Push(L"b");
    EXPECT_EQ(Texts(), Expected{});
    EXPECT_EQ(ring.capacity().capacity(), 0u);
    Push(L"c");
    EXPECT_EQ(Texts(), Expected{});
}

TEST_F(LogMessagesTest, SmallerCapacityDeliberatelyDropsTheNewest)
{
    Push(L"a");
    Push(L"b");
    Push(L"c");
    store.SetLogCapacity(2);
    EXPECT_EQ(Texts(), (Expected{L"a", L"b"}));
}

TEST_F(LogMessagesTest, PushAfterASmallerCapacityDropsTheOldest)
{
    for (int i = 0; i < 100; ++i)
        Push(std::to_wstring(i));
    store.SetLogCapacity(2);
    Push(L"new");
    EXPECT_EQ(Texts(), (Expected{L"1", L"new"}));
}

TEST_F(LogMessagesTest, GreaterCapacityLosesNothing)
{
    store.SetLogCapacity(1);
    Push(L"a");
    store.SetLogCapacity(1000000000000);
    for (int i = 0; i < 1000; ++i)
        Push(L"b");
    EXPECT_EQ(Texts().size(), 1001u);
    EXPECT_EQ(ring.capacity().capacity(), 1000000000000u);
}

TEST_F(LogMessagesTest, PopGivesTheCapacityOfTheStoreToTheCallersRing)
{
    store.SetLogCapacity(4);
    Push(L"a");
    Ring mine(Ring::capacity_type(9, 5));
    store.pop(mine);
    EXPECT_EQ(mine.size(), 1u);
    EXPECT_EQ(mine.capacity().capacity(), 4u);
    EXPECT_EQ(mine.capacity().min_capacity(), 0u);
    for (int i = 0; i < 6; ++i)
        Push(L"b");
    EXPECT_EQ(Texts().size(), 4u);
}

TEST_F(LogMessagesTest, SecondPopIsEmptyAndEmptiesTheCallersRing)
{
    Push(L"a");
    store.pop(ring);
    EXPECT_EQ(ring.size(), 1u);
    store.pop(ring);
    EXPECT_TRUE(ring.empty());
    EXPECT_EQ(ring.capacity().capacity(), 500u);
}

TEST_F(LogMessagesTest, MessagesOfTheCallersRingDoNotComeIntoTheStore)
{
    Push(L"a");
    store.pop(ring);
    store.pop(ring);
    EXPECT_EQ(Texts(), Expected{});
}

TEST_F(LogMessagesTest, DefaultCapacityIsThatOfNewStoresOnly)
{
    CLogMessages::SetDefaultLogCapacity(10);
    CLogMessages& newStore = CLogMessages::instance(support::NewOwner());
    for (int i = 0; i < 20; ++i)
    {
        Push(L"a");
        newStore.push(LogSeverityError, L"a");
    }
    EXPECT_EQ(Texts().size(), 20u);
    newStore.pop(ring);
    EXPECT_EQ(ring.size(), 10u);
    EXPECT_EQ(ring.capacity().capacity(), 10u);
}

TEST(LogSettingsAtStartTest, AreInformationNoDebugMessagesAndFiveHundred)
{
    EXPECT_EQ(levelAtStart, LogSeverityInformation);
    EXPECT_FALSE(debugMessagesAtStart);
    Ring ring;
    storeMadeAtStart.pop(ring);
    EXPECT_EQ(ring.capacity().capacity(), 500u);
}

TEST_F(LogSettingsTest, ReadBackAsSet)
{
    SetLogLevel(LogSeverityTiming);
    EXPECT_EQ(GetLogLevel(), LogSeverityTiming);
    SetLogDebugMessages(true);
    EXPECT_TRUE(LogDebugMessages());
    SetLogDebugMessages(false);
    EXPECT_FALSE(LogDebugMessages());
}

TEST_F(LogMessagesThreadTest, ManyThreadsPushAndOnePopsAndNothingIsLost)
{
    constexpr int threadCount = 3;
    constexpr int messageCount = 2000;
    store.SetLogCapacity(threadCount * messageCount);
    std::atomic<int> running = threadCount;
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back(
            [this, t, &running]
            {
                for (int i = 0; i < messageCount; ++i)
                    store.push(static_cast<LogSeverity>(t), std::to_wstring(i));
                --running;
            });
    std::vector<int> next(threadCount, 0);
    bool isLast = false;
    while (!isLast)
    {
        isLast = running == 0;
        store.pop(ring);
        for (const CLogMessage& message : ring)
            EXPECT_EQ(message.m_strMessage, std::to_wstring(next[static_cast<std::size_t>(message.m_eSeverity)]++));
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(next, std::vector<int>(threadCount, messageCount));
}

TEST_F(LogMessagesThreadTest, CapacityChangesWhileOthersPushAndPop)
{
    store.SetLogCapacity(20);
    std::atomic<bool> isRunning = true;
    std::thread pusher(
        [&]
        {
            while (isRunning)
                Push(L"a");
        });
    std::thread popper(
        [&]
        {
            Ring mine;
            while (isRunning)
            {
                store.pop(mine);
                EXPECT_LE(mine.size(), 20u);
            }
        });
    for (std::uint64_t i = 0; i < 2000; ++i)
        store.SetLogCapacity(i % 21);
    isRunning = false;
    pusher.join();
    popper.join();
    store.SetLogCapacity(20);
    Texts();
    Push(L"last");
    EXPECT_EQ(Texts(), Expected{L"last"});
}

TEST_F(LogMessagesThreadTest, CapacityThatIsSetWhileTheCallersMessagesDieIsUndoneByTheSwap)
{
    const auto popped = [this]
    {
        store.pop(ring);
        return ring.capacity().capacity();
    };
    // The store is not locked while so many die, which takes long enough for the other thread to come in the midst.
    const CLogMessage message(LogSeverityError, std::wstring(40, L'x'));
    bool cameBetween = false;
    for (int attempt = 0; attempt < 200 && !cameBetween; ++attempt)
    {
        store.SetLogCapacity(500);
        ring = Ring(200000, message);
        std::atomic<bool> isReady = false;
        std::atomic<bool> isPopping = false;
        std::thread other(
            [&]
            {
                for (isReady = true; !isPopping;)
                    std::this_thread::yield();
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                store.SetLogCapacity(7);
            });
        while (!isReady)
            std::this_thread::yield();
        isPopping = true;
        // The ring that the store had until the swap has the new capacity, and the store has the one from before.
        const bool isSetInTime = popped() == 7;
        other.join();
        cameBetween = popped() == 500 && isSetInTime;
    }
    EXPECT_TRUE(cameBetween);
    EXPECT_EQ(popped(), 500u);
}

TEST_F(LogMessagesThreadTest, EachOfManyOwnersHasItsStoreWhoeverAsks)
{
    // Neighbours, and so many that they are in each other's way.
    constexpr std::size_t ownerCount = 500;
    static const char owners[ownerCount] = {};
    std::vector<std::vector<CLogMessages*>> found(4);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < found.size(); ++t)
        threads.emplace_back(
            [&stores = found[t], t]
            {
                for (int round = 0; round < 20; ++round)
                    for (std::size_t i = 0; i < ownerCount; ++i)
                        stores.push_back(&CLogMessages::instance(owners + (t % 2 == 0 ? i : ownerCount - 1 - i)));
            });
    for (std::thread& thread : threads)
        thread.join();
    const std::vector<CLogMessages*> stores(found[0].begin(), found[0].begin() + ownerCount);
    EXPECT_EQ(std::set<CLogMessages*>(stores.begin(), stores.end()).size(), ownerCount);
    for (std::size_t t = 0; t < found.size(); ++t)
        for (std::size_t i = 0; i < found[t].size(); ++i)
            ASSERT_EQ(found[t][i], stores[t % 2 == 0 ? i % ownerCount : ownerCount - 1 - i % ownerCount]);
}

TEST_F(LogMessagesThreadTest, StoreIsMadeOnceHoweverManyAskForIt)
{
    const void* const owner = support::NewOwner();
    std::vector<CLogMessages*> stores(4, nullptr);
    std::vector<std::thread> threads;
    for (CLogMessages*& found : stores)
        threads.emplace_back([&found, owner] { found = &CLogMessages::instance(owner); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(stores, std::vector<CLogMessages*>(4, stores.front()));
    EXPECT_NE(stores.front(), nullptr);
}
