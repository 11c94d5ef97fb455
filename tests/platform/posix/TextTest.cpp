#include "utility/platform/Text.h"

#include "utility/platform/Locale.h"

#include <gtest/gtest.h>

#include <ostream>
#include <set>
#include <string>

using utility::platform::Text;

TEST(PosixTextTest, CodePage54936IsTheOneThatIconvKnowsByAnotherName)
{
    char bytes[4];
    ASSERT_EQ(Text().ToCodePage(54936, L"\u20AC", 1, bytes, 4), 2);
    EXPECT_EQ(std::string(bytes, 2), "\xA2\xE3");
}

namespace
{

/// A text in a code page; "(none)" where that fails.
std::string Encoded(UINT codePage, const std::wstring& text)
{
    char bytes[100];
    const int size = Text().ToCodePage(codePage, text.data(), static_cast<int>(text.size()), bytes, sizeof(bytes));
    return size != 0 ? std::string(bytes, static_cast<std::size_t>(size)) : "(none)";
}

std::wstring Decoded(UINT codePage, const std::string& bytes)
{
    wchar_t text[100];
    const int size = Text().FromCodePage(codePage, bytes.data(), static_cast<int>(bytes.size()), text, 100);
    return size != 0 ? std::wstring(text, static_cast<std::size_t>(size)) : L"(none)";
}

struct PageOfAnotherName
{
    UINT codePage;
    std::wstring text;
    std::string bytes;
};

void PrintTo(const PageOfAnotherName& page, std::ostream* stream) { *stream << page.codePage; }

class PosixCodePageTest : public ::testing::TestWithParam<PageOfAnotherName>
{
};

}

TEST_P(PosixCodePageTest, ConvertsBothWays)
{
    EXPECT_EQ(Encoded(GetParam().codePage, GetParam().text), GetParam().bytes);
    EXPECT_EQ(Decoded(GetParam().codePage, GetParam().bytes), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Pages, PosixCodePageTest,
    ::testing::Values(PageOfAnotherName{1, L"\u00E9\u65E5", "\xC3\xA9\xE6\x97\xA5"},
                      PageOfAnotherName{3, L"\u00E9\u65E5", "\xC3\xA9\xE6\x97\xA5"},
                      PageOfAnotherName{2, L"\u00E9", "\x8E"}, PageOfAnotherName{10000, L"\u00E9", "\x8E"},
                      PageOfAnotherName{20127, L"plain", "plain"}, PageOfAnotherName{20866, L"\u0416", "\xF6"},
                      PageOfAnotherName{21866, L"\u0407", "\xB7"}, PageOfAnotherName{28591, L"\u00E9", "\xE9"},
                      PageOfAnotherName{28592, L"\u0151", "\xF5"}, PageOfAnotherName{28593, L"\u0127", "\xB1"},
                      PageOfAnotherName{28597, L"\u03B1", "\xE1"}, PageOfAnotherName{28599, L"\u011F", "\xF0"},
                      PageOfAnotherName{28605, L"\u20AC", "\xA4"}, PageOfAnotherName{51932, L"\u65E5", "\xC6\xFC"},
                      PageOfAnotherName{51949, L"\uD55C", "\xC7\xD1"}, PageOfAnotherName{65000, L"a\u00E9", "a+AOk-"},
                      PageOfAnotherName{65000, L"\u65E5z", "+ZeU-z"}, PageOfAnotherName{1258, L"\u0102e", "\xC3\x65"},
                      PageOfAnotherName{1258, L"tie", "tie"}));

TEST(PosixTextTest, WhatIsHeldBackStandsAheadOfTheSubstitute)
{
    EXPECT_EQ(Decoded(1258, "e\x8Az"), L"e\uFFFDz");
    EXPECT_EQ(Decoded(932, "a\xFFz"), L"a\uFFFDz");
    EXPECT_EQ(Encoded(65000, std::wstring{L'\u00E9', static_cast<wchar_t>(0x110000), L'z'}), "+AOk-?z");
}

TEST(PosixTextTest, LongTextInAPageThatHoldsBackIsWhole)
{
    const std::string bytes(1000, 'e');
    std::wstring text(1000, L'#');
    EXPECT_EQ(Text().FromCodePage(1258, bytes.data(), 1000, text.data(), 1000), 1000);
    EXPECT_EQ(text, std::wstring(1000, L'e'));
}

TEST(PosixTextTest, NumberBehindTheLastPartOfAStandardIsNoCodePage)
{
    EXPECT_EQ(Encoded(28590, L"text"), "(none)");
    EXPECT_EQ(Encoded(28602, L"text"), "(none)");
    EXPECT_EQ(Encoded(28607, L"text"), "(none)");
}

TEST(PosixTextTest, SystemsNarrowEncodingIsUtf8WhateverTheLocale)
{
    char bytes[4];
    ASSERT_EQ(Text().ToCodePage(0, L"\u65E5", 1, bytes, 4), 3);
    EXPECT_EQ(std::string(bytes, 3), "\xE6\x97\xA5");
}

namespace
{

std::wstring MessageOf(DWORD error, DWORD language)
{
    wchar_t text[256];
    return {text, Text().SystemMessage(error, language, text, 256)};
}

}

class ErrorTextTest : public ::testing::TestWithParam<DWORD>
{
};

TEST_P(ErrorTextTest, IsThereInEachLanguageAndNoneIsThatOfAnother)
{
    std::set<std::wstring> texts;
    for (const DWORD language :
         {0x0409, 0x0804, 0x0404, 0x0407, 0x0C0A, 0x040C, 0x0410, 0x0411, 0x0412, 0x0416, 0x041F})
    {
        const std::wstring text = MessageOf(GetParam(), language);
        EXPECT_NE(text, L"") << language;
        EXPECT_EQ(text.find(L'\xFFFD'), std::wstring::npos) << language;
        texts.insert(text);
    }
    // Two kinds of Chinese may say the same, and so may two languages of a family.
    EXPECT_GE(texts.size(), 9u);
}

INSTANTIATE_TEST_SUITE_P(All, ErrorTextTest,
                         ::testing::Values(0, 1, 2, 3, 4, 5, 6, 8, 12, 15, 16, 17, 18, 19, 25, 29, 30, 31, 32, 33, 38,
                                           39, 50, 80, 87, 109, 112, 122, 123, 126, 131, 145, 161, 170, 183, 193, 206,
                                           223, 234, 259, 267, 487, 998, 1009, 1016, 1018, 1175, 1176, 1813, 1921),
                         ::testing::PrintToStringParamName());

TEST(PosixTextTest, ErrorIsToldInTheLanguageAskedForWhateverTheLocaleOfTheProcess)
{
    EXPECT_EQ(MessageOf(3, 0x0409), L"There is no such folder");
    EXPECT_EQ(MessageOf(3, 0x0807), L"Es gibt keinen solchen Ordner");
    EXPECT_EQ(MessageOf(32, 0x0809), L"Another program is using the file");
    EXPECT_EQ(MessageOf(2, 0x040C), L"Ce fichier n'existe pas");
    EXPECT_EQ(MessageOf(2, 0x0804), L"\u6CA1\u6709\u6B64\u6587\u4EF6");
    for (const DWORD traditional : {0x0404, 0x0C04, 0x1404})
        EXPECT_EQ(MessageOf(2, traditional), L"\u6C92\u6709\u6B64\u6A94\u6848");
    EXPECT_EQ(MessageOf(2, 0x0419), L"There is no such file");
}

TEST(PosixTextTest, ErrorIsToldInTheLanguageOfTheThreadWhereNoneIsAskedFor)
{
    const LCID earlier = utility::platform::Locale().ThreadLocale();
    utility::platform::Locale().SetThreadLocale(0x041F);
    EXPECT_EQ(MessageOf(39, 0), L"Disk dolu");
    utility::platform::Locale().SetThreadLocale(earlier);
}
