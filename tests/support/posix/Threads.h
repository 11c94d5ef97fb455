#pragma once

#include "tests/support/posix/Child.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <unistd.h>
#include <vector>

namespace support
{

/// While threads of this process do `work` over and over, forks it, and expects each child to do `task` and come to its
/// end. Both return whether all went well.
template <class Work, class Task>
void ExpectChildrenOfThreadsToWork(Work work, Task task)
{
#ifdef __SANITIZE_ADDRESS__
    // Its own locks stay taken in a child: one in a hundred waits for ever, in a program without the library too.
    GTEST_SKIP() << "The build lacks an allocator that the child of a program with threads can use";
#endif
    std::atomic<bool> over = false;
    std::atomic<bool> isWell = true;
    std::vector<std::jthread> threads;
    for (int number = 0; number < 3; ++number)
        threads.emplace_back(
            [&]
            {
                while (!over)
                    isWell = work() && isWell;
            });
    for (int number = 0; number < 40 && !::testing::Test::HasFailure(); ++number)
    {
        support::Child child(
            [&]
            {
                ::alarm(100); // what waits for ever ends by a signal
                for (int repeated = 0; repeated < 10; ++repeated)
                {
                    if (!task())
                        return 1;
                }
                return 0;
            });
        EXPECT_EQ(child.ExitCode(), 0);
    }
    over = true;
    threads.clear();
    EXPECT_TRUE(isWell);
}

}
