#include "utility/platform/Registry.h"

#include "utility/platform/Hives.h"

#include <gtest/gtest.h>

namespace
{

TEST(HiveFilesTest, AreTheRegistrysOwnMatter)
{
    EXPECT_FALSE(utility::platform::SetHiveFile(HKEY_CURRENT_USER, "user.db"));
    EXPECT_TRUE(utility::platform::HiveFile(HKEY_CURRENT_USER).empty());
    EXPECT_TRUE(utility::platform::HiveFile(HKEY_LOCAL_MACHINE).empty());
}

}
