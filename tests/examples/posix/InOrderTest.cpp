#include "examples/InOrder.h"

#include "tests/support/posix/FailingCall.h"

#include <gtest/gtest.h>

#include <new>

namespace
{

TEST(PosixInOrderThreadsTest, LackOfMemoryForAThreadLeavesItsWorkToOthers)
{
    using Numbers = InOrder<std::size_t, int>;
    std::size_t worked = 0;
    bool hasFailed = true;
    for (int at = 1; hasFailed; ++at)
    {
        std::optional<Numbers> numbers;
        {
            const support::FailingCall failing("operator new", 0, at);
            try
            {
                numbers.emplace(
                    4, 20, [] { return 0; }, [](int&, std::size_t number) { return number; });
            }
            catch (const std::bad_alloc&)
            {
            }
            hasFailed = failing.HasFailed();
        }
        if (!numbers)
            continue;
        worked += hasFailed ? 1 : 0;
        for (std::size_t i = 0; i < 20; ++i)
            EXPECT_EQ(numbers->Next(), i) << at;
        EXPECT_FALSE(numbers->Next());
    }
    EXPECT_GE(worked, 3u);
}

}
