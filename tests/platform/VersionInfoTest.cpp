#include "utility/platform/VersionInfo.h"

#include "utility/platform/Error.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <memory>

namespace platform = utility::platform;
using utility::platform::VersionInfo;

namespace
{

std::wstring Module(const char* name)
{
    return platform::WideFromPath(boost::filesystem::path(UTILITY_TEST_MODULES) / name);
}

/// The record of tests/modules/WholeVersion.rc.
class VersionInfoTest : public ::testing::Test
{
protected:
    VersionInfoTest()
    {
        const std::wstring path = Module("WholeVersion.dll");
        const DWORD size = VersionInfo().GetFileVersionInfoSizeW(path.c_str());
        m_block = std::make_unique<std::byte[]>(size);
        m_isRead = VersionInfo().GetFileVersionInfoW(path.c_str(), size, m_block.get());
    }

    bool Find(const wchar_t* path) { return VersionInfo().VerQueryValueW(m_block.get(), path, m_value, m_length); }

    std::unique_ptr<std::byte[]> m_block;
    bool m_isRead = false;
    void* m_value = nullptr;
    UINT m_length = 0;
};

}

TEST_F(VersionInfoTest, TextIsFoundInAnyCase)
{
    ASSERT_TRUE(m_isRead);
    for (const wchar_t* path :
         {L"\\StringFileInfo\\0c0a04e4\\InternalName", L"\\STRINGFILEINFO\\0C0A04E4\\internalname"})
    {
        ASSERT_TRUE(Find(path)) << path;
        EXPECT_STREQ(static_cast<const wchar_t*>(m_value), L"internal");
        EXPECT_EQ(m_length, 9u);
    }
}

TEST_F(VersionInfoTest, TranslationsAreAllOfThem)
{
    ASSERT_TRUE(Find(L"\\VarFileInfo\\Translation"));
    EXPECT_EQ(m_length, 8u);
    EXPECT_EQ(static_cast<const DWORD*>(m_value)[1], 0x040E0409u);
}

TEST_F(VersionInfoTest, RootIsTheFixedInformation)
{
    ASSERT_TRUE(Find(L"\\"));
    EXPECT_EQ(m_length, sizeof(VS_FIXEDFILEINFO));
    EXPECT_EQ(static_cast<const VS_FIXEDFILEINFO*>(m_value)->dwSignature, 0xFEEF04BDu);
}

TEST_F(VersionInfoTest, AbsentValueIsNotFound)
{
    EXPECT_FALSE(Find(L"\\StringFileInfo\\0c0a04e4\\Absent"));
    EXPECT_FALSE(Find(L"\\StringFileInfo\\00000000\\InternalName"));
    EXPECT_FALSE(Find(L"\\VarFileInfo\\Absent"));
}

TEST(VersionInfoSizeTest, FileWithoutARecordHasNone)
{
    for (const char* name : {"NoVersion.dll", "missing.dll"})
    {
        platform::SetLastError(0);
        EXPECT_EQ(VersionInfo().GetFileVersionInfoSizeW(Module(name).c_str()), 0u) << name;
        EXPECT_NE(platform::LastError(), 0u) << name;
    }
}
