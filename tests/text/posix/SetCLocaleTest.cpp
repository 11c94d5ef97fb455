#include "utility/text/SetCLocale.h"

#include "tests/support/DecimalComma.h"

#include <gtest/gtest.h>

#include <atomic>
#include <clocale>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

namespace
{

char SymbolOfThread()
{
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f", 0.5);
    return text[1];
}

}

TEST(SetCLocaleThreadTest, OtherThreadsFormatMeanwhileAsBefore)
{
    const support::DecimalComma comma;
    std::atomic<bool> isDone = false;
    std::atomic<int> formatted = 0;
    std::atomic<int> others = 0;
    std::thread thread(
        [&]
        {
            while (!isDone || formatted == 0)
            {
                others += SymbolOfThread() != ',';
                ++formatted;
            }
        });
    for (int trial = 0; trial < 2000 || formatted < 100; ++trial)
    {
        const CSetCLocale cLocale;
        ASSERT_EQ(SymbolOfThread(), '.');
    }
    isDone = true;
    thread.join();
    EXPECT_EQ(others, 0);
    EXPECT_EQ(SymbolOfThread(), ',');
}

TEST(SetCLocaleThreadTest, ThreadThatIsBegunInsideHasTheLocaleOfTheProcess)
{
    const support::DecimalComma comma;
    const CSetCLocale cLocale;
    char symbol = ' ';
    std::thread([&symbol] { symbol = SymbolOfThread(); }).join();
    EXPECT_EQ(symbol, ',');
}

TEST(SetCLocaleThreadTest, LocaleThatTheThreadHasOfItsOwnIsBackAfterwards)
{
    const locale_t own = ::newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
    ASSERT_NE(own, nullptr);
    const locale_t earlier = ::uselocale(own);
    {
        const CSetCLocale cLocale;
        EXPECT_NE(::uselocale(nullptr), own);
        std::make_unique<CSetCLocale>(cLocale).reset();
    }
    EXPECT_EQ(::uselocale(nullptr), own);
    ::uselocale(earlier);
    ::freelocale(own);
}

TEST(SetCLocaleThreadTest, ThreadFollowsTheProcessAgainAfterwards)
{
    {
        const CSetCLocale cLocale;
        EXPECT_NE(::uselocale(nullptr), LC_GLOBAL_LOCALE);
    }
    EXPECT_EQ(::uselocale(nullptr), LC_GLOBAL_LOCALE);
    const support::DecimalComma comma;
    EXPECT_EQ(SymbolOfThread(), ',');
}
