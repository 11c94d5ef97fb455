#include "utility/platform/MovableMemory.h"

#include "tests/support/ForwardingHeap.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

TEST(PosixMovableMemoryTest, MemoryThatThereIsNotIsNull)
{
    support::ForwardingHeap heap;
    heap.failAt = 1;
    EXPECT_EQ(utility::platform::MovableMemory().GlobalAlloc(1), nullptr);
    EXPECT_EQ(utility::platform::LastError(), 8u);
}
