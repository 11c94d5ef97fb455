#include "utility/platform/formats/CommandLine.h"

#include "tests/support/CommandLines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using utility::platform::formats::JoinCommandLine;
using utility::platform::formats::SplitCommandLine;

using Arguments = std::vector<std::wstring>;

namespace
{

class CommandLineTest : public testing::TestWithParam<support::CommandLine>
{
};

}

TEST_P(CommandLineTest, IsSplitAsProgramsOnWindowsSplitIt)
{
    std::string told;
    const Arguments arguments = SplitCommandLine(std::wstring(L"program") + GetParam().rest);
    for (std::size_t each = 1; each < arguments.size(); ++each)
        told += '<' + std::string(arguments[each].begin(), arguments[each].end()) + '>';
    EXPECT_EQ(told, GetParam().told);
    EXPECT_EQ(arguments.front(), L"program");
}

INSTANTIATE_TEST_SUITE_P(All, CommandLineTest, testing::ValuesIn(support::commandLines));

TEST(CommandLineProgramTest, ItsQuotesAreNeverMeantAndItsBackslashesAlwaysAre)
{
    EXPECT_EQ(SplitCommandLine(L"\"C:\\Program Files\\a.exe\" b"), (Arguments{L"C:\\Program Files\\a.exe", L"b"}));
    EXPECT_EQ(SplitCommandLine(L"\"a\\\" b"), (Arguments{L"a\\", L"b"}));
    EXPECT_EQ(SplitCommandLine(L"a\" b\"c\td"), (Arguments{L"a bc", L"d"}));
    EXPECT_EQ(SplitCommandLine(L"\"a\"\"b\" c"), (Arguments{L"ab", L"c"}));
    EXPECT_EQ(SplitCommandLine(L"\"a b"), (Arguments{L"a b"}));
}

TEST(CommandLineProgramTest, ItIsEmptyInALineThatIsOrThatBeginsWithABlank)
{
    EXPECT_EQ(SplitCommandLine(L""), Arguments{L""});
    EXPECT_EQ(SplitCommandLine(L" a"), (Arguments{L"", L"a"}));
    EXPECT_EQ(SplitCommandLine(L"\"\" a"), (Arguments{L"", L"a"}));
}

TEST(CommandLineJoinTest, QuotesOnlyWhatNeedsThem)
{
    EXPECT_EQ(JoinCommandLine({L"cut", L"part 7.igs", L""}), L"cut \"part 7.igs\" \"\"");
    EXPECT_EQ(JoinCommandLine({L"C:\\Program Files\\", L"a\\b"}), L"\"C:\\Program Files\\\" a\\b");
    EXPECT_EQ(JoinCommandLine({L"a", L"b \\\\", L"\\\""}), L"a \"b \\\\\\\\\" \"\\\\\\\"\"");
    EXPECT_EQ(JoinCommandLine({}), L"");
}

TEST(CommandLineJoinTest, AllArgumentsComeBack)
{
    const std::wstring characters = L"a \"\\\t";
    Arguments texts = {L""};
    for (std::size_t each = 0; texts[each].size() < 5; ++each)
    {
        for (const wchar_t c : characters)
            texts.push_back(texts[each] + c);
    }
    for (const std::wstring& text : texts)
    {
        const Arguments arguments = {L"a program", text, L"last"};
        ASSERT_EQ(SplitCommandLine(JoinCommandLine(arguments)), arguments) << "of length " << text.size();
    }
}
