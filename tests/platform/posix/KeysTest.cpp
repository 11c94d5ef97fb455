#include "utility/platform/Keys.h"

#include "tests/support/posix/Child.h"
#include "utility/platform/Boxes.h"

#include <gtest/gtest.h>

using support::Child;
using utility::platform::Boxes;
using utility::platform::Keys;

TEST(ControlKeyTest, OfAnAnswerIsTakenOnce)
{
    Child child(
        []
        {
            Boxes().AskAbortRetryIgnore("Title", "What\nnow?");
            return (Keys().IsControlKeyDown() ? 1 : 0) + (Keys().IsControlKeyDown() ? 2 : 0);
        },
        Child::Terminal::foreground);
    child.ReadUntil("from now on: ");
    child.Type("\t\n");
    EXPECT_EQ(child.ExitCode(), 1);
}

TEST(ControlKeyTest, IsThatOfTheLatestAnswer)
{
    Child child(
        []
        {
            Boxes().AskAbortRetryIgnore("Title", "First");
            Boxes().AskAbortRetryIgnore("Title", "Second");
            return Keys().IsControlKeyDown() ? 1 : 0;
        },
        Child::Terminal::foreground);
    for (const char* const answer : {"\t\n", "i\n"})
    {
        child.ReadUntil("from now on: ");
        child.Type(answer);
    }
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST(ControlKeyTest, IsUpWhereNobodyWasAsked) { EXPECT_FALSE(Keys().IsControlKeyDown()); }
