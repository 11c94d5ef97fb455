#include "utility/platform/Text.h"

#include <gtest/gtest.h>

using utility::platform::Text;

TEST(PosixTextTest, CodePage54936IsTheOneThatIconvKnowsByAnotherName)
{
    char bytes[4];
    ASSERT_EQ(Text().ToCodePage(54936, L"\u20AC", 1, bytes, 4), 2);
    EXPECT_EQ(std::string(bytes, 2), "\xA2\xE3");
}

TEST(PosixTextTest, SystemsNarrowEncodingIsUtf8WhateverTheLocale)
{
    char bytes[4];
    ASSERT_EQ(Text().ToCodePage(0, L"\u65E5", 1, bytes, 4), 3);
    EXPECT_EQ(std::string(bytes, 3), "\xE6\x97\xA5");
}
