#include "utility/framework/String.h"

#include "utility/settings/internal/LibraryResources.h"

#include <gtest/gtest.h>

TEST(StringTest, EmptyInEveryWay)
{
    const CStringW byDefault;
    const CStringW fromNull(nullptr);
    const CStringW fromText(L"");
    for (const CStringW& text : {byDefault, fromNull, fromText})
    {
        EXPECT_TRUE(text.IsEmpty());
        EXPECT_EQ(text.GetLength(), 0);
        EXPECT_STREQ(text.GetString(), L"");
    }
}

TEST(StringTest, KeepsTextAndLength)
{
    const CStringW text(L"text");
    EXPECT_EQ(text.GetLength(), 4);
    EXPECT_FALSE(text.IsEmpty());
    const wchar_t* const characters = text;
    EXPECT_STREQ(characters, L"text");
    const CStringW part(L"text", 2);
    EXPECT_EQ(part, L"te");
    const CStringW withNull(L"a\0b", 3);
    EXPECT_EQ(withNull.GetLength(), 3);
    EXPECT_FALSE(withNull == CStringW(L"a"));
}

TEST(StringTest, CopiesAreIndependent)
{
    CStringW text(L"text");
    const CStringW copy(text);
    text += L" and more";
    EXPECT_EQ(copy, L"text");
    EXPECT_EQ(text, L"text and more");
    text.Empty();
    EXPECT_TRUE(text.IsEmpty());
}

TEST(StringTest, AppendsItself)
{
    CStringW text(L"ab");
    text += text;
    EXPECT_EQ(text, L"abab");
}

TEST(StringTest, FormatReplacesTheText)
{
    CStringW text(L"earlier");
    text.Format(L"%d entities in %s", 7, L"part");
    EXPECT_EQ(text, L"7 entities in part");
}

TEST(StringTest, FormatMayTakeTheStringItself)
{
    CStringW text(L"a");
    text.Format(L"%s%s", text.GetString(), text.GetString());
    EXPECT_EQ(text, L"aa");
}

TEST(StringTest, LoadsANumberedString)
{
    CStringW text;
    EXPECT_TRUE(text.LoadString(8306));
    EXPECT_EQ(text, L"inches");
    EXPECT_TRUE(text.LoadString(utility::detail::LibraryResources().GetResourceDLL(), 8308));
    EXPECT_EQ(text, L"metre");
}

TEST(StringTest, FailedLoadLeavesAnEmptyString)
{
    CStringW text(L"earlier");
    EXPECT_FALSE(text.LoadString(8299));
    EXPECT_TRUE(text.IsEmpty());
    text = L"earlier";
    EXPECT_FALSE(text.LoadString(utility::detail::LibraryResources().GetResourceDLL(), 8299));
    EXPECT_TRUE(text.IsEmpty());
}
