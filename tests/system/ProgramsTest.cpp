#include "utility/system/Programs.h"

#include "tests/support/CommandLines.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/Substitute.h"
#include "tests/support/TellingProgram.h"
#include "utility/platform/Programs.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using support::TellingProgram;
using utility::platform::UntilItEnds;

namespace
{

class RecordingPrograms : public utility::platform::ProgramService
{
public:
    bool Run(wchar_t* commandLine, UntilItEnds then) override
    {
        m_ran = commandLine;
        m_then = then;
        return m_result;
    }

    std::intptr_t Open(const wchar_t* file, const wchar_t* parameters) override
    {
        m_file = file;
        m_parameters = parameters;
        return m_opened;
    }

    bool m_result = true;
    std::intptr_t m_opened = 33;
    wchar_t* m_ran = nullptr;
    UntilItEnds m_then = {};
    const wchar_t* m_file = nullptr;
    const wchar_t* m_parameters = nullptr;

private:
    support::Substitute<utility::platform::ProgramService> m_scope{utility::platform::ProgramsSlot(), *this};
};

class ProgramsTest : public testing::TestWithParam<support::CommandLine>
{
};

}

TEST_P(ProgramsTest, ProgramGetsWhatTheCommandLineSaysToProgramsOnWindows)
{
    const TellingProgram program;
    std::wstring line = program.Line() + GetParam().rest;
    QLMExecute(line.c_str(), true);
    EXPECT_EQ(program.Told(), GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(All, ProgramsTest, testing::ValuesIn(support::commandLines));

TEST(ExecuteTest, GivesTheTextItselfWhichTheSystemMayWriteInto)
{
    RecordingPrograms programs;
    wchar_t line[] = L"a b";
    QLMExecute(line, true);
    EXPECT_EQ(programs.m_ran, line);
    EXPECT_EQ(programs.m_then, UntilItEnds::wait);
    QLMExecute(line, false);
    EXPECT_EQ(programs.m_then, UntilItEnds::goOn);
}

TEST(ExecuteTest, BadCommandLineReturnsQuietly)
{
    for (const bool wait : {false, true})
    {
        wchar_t missing[] = L"there-is-no-such-program 1 2";
        QLMExecute(missing, wait);
        wchar_t empty[] = L"";
        QLMExecute(empty, wait);
        wchar_t blank[] = L" ";
        QLMExecute(blank, wait);
        wchar_t quote[] = L"\"";
        QLMExecute(quote, wait);
    }
}

TEST(ExecuteTest, WithoutWaitingItReturnsAheadOfTheEnd)
{
    const TellingProgram program;
    std::wstring line = program.Line() + L" exit=0 late";
    QLMExecute(line.c_str(), false);
    EXPECT_EQ(program.ToldAtLast(), "<exit=0><late>");
}

TEST(ShellExecuteTest, AboveThirtyTwoIsASuccessOfWhichNothingIsSaid)
{
    RecordingPrograms programs;
    support::ScriptedDesktop desktop;
    EXPECT_TRUE(QLMShellExecute(L"part.pdf", L"-p 2"));
    EXPECT_STREQ(programs.m_file, L"part.pdf");
    EXPECT_STREQ(programs.m_parameters, L"-p 2");
    EXPECT_TRUE(desktop.shown.empty());
}

TEST(ShellExecuteTest, NullParametersAreAnEmptyText)
{
    RecordingPrograms programs;
    EXPECT_TRUE(QLMShellExecute(L"part.pdf", nullptr));
    ASSERT_NE(programs.m_parameters, nullptr);
    EXPECT_STREQ(programs.m_parameters, L"");
}

TEST(ShellExecuteTest, UpToThirtyTwoIsTheNumberOfTheErrorThatABoxTells)
{
    RecordingPrograms programs;
    for (const std::intptr_t error : {2, 32})
    {
        support::ScriptedDesktop desktop;
        programs.m_opened = error;
        EXPECT_FALSE(QLMShellExecute(L"part.pdf", nullptr));
        ASSERT_EQ(desktop.shown.size(), 1u);
        EXPECT_FALSE(desktop.shown[0].text.empty());
        EXPECT_EQ(desktop.shown[0].style, 64u);
        EXPECT_EQ(desktop.shown[0].helpTopic, 0u);
    }
}

TEST(ShellExecuteTest, FileThatIsMissingIsTold)
{
    support::ScriptedDesktop desktop;
    EXPECT_FALSE(QLMShellExecute(L"there-is-no-such-file.pdf", nullptr));
    EXPECT_EQ(desktop.shown.size(), 1u);
}
