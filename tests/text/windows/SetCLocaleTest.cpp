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

/// Has a CSetCLocale from the start, and looks at the symbol again when it is to finish.
class OtherThread
{
public:
    OtherThread()
    {
        while (m_step != 1)
            std::this_thread::yield();
    }
    void Finish()
    {
        m_step = 2;
        m_thread.join();
    }

private:
    void Run()
    {
        const CSetCLocale there;
        m_step = 1;
        while (m_step != 2)
            std::this_thread::yield();
        EXPECT_EQ(SymbolOfThread(), '.');
    }

    std::atomic<int> m_step = 0;
    std::thread m_thread{[this] { Run(); }};
};

}

// msvcrt.dll has no locales of threads.
TEST(SetCLocaleThreadTest, WholeProcessGoesByItAsLongAsThereIsOneInAnyThread)
{
    const support::DecimalComma comma;
    auto here = std::make_unique<CSetCLocale>();
    OtherThread other;
    here.reset();
    EXPECT_EQ(SymbolOfThread(), '.');
    other.Finish();
    EXPECT_EQ(SymbolOfThread(), ',');
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "German_Germany.1252");
}

TEST(SetCLocaleThreadTest, CopyThatDiesLeavesOtherThreadsAlone)
{
    const support::DecimalComma comma;
    auto here = std::make_unique<CSetCLocale>();
    auto copy = std::make_unique<CSetCLocale>(*here);
    OtherThread other;
    here.reset();
    copy.reset();
    other.Finish();
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
