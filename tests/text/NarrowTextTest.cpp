#include "utility/text/NarrowText.h"

#include "tests/support/GuardedText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <random>
#include <string>

namespace
{

/// The text's last byte is at the end of a page.
const char* Found(const support::GuardedText& text, const char* pattern, std::uint64_t length)
{
    return strnistr(text.First(), pattern, length);
}

/// The place where a slow and obvious search finds a pattern; npos if it does not.
std::size_t ModelOfSearch(std::string text, std::string pattern)
{
    const auto inLowerCase = [](unsigned char c) { return static_cast<char>(std::tolower(c)); };
    std::ranges::transform(text, text.begin(), inLowerCase);
    std::ranges::transform(pattern, pattern.begin(), inLowerCase);
    return text.find(pattern);
}

}

TEST(StrnistrTest, EmptyPatternIsAtTheStartWhateverTheLength)
{
    const char text[] = "abc";
    EXPECT_EQ(strnistr(text, "", 3), text);
    EXPECT_EQ(strnistr(text, "", 0), text);
}

TEST(StrnistrTest, PatternHasToFitIntoTheLength)
{
    const char text[] = "..abc..";
    EXPECT_EQ(strnistr(text, "ABC", 5), text + 2);
    EXPECT_EQ(strnistr(text, "ABC", 4), nullptr);
    EXPECT_EQ(strnistr(text, "ABC", 0), nullptr);
    EXPECT_EQ(strnistr(text, "..ABC..!", 7), nullptr);
    EXPECT_EQ(strnistr(text, "..ABC..", 7), text);
}

TEST(StrnistrTest, NullDoesNotStopTheSearch)
{
    const char text[] = "a\0b\0Needle";
    EXPECT_EQ(strnistr(text, "needle", sizeof text), text + 4);
    EXPECT_EQ(strnistr(text, "needle", 10), text + 4);
    EXPECT_EQ(strnistr(text, "needle", 9), nullptr);
    EXPECT_EQ(strnistr("ab\0d", "abcd", 4), nullptr);
}

TEST(StrnistrTest, CaseIsIgnoredInEachCharacter)
{
    const char text[] = "xXaBcD";
    EXPECT_EQ(strnistr(text, "AbCd", 6), text + 2);
    EXPECT_EQ(strnistr(text, "XxA", 6), text);
    EXPECT_EQ(strnistr(text, "XA", 6), text + 1);
    EXPECT_EQ(strnistr(text, "[", 6), nullptr);
}

TEST(StrnistrTest, FirstOfSeveralPlacesIsFound)
{
    const char text[] = "abababc";
    EXPECT_EQ(strnistr(text, "AB", 7), text);
    EXPECT_EQ(strnistr(text, "ABC", 7), text + 4);
}

TEST(StrnistrTest, BytesBeyondAsciiAreCompared)
{
    const char text[] = "\xE4\xFF\x80";
    EXPECT_EQ(strnistr(text, "\xFF\x80", 3), text + 1);
    EXPECT_EQ(strnistr(text, "\x7F", 3), nullptr);
}

TEST(StrnistrTest, NothingBehindTheLengthIsRead)
{
    const support::GuardedText text("aaabaaaa", support::GuardedText::Touches::pageBehind);
    EXPECT_EQ(Found(text, "AAAAB", 8), nullptr);
    EXPECT_EQ(Found(text, "AAAA", 8), text.First() + 4);
    EXPECT_EQ(Found(text, "BAAAAA", 8), nullptr);
    EXPECT_EQ(Found(text, "AAB", 8), text.First() + 1);
    EXPECT_EQ(Found(text, "X", 8), nullptr);
    EXPECT_EQ(strnistr(text.Last() + 1, "x", 0), nullptr);
}

TEST(StrnistrTest, CallerMayWriteThroughTheResult)
{
    char text[] = "one TWO";
    *strnistr(text, "two", 7) = 'X';
    EXPECT_STREQ(text, "one XWO");
}

TEST(StrnistrTest, RandomSearchesAreThoseOfAModel)
{
    std::mt19937 random(5);
    const auto any = [&random](std::size_t longest)
    {
        std::string text(random() % (longest + 1), '\0');
        for (char& c : text)
            c = "aAbB"[random() % 4];
        return text;
    };
    for (int trial = 0; trial < 5000; ++trial)
    {
        const std::string text = any(12);
        const std::string pattern = any(4);
        const char* const found = strnistr(text.c_str(), pattern.c_str(), text.size());
        const std::size_t place = found == nullptr ? std::string::npos : static_cast<std::size_t>(found - text.c_str());
        ASSERT_EQ(place, ModelOfSearch(text, pattern)) << text << ' ' << pattern;
    }
}

TEST(MBCSByteCountTest, CountsBytesAheadOfTheNull)
{
    EXPECT_EQ(MBCSByteCount(""), 0u);
    EXPECT_EQ(MBCSByteCount("ab\0c"), 2u);
    EXPECT_EQ(MBCSByteCount("\xC3\xA4\xE9\x89\x84"), 5u);
}
