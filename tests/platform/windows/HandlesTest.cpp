#include "utility/platform/Handles.h"

#include "utility/guards/ResourcePtr.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

using utility::platform::Handles;
using utility::platform::LastError;

TEST(HandlesTest, WhatIsNoHandleIsRefused)
{
    EXPECT_FALSE(Handles().CloseHandle(reinterpret_cast<HANDLE>(std::intptr_t{0x7FFFFFFC})));
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(Handles().CloseWindowStation(reinterpret_cast<HWINSTA>(std::intptr_t{0x7FFFFFFC})));
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(Handles().DeleteObject(reinterpret_cast<void*>(std::intptr_t{0x7FFFFFFC})));
}

TEST(HandlesTest, EventIsClosed)
{
    const HANDLE event = ::CreateEventW(nullptr, TRUE, TRUE, nullptr);
    ASSERT_EQ(::WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    {
        const resource_ptr<HANDLE> owner(event);
    }
    EXPECT_EQ(::WaitForSingleObject(event, 0), WAIT_FAILED);
}

TEST(HandlesTest, WindowStationIsClosed)
{
    const HWINSTA station = ::CreateWindowStationW(nullptr, 0, READ_CONTROL, nullptr);
    ASSERT_NE(station, nullptr);
    {
        const resource_ptr<HWINSTA> owner(station);
    }
    DWORD flags = 0;
    EXPECT_FALSE(::GetHandleInformation(station, &flags));
}

TEST(HandlesTest, GraphicObjectIsDeleted)
{
    const HBRUSH brush = ::CreateSolidBrush(RGB(1, 2, 3));
    ASSERT_EQ(::GetObjectType(brush), static_cast<DWORD>(OBJ_BRUSH));
    {
        const resource_ptr<HBRUSH> owner(brush);
    }
    EXPECT_EQ(::GetObjectType(brush), 0u);
}
