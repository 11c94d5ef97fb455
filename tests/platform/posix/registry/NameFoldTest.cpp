#include "utility/platform/posix/registry/NameFold.h"

#include <gtest/gtest.h>

using utility::platform::posix::Folded;

TEST(NameFoldTest, LettersOfEveryScriptAreInUpperCase)
{
    EXPECT_EQ(Folded(L"Options 2"), "OPTIONS 2");
    EXPECT_EQ(Folded(L"gr\u00F6\u00DFe"), "GR\u00D6\u00DFE");
    EXPECT_EQ(Folded(L"\u03B1\u0436"), "\u0391\u0416");
    EXPECT_EQ(Folded(L""), "");
}

TEST(NameFoldTest, NothingBeyondAsciiIsTheSameAsAnythingWithinIt)
{
    EXPECT_EQ(Folded(L"\u0131\u017F\u212A"), "\u0131\u017F\u212A");
}

TEST(NameFoldTest, MicroSignIsNoGreekLetter) { EXPECT_EQ(Folded(L"\u00B5m"), "\u00B5M"); }

TEST(NameFoldTest, LetterThatIsNotTheLowerCaseOfItsUpperCaseStaysAsItIs)
{
    EXPECT_EQ(Folded(L"\u03C3\u01C6"), "\u03A3\u01C4");
    EXPECT_EQ(Folded(L"\u03C2\u01C5"), "\u03C2\u01C5");
}

TEST(NameFoldTest, LettersBeyondSixteenBitsStayAsTheyAre) { EXPECT_EQ(Folded(L"\U00010428"), "\U00010428"); }

TEST(NameFoldTest, FoldIsAppendedToWhatThereIs)
{
    std::string text = "key:";
    utility::platform::posix::AppendFolded(text, L"name");
    utility::platform::posix::AppendFolded(text, L"\u00E4");
    EXPECT_EQ(text, "key:NAME\u00C4");
}
