#include "utility/platform/formats/Utf8.h"

#include "utility/platform/formats/Utf16.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

using namespace utility::platform::formats;

TEST(Utf8Test, EveryCodePointSurvives)
{
    for (std::uint32_t code = 0; code <= 0x10FFFF; ++code)
    {
        if (code >= 0xD800 && code <= 0xDFFF)
            continue;
        std::wstring text;
        AppendCodePoint(text, code);
        const std::string bytes = Utf8FromWide(text);
        const std::size_t length = code < 0x80 ? 1u : code < 0x800 ? 2u : code < 0x10000 ? 3u : 4u;
        ASSERT_EQ(bytes.size(), length) << code;
        ASSERT_EQ(WideFromUtf8(bytes), text) << code;
        ASSERT_EQ(WideFromUtf8(bytes, Malformed::escaped), text) << code;
    }
}

TEST(Utf8Test, WhatIsNoCodePointBecomesTheReplacementCharacter)
{
    for (const std::uint32_t code : {0xD800u, 0xDBFFu, 0xDC80u, 0xDFFFu, 0x110000u, 0x7FFFFFFFu, 0x80000000u})
    {
        if (code > 0xFFFF && sizeof(wchar_t) == sizeof(char16_t))
            continue;
        EXPECT_EQ(Utf8FromWide(std::wstring(1, static_cast<wchar_t>(code))), "\xEF\xBF\xBD") << code;
        if (code > 0xFFFF)
        {
            EXPECT_EQ(Utf8FromWide(std::wstring(1, static_cast<wchar_t>(code)), Malformed::escaped), "\xEF\xBF\xBD");
            EXPECT_EQ(Utf8FromWide(std::wstring(1, static_cast<wchar_t>(code)), Malformed::kept), "\xEF\xBF\xBD");
        }
    }
}

TEST(Utf8Test, SurrogatesAreAPairWhereWideTextIsUtf16)
{
    const std::wstring halves = L"\xD83D\xDE00";
    const bool isUtf16 = sizeof(wchar_t) == sizeof(char16_t);
    EXPECT_EQ(Utf8FromWide(halves), isUtf16 ? "\xF0\x9F\x98\x80" : "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(Utf8FromWide(halves + L"z"), Utf8FromWide(halves) + 'z');
    EXPECT_EQ(Utf8FromWide(L"\xDE00\xD83D"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(Utf8FromWide(L"\xD83D\xD83D"), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Utf8Test, EscapedBytesSurviveWhateverTheyAre)
{
    for (unsigned int pair = 0; pair < 0x10000; ++pair)
    {
        const std::string bytes = {static_cast<char>(pair >> 8), static_cast<char>(pair)};
        ASSERT_EQ(Utf8FromWide(WideFromUtf8(bytes, Malformed::escaped), Malformed::escaped), bytes) << pair;
    }
    std::mt19937 random(1);
    for (int round = 0; round < 100000; ++round)
    {
        std::string bytes(3 + random() % 8, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(0x60 + random() % 0xA0);
        ASSERT_EQ(Utf8FromWide(WideFromUtf8(bytes, Malformed::escaped), Malformed::escaped), bytes) << round;
    }
}

TEST(Utf8Test, KeptSurrogatesAreToldFromEachOtherAndFromWhatReplacesThem)
{
    std::set<std::string> stored{Utf8FromWide(L"\uFFFD", Malformed::kept)};
    for (wchar_t each = 0xD800; each <= 0xDFFF; ++each)
    {
        const std::wstring text = {L'a', each, L'b'};
        const std::string bytes = Utf8FromWide(text, Malformed::kept);
        ASSERT_EQ(bytes.size(), 5u);
        EXPECT_EQ(WideFromUtf8(bytes, Malformed::kept), text);
        const bool isEscape = each >= 0xDC80 && each <= 0xDCFF;
        EXPECT_EQ(Utf8FromWide(text, Malformed::escaped) == bytes, !isEscape);
        stored.insert(bytes);
    }
    EXPECT_EQ(stored.size(), 1u + 0x800);
    EXPECT_EQ(WideFromUtf8("\xED\xA0", Malformed::kept), L"\uFFFD");
    EXPECT_EQ(WideFromUtf8("\xF0\x9F\x98\x80", Malformed::kept), L"\U0001F600");
    EXPECT_EQ(Utf8FromWide(L"\U0001F600", Malformed::kept), "\xF0\x9F\x98\x80");
}

TEST(Utf8Test, EachMalformedSequenceIsReplacedOnce)
{
    EXPECT_EQ(WideFromUtf8("a\xE2\x82z"), L"a\uFFFDz");
    EXPECT_EQ(WideFromUtf8("\xF0\x9F\x98"), L"\uFFFD");
    EXPECT_EQ(WideFromUtf8("\xED\xA0\x80"), L"\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(WideFromUtf8("\xE0\x9F\xBF"), L"\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(WideFromUtf8("\xF0\x8F\xBF\xBF"), L"\uFFFD\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(WideFromUtf8("\xC1\xBF"), L"\uFFFD\uFFFD");
}
