#include "utility/platform/VersionInfo.h"

#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <memory>

using utility::platform::LastError;
using utility::platform::VersionInfo;

namespace
{

const wchar_t* const version = L"" UTILITY_TEST_MODULES "/WholeVersion.dll";
const wchar_t* const noVersion = L"" UTILITY_TEST_MODULES "/NoVersion.dll";
const wchar_t* const missing = L"" UTILITY_TEST_MODULES "/missing.dll";

}

TEST(PosixVersionInfoTest, FileWithoutARecordSaysWhy)
{
    std::byte block[1000];
    EXPECT_EQ(VersionInfo().GetFileVersionInfoSizeW(noVersion), 0u);
    EXPECT_EQ(LastError(), 1813u);
    EXPECT_FALSE(VersionInfo().GetFileVersionInfoW(noVersion, sizeof(block), block));
    EXPECT_EQ(LastError(), 1813u);
    EXPECT_EQ(VersionInfo().GetFileVersionInfoSizeW(missing), 0u);
    EXPECT_EQ(LastError(), 2u);
}

TEST(PosixVersionInfoTest, RecordThatHasGrownMeanwhileIsNotRead)
{
    const DWORD size = VersionInfo().GetFileVersionInfoSizeW(version);
    ASSERT_GT(size, 0u);
    const auto block = std::make_unique<std::byte[]>(size - 1);
    EXPECT_FALSE(VersionInfo().GetFileVersionInfoW(version, size - 1, block.get()));
    EXPECT_EQ(LastError(), 122u);
}
