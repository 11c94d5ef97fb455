#include "utility/platform/posix/handles/Handle.h"

#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <limits>

using utility::platform::posix::HandleKind;
using utility::platform::posix::MakeHandle;
using utility::platform::posix::NumberOf;

TEST(HandleTest, TellsAFileFromAMappingOfTheSameNumber)
{
    for (const int number : {0, 1, 15, 16, std::numeric_limits<int>::max()})
    {
        const HANDLE file = MakeHandle(HandleKind::file, number);
        const HANDLE mapping = MakeHandle(HandleKind::mapping, number);
        EXPECT_EQ(NumberOf(HandleKind::file, file), number);
        EXPECT_EQ(NumberOf(HandleKind::mapping, file), -1);
        EXPECT_EQ(NumberOf(HandleKind::mapping, mapping), number);
        EXPECT_EQ(NumberOf(HandleKind::file, mapping), -1);
    }
}

TEST(HandleTest, NullAndTheInvalidHandleAreOfNoKind)
{
    for (const HANDLE handle : {HANDLE{nullptr}, HANDLE{INVALID_HANDLE_VALUE}})
    {
        EXPECT_EQ(NumberOf(HandleKind::file, handle), -1);
        EXPECT_EQ(NumberOf(HandleKind::mapping, handle), -1);
        EXPECT_FALSE(utility::platform::posix::CloseHandle(handle));
        EXPECT_EQ(utility::platform::LastError(), 6u);
    }
}
