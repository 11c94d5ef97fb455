#include "utility/platform/Debugger.h"

#include <gtest/gtest.h>

TEST(PosixDebuggerTest, WritesUtf8ToTheErrorStream)
{
    ::testing::internal::CaptureStderr();
    utility::platform::Debugger().Output(L"90\u00B0 \u65E5\n");
    utility::platform::Debugger().Output(L"");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "90\xC2\xB0 \xE6\x97\xA5\n");
}
