#include "utility/text/XMLEncode.h"

#include "tests/support/XMLEncodeModel.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

using support::InSixPasses;

TEST(XMLEncodeTest, AmpersandBetweenTwoLetters) { EXPECT_EQ(XMLEncode(L"a&b", false), L"a&amp;b"); }

TEST(XMLEncodeTest, TextThatIsEncodedAlreadyIsNotRecognised) { EXPECT_EQ(XMLEncode(L"&lt;", false), L"&amp;lt;"); }

TEST(XMLEncodeTest, DegreeIsNumberedOrNamed)
{
    EXPECT_EQ(XMLEncode(L"\u00B0", false), L"&#176;");
    EXPECT_EQ(XMLEncode(L"\u00B0", true), L"&deg;");
}

TEST(XMLEncodeTest, EmptyTextIsEmpty)
{
    EXPECT_EQ(XMLEncode(L"", false), L"");
    EXPECT_EQ(XMLEncode(L"", true), L"");
}

TEST(XMLEncodeTest, EachOfTheOthersHasItsReplacement)
{
    EXPECT_EQ(XMLEncode(L"<>'\"&", false), L"&lt;&gt;&apos;&quot;&amp;");
}

TEST(XMLEncodeTest, AllOtherCharactersPassThrough)
{
    std::wstring text;
    for (std::uint32_t c = 0; c < 0x10000; ++c)
        if (c != '&' && c != '<' && c != '>' && c != '\'' && c != '"' && c != 0xB0)
            text += static_cast<wchar_t>(c);
    if (sizeof(wchar_t) > 2)
        for (const std::uint32_t c : {0x10000u, 0x10026u, 0x1003Cu, 0x100B0u, 0x10FFFFu, 0x7FFFFF26u, 0x80000026u,
                                      0x800000B0u, 0xFFFFFFFFu, 0xFFFFFF26u})
            text += static_cast<wchar_t>(c);
    for (std::size_t shift = 0; shift < 16; ++shift)
        EXPECT_TRUE(XMLEncode(text.substr(shift), true) == text.substr(shift)) << shift;
}

TEST(XMLEncodeTest, TextWithoutAnythingToReplaceComesBackWithoutACopy)
{
    std::wstring text(1000, L'x');
    const wchar_t* const before = text.data();
    const std::wstring encoded = XMLEncode(std::move(text), false);
    EXPECT_EQ(encoded.data(), before);
    EXPECT_EQ(encoded.size(), 1000u);
}

TEST(XMLEncodeTest, ResultHasRoomForNothingMore)
{
    const std::wstring encoded = XMLEncode(std::wstring(1000, L'x') + L"&\u00B0\"" + std::wstring(1000, L'x'), false);
    EXPECT_EQ(encoded.size(), 2000u + 5 + 6 + 6);
    EXPECT_EQ(encoded.capacity(), encoded.size());
}

TEST(XMLEncodeTest, IsFoundAtEveryPlaceOfEveryLength)
{
    for (std::size_t length = 1; length <= 70; ++length)
    {
        for (std::size_t place = 0; place < length; ++place)
        {
            for (const wchar_t special : std::wstring(L"&<>'\"\u00B0"))
            {
                std::wstring text(length, L'x');
                text[place] = special;
                ASSERT_EQ(XMLEncode(text, true), InSixPasses(text, true)) << length << ' ' << place;
            }
        }
    }
}

TEST(XMLEncodeTest, RandomTextIsThatOfSixPasses)
{
    std::mt19937 random(17);
    // Characters that are replaced, that look like them in their low or high bytes, and others.
    constexpr std::wstring_view characters =
        L"&<>'\"\u00B0aZ;#%=\u0026\u2626\u263C\u3C3E\uB0B0\u00B1\u00FF\u0100\u8022\uFFFF\0";
    std::uniform_int_distribution<std::size_t> anyCharacter(0, characters.size());
    for (int trial = 0; trial < 2000; ++trial)
    {
        std::wstring text;
        const auto length = static_cast<std::size_t>(trial) % 200;
        const bool isSparse = trial % 2 == 0;
        for (std::size_t i = 0; i < length; ++i)
        {
            const std::size_t index = anyCharacter(random);
            text += isSparse && random() % 20 != 0 ? L'.' : index < characters.size() ? characters[index] : L'\0';
        }
        const bool namedDegree = trial % 3 == 0;
        ASSERT_EQ(XMLEncode(text, namedDegree), InSixPasses(text, namedDegree));
    }
}
