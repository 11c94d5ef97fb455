#include "utility/text/SetCLocale.h"

#include "tests/support/DecimalComma.h"

#include <gtest/gtest.h>

#include <atomic>
#include <clocale>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{

char SymbolOfThread()
{
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f", 0.5);
    return text[1];
}

}

// msvcrt.dll has no locales of threads.
TEST(SetCLocaleThreadTest, WholeProcessGoesByItAsLongAsThereIsOneInAnyThread)
{
    const support::DecimalComma comma;
    auto here = std::make_unique<CSetCLocale>();
    std::atomic<int> step = 0;
    std::thread thread(
        [&step]
        {
            const CSetCLocale there;
            step = 1;
            while (step != 2)
                std::this_thread::yield();
            EXPECT_EQ(SymbolOfThread(), '.');
        });
    while (step != 1)
        std::this_thread::yield();
    here.reset();
    EXPECT_EQ(SymbolOfThread(), '.');
    step = 2;
    thread.join();
    EXPECT_EQ(SymbolOfThread(), ',');
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "German_Germany.1252");
}

TEST(SetCLocaleThreadTest, CopyThatDiesLeavesOtherThreadsAlone)
{
    const support::DecimalComma comma;
    auto here = std::make_unique<CSetCLocale>();
    auto copy = std::make_unique<CSetCLocale>(*here);
    std::atomic<int> step = 0;
    std::thread thread(
        [&step]
        {
            const CSetCLocale there;
            step = 1;
            while (step != 2)
                std::this_thread::yield();
            EXPECT_EQ(SymbolOfThread(), '.');
        });
    while (step != 1)
        std::this_thread::yield();
    here.reset();
    copy.reset();
    step = 2;
    thread.join();
    EXPECT_EQ(SymbolOfThread(), ',');
}

TEST(SetCLocaleThreadTest, ManyThreadsAtOnceEachHaveThePointAndLeaveTheEarlierLocale)
{
    const support::DecimalComma comma;
    std::atomic<int> others = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [&others]
            {
                for (int trial = 0; trial < 500; ++trial)
                {
                    const CSetCLocale cLocale;
                    others += SymbolOfThread() != '.';
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(others, 0);
    EXPECT_EQ(SymbolOfThread(), ',');
}
