#include "utility/platform/Text.h"

#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <ostream>

namespace platform = utility::platform;
using utility::platform::Text;

namespace
{

std::string ToCodePage(UINT codePage, const std::wstring& text)
{
    const int length = static_cast<int>(text.size());
    std::string bytes(static_cast<std::size_t>(Text().ToCodePage(codePage, text.data(), length, nullptr, 0)), '#');
    EXPECT_EQ(Text().ToCodePage(codePage, text.data(), length, bytes.data(), static_cast<int>(bytes.size())),
              static_cast<int>(bytes.size()));
    return bytes;
}

std::wstring FromCodePage(UINT codePage, const std::string& bytes)
{
    const int length = static_cast<int>(bytes.size());
    std::wstring text(static_cast<std::size_t>(Text().FromCodePage(codePage, bytes.data(), length, nullptr, 0)), L'#');
    EXPECT_EQ(Text().FromCodePage(codePage, bytes.data(), length, text.data(), static_cast<int>(text.size())),
              static_cast<int>(text.size()));
    return text;
}

struct CodePageCase
{
    UINT codePage;
    std::wstring text;
    std::string bytes;
};

void PrintTo(const CodePageCase& row, std::ostream* stream)
{
    *stream << row.codePage << ' ' << ::testing::PrintToString(row.bytes);
}

class CodePageTest : public ::testing::TestWithParam<CodePageCase>
{
};

class MalformedUtf8Test : public ::testing::TestWithParam<CodePageCase>
{
};

}

TEST_P(CodePageTest, ConvertsBothWays)
{
    EXPECT_EQ(ToCodePage(GetParam().codePage, GetParam().text), GetParam().bytes);
    EXPECT_EQ(FromCodePage(GetParam().codePage, GetParam().bytes), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Pages, CodePageTest,
    ::testing::Values(CodePageCase{65001, L"plain", "plain"}, CodePageCase{65001, L"\u00B0", "\xC2\xB0"},
                      CodePageCase{65001, L"\u20AC\u65E5", "\xE2\x82\xAC\xE6\x97\xA5"},
                      CodePageCase{65001, L"\U0001F600", "\xF0\x9F\x98\x80"},
                      CodePageCase{65001, L"\u007F\u0080\u07FF\u0800\uFFFD",
                                   "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBD"},
                      CodePageCase{65001, std::wstring(L"a\0b", 3), std::string("a\0b", 3)},
                      CodePageCase{0, L"plain", "plain"}, CodePageCase{1252, L"\u20AC\u00E9\u00FF", "\x80\xE9\xFF"},
                      CodePageCase{1251, L"\u0416\u0451", "\xC6\xB8"},
                      CodePageCase{932, L"a\u65E5\u672C\uFF71", "a\x93\xFA\x96\x7B\xB1"},
                      CodePageCase{936, L"\u4E2D", "\xD6\xD0"}, CodePageCase{949, L"\uD55C", "\xC7\xD1"},
                      CodePageCase{950, L"\u4E2D", "\xA4\xA4"}, CodePageCase{1254, L"\u011F", "\xF0"},
                      CodePageCase{1252, std::wstring(1000, L'\u00E9'), std::string(1000, '\xE9')},
                      CodePageCase{932, std::wstring(1000, L'\u65E5'),
                                   []
                                   {
                                       std::string bytes;
                                       for (int i = 0; i < 1000; ++i)
                                           bytes += "\x93\xFA";
                                       return bytes;
                                   }()}));

TEST(TextTest, SystemsNarrowEncodingHoldsGermanText)
{
    EXPECT_EQ(FromCodePage(0, ToCodePage(0, L"\u00E4\u00DF")), L"\u00E4\u00DF");
}

TEST(TextTest, CharacterWithoutCounterpartBecomesTheSubstitute)
{
    EXPECT_EQ(ToCodePage(1252, L"a\u65E5z"), "a?z");
    EXPECT_EQ(ToCodePage(932, L"a\uD55Cz"), "a?z");
}

TEST(TextTest, LoneSurrogateBecomesTheReplacementCharacter)
{
    EXPECT_EQ(ToCodePage(65001, std::wstring{L'a', static_cast<wchar_t>(0xD800), L'z'}), "a\xEF\xBF\xBDz");
    EXPECT_EQ(ToCodePage(65001, std::wstring{L'a', static_cast<wchar_t>(0xDFFF)}), "a\xEF\xBF\xBD");
}

TEST_P(MalformedUtf8Test, IsReplaced) { EXPECT_EQ(FromCodePage(65001, GetParam().bytes), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(Bytes, MalformedUtf8Test,
                         ::testing::Values(CodePageCase{0, L"a\uFFFDz", "a\xFFz"},
                                           CodePageCase{0, L"a\uFFFDz", "a\x80z"}, CodePageCase{0, L"a\uFFFD", "a\xC3"},
                                           CodePageCase{0, L"a\uFFFDz", "a\xE2\x82z"},
                                           CodePageCase{0, L"a\uFFFD", "a\xE2\x82"},
                                           CodePageCase{0, L"a\uFFFD", "a\xF0\x9F\x98"},
                                           CodePageCase{0, L"\uFFFD\uFFFDz", "\xC0\xAFz"},
                                           CodePageCase{0, L"\uFFFD\u00B0", "\xE2\xC2\xB0"}));

TEST(TextTest, UnknownCodePageFails)
{
    char bytes[4];
    wchar_t wide[4];
    platform::SetLastError(0);
    EXPECT_EQ(Text().ToCodePage(64999, L"text", 4, bytes, 4), 0);
    EXPECT_EQ(platform::LastError(), ERROR_INVALID_PARAMETER);
    platform::SetLastError(0);
    EXPECT_EQ(Text().FromCodePage(64999, "text", 4, wide, 4), 0);
    EXPECT_EQ(platform::LastError(), ERROR_INVALID_PARAMETER);
}

TEST(TextTest, EmptyTextFails)
{
    platform::SetLastError(0);
    EXPECT_EQ(Text().ToCodePage(65001, L"text", 0, nullptr, 0), 0);
    EXPECT_EQ(platform::LastError(), ERROR_INVALID_PARAMETER);
    platform::SetLastError(0);
    EXPECT_EQ(Text().FromCodePage(65001, "text", 0, nullptr, 0), 0);
    EXPECT_EQ(platform::LastError(), ERROR_INVALID_PARAMETER);
}

TEST(TextTest, BufferThatIsTooSmallFailsAndIsNotOverrun)
{
    for (const UINT codePage : {65001u, 1252u})
    {
        char bytes[4] = {'#', '#', '#', '#'};
        platform::SetLastError(0);
        EXPECT_EQ(Text().ToCodePage(codePage, L"text", 4, bytes, 3), 0);
        EXPECT_EQ(platform::LastError(), ERROR_INSUFFICIENT_BUFFER);
        EXPECT_EQ(bytes[3], '#');
        wchar_t wide[4] = {L'#', L'#', L'#', L'#'};
        platform::SetLastError(0);
        EXPECT_EQ(Text().FromCodePage(codePage, "text", 4, wide, 3), 0);
        EXPECT_EQ(platform::LastError(), ERROR_INSUFFICIENT_BUFFER);
        EXPECT_EQ(wide[3], L'#');
    }
}

TEST(TextTest, LengthOfMinusOneIsANullTerminatedTextWithItsNull)
{
    char bytes[8];
    EXPECT_EQ(Text().ToCodePage(65001, L"text", -1, bytes, 8), 5);
    EXPECT_STREQ(bytes, "text");
    wchar_t wide[8];
    EXPECT_EQ(Text().FromCodePage(1252, "text", -1, wide, 8), 5);
    EXPECT_STREQ(wide, L"text");
}

TEST(TextTest, WholeSystemMessageIsTheSame)
{
    wchar_t text[256];
    const DWORD length = Text().SystemMessage(ERROR_FILE_NOT_FOUND, 0, text, 256);
    ASSERT_GT(length, 0u);
    EXPECT_EQ(Text().WholeSystemMessage(ERROR_FILE_NOT_FOUND, 0), text);
    EXPECT_EQ(Text().WholeSystemMessage(0x2FFFFFFF, 0), L"");
}

TEST(TextTest, SystemMessageNeedsRoomForItsNull)
{
    wchar_t text[256];
    const DWORD length = Text().SystemMessage(ERROR_FILE_NOT_FOUND, 0, text, 256);
    ASSERT_GT(length, 0u);
    EXPECT_EQ(std::wcslen(text), length);
    EXPECT_EQ(Text().SystemMessage(ERROR_FILE_NOT_FOUND, 0, text, length + 1), length);
    platform::SetLastError(0);
    EXPECT_EQ(Text().SystemMessage(ERROR_FILE_NOT_FOUND, 0, text, length), 0u);
    EXPECT_EQ(platform::LastError(), ERROR_INSUFFICIENT_BUFFER);
}

TEST(TextTest, UnknownErrorHasNoMessage)
{
    wchar_t text[256];
    platform::SetLastError(0);
    EXPECT_EQ(Text().SystemMessage(0x2FFFFFFF, 0, text, 256), 0u);
    EXPECT_NE(platform::LastError(), 0u);
}
