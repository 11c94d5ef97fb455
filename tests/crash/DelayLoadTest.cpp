#include "utility/crash/DelayLoad.h"

#include "utility/files/Places.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <string>

using utility::platform::OpenDelayed;

TEST(DelayLoadHookTest, DoesNothingButForALibraryThatCouldNotBeLoaded)
{
    for (const unsigned int notification : {0U, 1U, 2U, 4U, 5U, 0xFFFFFFFFU})
        EXPECT_EQ(ZeloDliHook(notification, nullptr), nullptr);
}

TEST(DelayLoadHookTest, NamesThatAreOfNoLibraryGiveNone)
{
    const boost::filesystem::path folder = GetExecutablePath() / "folder.library";
    boost::filesystem::create_directory(folder);
    const std::string long5000(5000, 'x');
    for (const std::string& name :
         {std::string(), std::string("."), std::string(".."), std::string("/"), std::string("nowhere/"), long5000,
          "nowhere/" + long5000, std::string("folder.library"), folder.string(),
          std::string("UtilityTestsVersion.cpp")})
    {
        EXPECT_EQ(OpenDelayed(name.c_str(), nullptr), nullptr) << name;
        EXPECT_EQ(OpenDelayed(name.c_str(), &ZeloDliHook), nullptr) << name;
    }
    EXPECT_EQ(OpenDelayed(nullptr, nullptr), nullptr);
    EXPECT_EQ(OpenDelayed(nullptr, &ZeloDliHook), nullptr);
    boost::filesystem::remove(folder);
}
