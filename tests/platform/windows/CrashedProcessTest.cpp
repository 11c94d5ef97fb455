#include "utility/platform/CrashedProcess.h"

#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <windows.h>

using utility::platform::CrashedProcess;

TEST(WindowsCrashedProcessTest, SystemTellsItsVersionAndThatItDid)
{
    utility::platform::SystemVersion version;
    std::int32_t result = -1;
    EXPECT_TRUE(CrashedProcess().QueryVersion(version, result));
    EXPECT_EQ(result, 0);
    EXPECT_GE(version.major, 6U);
    EXPECT_NE(version.build, 0U);
    EXPECT_NE(version.productType, 0U);
}

TEST(WindowsCrashedProcessTest, SystemDescribesAnExceptionAsItDoesForAnybody)
{
    constexpr DWORD noMemory = 0xC0000017;
    std::wstring expected(128, L'\0');
    const DWORD length =
        ::FormatMessageW(0xA00, ::GetModuleHandleW(L"ntdll.dll"), noMemory, 0, expected.data(), 128, nullptr);
    std::wstring text(128, L'\0');
    EXPECT_EQ(CrashedProcess().DescribeException(noMemory, text), length != 0);
    EXPECT_EQ(text, expected);
}

TEST(WindowsCrashedProcessTest, ReportsGoToTheLocalDataOfTheUser)
{
    EXPECT_TRUE(CrashedProcess().LocalDataFolder().is_absolute());
    EXPECT_EQ(CrashedProcess().LocalDataFolder().filename(), L"Local");
}
