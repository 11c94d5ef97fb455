#include "examples/InOrder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <numeric>
#include <stdexcept>

namespace
{

/// Of one thread.
struct Hand
{
    std::thread::id thread = std::this_thread::get_id();
};

struct Done
{
    std::size_t number;
    std::thread::id thread;
    bool hasOwnState;
};

Done Do(Hand& hand, std::size_t number)
{
    return {number, std::this_thread::get_id(), hand.thread == std::this_thread::get_id()};
}

std::vector<std::size_t> NumbersOf(std::size_t threads, std::size_t count,
                                   const std::function<Done(Hand&, std::size_t)>& work = Do)
{
    InOrder<Done, Hand> pieces(
        threads, count, [] { return Hand(); }, work);
    std::vector<std::size_t> numbers;
    while (const std::optional<Done> done = pieces.Next())
    {
        EXPECT_TRUE(done->hasOwnState);
        numbers.push_back(done->number);
    }
    EXPECT_FALSE(pieces.Next());
    return numbers;
}

std::vector<std::size_t> UpTo(std::size_t count)
{
    std::vector<std::size_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), std::size_t{0});
    return numbers;
}

TEST(InOrderThreadsTest, ResultsAreInTheOrderOfTheirNumbersOnAnyNumberOfThreads)
{
    for (const std::size_t threads : {1U, 2U, 3U, 8U, 50U})
    {
        for (const std::size_t count : {0U, 1U, 2U, 7U, 500U})
            EXPECT_EQ(NumbersOf(threads, count), UpTo(count)) << threads << " threads";
    }
}

TEST(InOrderThreadsTest, OneThreadIsTheCallingOne)
{
    InOrder<Done, Hand> pieces(
        1, 20, [] { return Hand(); }, Do);
    while (const std::optional<Done> done = pieces.Next())
        EXPECT_EQ(done->thread, std::this_thread::get_id());
}

TEST(InOrderThreadsTest, PiecesThatTakeLongDoNotChangeTheOrder)
{
    const auto work = [](Hand& hand, std::size_t number)
    {
        if (number % 7 == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
        return Do(hand, number);
    };
    EXPECT_EQ(NumbersOf(4, 60, work), UpTo(60));
}

TEST(InOrderThreadsTest, TwoWorkAtATime)
{
    // The first piece ends when another one has begun.
    std::atomic<bool> hasOther = false;
    const auto work = [&](Hand& hand, std::size_t number)
    {
        if (number != 0)
            hasOther = true;
        while (!hasOther)
            std::this_thread::yield();
        return Do(hand, number);
    };
    EXPECT_EQ(NumbersOf(2, 10, work), UpTo(10));
}

TEST(InOrderThreadsTest, NoneGoesFarAheadOfWhatWasTaken)
{
    std::atomic<std::size_t> begun = 0;
    InOrder<std::size_t, Hand> pieces(
        3, 1000, [] { return Hand(); },
        [&](Hand&, std::size_t number)
        {
            ++begun;
            return number;
        });
    EXPECT_EQ(pieces.Next(), std::size_t{0});
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_LE(begun, 13u);
}

TEST(InOrderThreadsTest, WhatIsThrownComesWhereTheResultWouldAndWhatIsInFrontOfItIsThere)
{
    for (const std::size_t threads : {1U, 4U})
    {
        InOrder<std::size_t, Hand> pieces(
            threads, 100, [] { return Hand(); },
            [](Hand&, std::size_t number)
            {
                if (number == 30)
                    throw std::runtime_error("30");
                return number;
            });
        for (std::size_t i = 0; i < 30; ++i)
            EXPECT_EQ(pieces.Next(), i);
        EXPECT_THROW(pieces.Next(), std::runtime_error);
        EXPECT_EQ(pieces.Next(), std::size_t{31});
    }
}

TEST(InOrderThreadsTest, WhatIsNotTakenIsNotDone)
{
    std::atomic<std::size_t> done = 0;
    {
        InOrder<std::unique_ptr<int>, Hand> pieces(
            4, 1'000'000, [] { return Hand(); },
            [&](Hand&, std::size_t)
            {
                ++done;
                return std::make_unique<int>(1);
            });
        EXPECT_EQ(**pieces.Next(), 1);
    }
    EXPECT_LE(done, 30u);
}

TEST(InOrderThreadsTest, AThreadThatCannotBeginLeavesItsWorkToOthers)
{
    const std::thread::id own = std::this_thread::get_id();
    InOrder<std::size_t, Hand> pieces(
        3, 50,
        [own]
        {
            if (std::this_thread::get_id() != own)
                throw std::bad_alloc();
            return Hand();
        },
        [](Hand&, std::size_t number) { return number; });
    for (std::size_t i = 0; i < 50; ++i)
        EXPECT_EQ(pieces.Next(), i);
    EXPECT_FALSE(pieces.Next());
}

}
