#include "utility/platform/MovableMemory.h"

#include <gtest/gtest.h>

using utility::platform::MovableMemory;

TEST(MovableMemoryTest, BlockKeepsWhatIsWrittenWhileItIsUnlocked)
{
    const HANDLE memory = MovableMemory().GlobalAlloc(1000);
    ASSERT_NE(memory, nullptr);
    auto* bytes = static_cast<char*>(MovableMemory().GlobalLock(memory));
    ASSERT_NE(bytes, nullptr);
    bytes[999] = 'x';
    MovableMemory().GlobalUnlock(memory);
    bytes = static_cast<char*>(MovableMemory().GlobalLock(memory));
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes[999], 'x');
    MovableMemory().GlobalUnlock(memory);
    MovableMemory().GlobalFree(memory);
}
