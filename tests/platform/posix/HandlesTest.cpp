#include "utility/platform/Handles.h"

#include "utility/platform/Error.h"

#include <gtest/gtest.h>

using utility::platform::Handles;
using utility::platform::LastError;
using utility::platform::SetLastError;

class HandlesTest : public testing::Test
{
protected:
    HandlesTest() { SetLastError(ERROR_SUCCESS); }
    ~HandlesTest() override { EXPECT_EQ(LastError(), ERROR_INVALID_HANDLE); }
};

TEST_F(HandlesTest, WhatIsNoHandleIsRefused) { EXPECT_FALSE(Handles().CloseHandle(INVALID_HANDLE_VALUE)); }

TEST_F(HandlesTest, WindowStationIsRefused)
{
    EXPECT_FALSE(Handles().CloseWindowStation(reinterpret_cast<HWINSTA>(std::intptr_t{4})));
}

TEST_F(HandlesTest, GraphicObjectIsRefused)
{
    EXPECT_FALSE(Handles().DeleteObject(reinterpret_cast<void*>(std::intptr_t{4})));
}
