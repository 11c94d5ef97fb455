#include "utility/platform/Locale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

using utility::platform::Locale;

TEST(RuntimeLocaleTest, IsThatOfTheAbbreviation)
{
    const std::string earlier = std::setlocale(LC_ALL, nullptr);
    EXPECT_TRUE(Locale().SetRuntimeLocale(L"DEU"));
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "German_Germany.1252");
    EXPECT_FALSE(Locale().SetRuntimeLocale(L"XXX"));
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "German_Germany.1252");
    std::setlocale(LC_ALL, earlier.c_str());
}
