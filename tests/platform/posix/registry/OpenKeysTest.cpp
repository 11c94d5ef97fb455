#include "utility/platform/posix/registry/OpenKeys.h"

#include <gtest/gtest.h>

using utility::platform::posix::Hive;
using utility::platform::posix::HiveOwner;
using utility::platform::posix::OpenKeys;

TEST(OpenKeysTest, HandleThatWasClosedIsKnownAsSuchAlsoWhenItsPlaceIsTaken)
{
    auto hive = std::make_unique<Hive>("settings.db", HiveOwner::user);
    OpenKeys keys;
    const HKEY first = keys.Add({&hive, 0, 7, KEY_READ});
    const HKEY second = keys.Add({&hive, 0, 8, KEY_READ});
    ASSERT_NE(keys.Find(first), nullptr);
    EXPECT_EQ(keys.Find(first)->key, 7);
    EXPECT_TRUE(keys.Remove(first));
    const HKEY third = keys.Add({&hive, 0, 9, KEY_READ});
    EXPECT_EQ(keys.Find(first), nullptr);
    EXPECT_FALSE(keys.Remove(first));
    EXPECT_EQ(keys.Find(second)->key, 8);
    EXPECT_EQ(keys.Find(third)->key, 9);
}

TEST(OpenKeysTest, NullAndTheRootsAreNone)
{
    OpenKeys keys;
    for (const HKEY handle : {HKEY{nullptr}, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
    {
        EXPECT_EQ(keys.Find(handle), nullptr);
        EXPECT_FALSE(keys.Remove(handle));
    }
}
