#include "utility/guards/EventSetter.h"

#include "utility/guards/ResourcePtr.h"
#include "utility/platform/Error.h"
#include "utility/platform/Events.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

using utility::platform::Events;
using utility::platform::LastError;

namespace
{

class EventSetterTest : public testing::Test
{
protected:
    static bool IsSet(const resource_ptr<HANDLE>& event) { return Events().Wait(event.get(), 0); }

    const resource_ptr<HANDLE> event{Events().MakeEvent()};
    const resource_ptr<HANDLE> other{Events().MakeEvent()};
};

}

TEST_F(EventSetterTest, EndOfTheScopeSetsTheEventAndItsBeginDoesNot)
{
    {
        const CEventSetter setter(event.get());
        EXPECT_FALSE(IsSet(event));
    }
    EXPECT_TRUE(IsSet(event));
    EXPECT_TRUE(IsSet(event)) << "it stays set";
    EXPECT_FALSE(IsSet(other));
}

TEST_F(EventSetterTest, ExceptionThatLeavesTheScopeSetsTheEvent)
{
    EXPECT_THROW(
        {
            const CEventSetter setter(event.get());
            throw std::runtime_error("");
        },
        std::runtime_error);
    EXPECT_TRUE(IsSet(event));
}

TEST_F(EventSetterTest, CopyThatWasAssignedSetsTheNewEventAndNotItsEarlierOne)
{
    {
        const CEventSetter setter(event.get());
        {
            CEventSetter copy(other.get());
            copy = setter;
        }
        EXPECT_TRUE(IsSet(event));
        EXPECT_FALSE(IsSet(other));
    }
}

TEST_F(EventSetterTest, AnotherThreadWaitsForIt)
{
    std::thread thread([this] { const CEventSetter setter(event.get()); });
    EXPECT_TRUE(Events().Wait(event.get(), 0xFFFFFFFF));
    thread.join();
}

TEST_F(EventSetterTest, WhatIsNoEventIsLeftAlone)
{
    {
        const CEventSetter setter(nullptr);
    }
    EXPECT_FALSE(Events().Set(nullptr));
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(Events().Wait(nullptr, 0));
}
