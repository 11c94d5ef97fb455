#include "utility/guards/ThreadPriority.h"

#include "tests/support/Substitute.h"
#include "utility/platform/Error.h"
#include "utility/platform/ThreadPriorities.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using utility::platform::ThreadPriorities;

namespace
{

class RecordingPriorities : public utility::platform::ThreadPriorityService
{
public:
    HANDLE CallingThread() override { return reinterpret_cast<HANDLE>(std::intptr_t{70}); }
    int Priority(HANDLE thread) override
    {
        Record("ask", thread, 0);
        return -3;
    }
    bool SetPriority(HANDLE thread, int priority) override
    {
        Record("set", thread, priority);
        return false;
    }

    std::vector<std::string> calls;

private:
    void Record(const std::string& name, HANDLE thread, int priority)
    {
        calls.push_back(name + ' ' + std::to_string(reinterpret_cast<std::intptr_t>(thread)) + ' ' +
                        std::to_string(priority));
    }

    support::Substitute<utility::platform::ThreadPriorityService> m_scope{utility::platform::ThreadPrioritiesSlot(),
                                                                          *this};
};

int OwnPriority() { return ThreadPriorities().Priority(ThreadPriorities().CallingThread()); }

}

TEST(ThreadPriorityTest, IsTheCallingThreadsForTheScopeWhateverTheSystemSays)
{
    RecordingPriorities priorities;
    {
        const CThreadPriority priority(2);
        EXPECT_EQ(priorities.calls, (std::vector<std::string>{"ask 70 0", "set 70 2"}));
    }
    EXPECT_EQ(priorities.calls.back(), "set 70 -3");
    EXPECT_EQ(priorities.calls.size(), 3u);
}

TEST(ThreadPriorityTest, IsThatOfAnotherThreadWhereOneIsGiven)
{
    RecordingPriorities priorities;
    {
        const CThreadPriority priority(reinterpret_cast<HANDLE>(std::intptr_t{4}), -2);
    }
    EXPECT_EQ(priorities.calls, (std::vector<std::string>{"ask 4 0", "set 4 -2", "set 4 -3"}));
}

TEST(ThreadPriorityTest, ThreadHasItAndThenItsOwnAgain)
{
    std::thread(
        []
        {
            const int before = OwnPriority();
            {
                const CThreadPriority priority(-2);
                // What could not be taken back is refused.
                EXPECT_TRUE(OwnPriority() == -2 || OwnPriority() == before) << OwnPriority();
                const CThreadPriority inner(-15);
            }
            EXPECT_EQ(OwnPriority(), before);
        })
        .join();
}

TEST(ThreadPriorityTest, PriorityThatDoesNotExistIsRefused)
{
    const int before = OwnPriority();
    {
        const CThreadPriority priority(77);
        EXPECT_EQ(OwnPriority(), before);
        EXPECT_FALSE(ThreadPriorities().SetPriority(ThreadPriorities().CallingThread(), 77));
    }
    EXPECT_EQ(OwnPriority(), before);
}
