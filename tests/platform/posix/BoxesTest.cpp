#include "utility/platform/Boxes.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/MadeUpXServer.h"
#include "tests/support/posix/Script.h"
#include "tests/support/posix/ScriptTest.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Keys.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <string>
#include <string_view>
#include <unistd.h>

using support::Child;
using support::FailingCall;
using utility::platform::BoxAnswer;
using utility::platform::Boxes;
using utility::platform::Keys;

namespace
{

constexpr int controlDown = 10;

/// Asks, and tells the answer and the Control key by an exit code.
int Ask()
{
    const int answer = static_cast<int>(Boxes().AskAbortRetryIgnore("Title", "What\nnow?"));
    return answer + (Keys().IsControlKeyDown() ? controlDown : 0);
}

/// The same with a display, or none, in the environment.
int AskWithDisplay(const char* variable)
{
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    if (variable != nullptr)
        ::setenv(variable, ":99", 1);
    return Ask();
}

constexpr int CodeOf(BoxAnswer answer) { return static_cast<int>(answer); }

struct Typed
{
    const char* name;
    std::string_view keys;
    int expected;
};

class BoxTerminalTest : public ::testing::TestWithParam<Typed>
{
};

/// Dialog programs that a test writes are all that is on the path, and there is a display.
class BoxDialogTest : public ::testing::Test
{
protected:
    void Program(const char* name, const std::string& script) const { support::MakeScript(m_folder / name, script); }

    int AnswerWith(const char* display) const
    {
        Child child(
            [&]
            {
                ::setenv("PATH", (m_folder / ".").c_str(), 1);
                return AskWithDisplay(display);
            });
        return child.ExitCode();
    }

    int Answer() const { return AnswerWith("DISPLAY"); }

    const support::TemporaryFolder m_folder;
};

}

TEST_P(BoxTerminalTest, LineThatIsTypedIsTheAnswer)
{
    Child child(Ask, Child::Terminal::foreground);
    const std::string question = child.ReadUntil("from now on: ");
    EXPECT_NE(question.find("Title\r\n\r\nWhat\r\nnow?\r\n"), std::string::npos) << question;
    child.Type(GetParam().keys);
    EXPECT_EQ(child.ExitCode(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Keys, BoxTerminalTest,
                         ::testing::Values(Typed{"Abort", "a\n", CodeOf(BoxAnswer::abort)},
                                           Typed{"AbortInFull", "Abort\n", CodeOf(BoxAnswer::abort)},
                                           Typed{"Retry", "r\n", CodeOf(BoxAnswer::retry)},
                                           Typed{"RetryCapital", "R\n", CodeOf(BoxAnswer::retry)},
                                           Typed{"NoChoiceIsRetry", "\n", CodeOf(BoxAnswer::retry)},
                                           Typed{"Ignore", "i\n", CodeOf(BoxAnswer::ignore)},
                                           Typed{"IgnoreCapital", "I\n", CodeOf(BoxAnswer::ignore)},
                                           Typed{"ControlI", "\t\n", CodeOf(BoxAnswer::ignore) + controlDown},
                                           Typed{"EndOfInput", "\x04", CodeOf(BoxAnswer::ignore)}),
                         [](const auto& tested) { return tested.param.name; });

TEST(BoxTest, TerminalAsksAgainForAnotherLetter)
{
    Child child(Ask, Child::Terminal::foreground);
    child.ReadUntil("from now on: ");
    child.Type("what?\n");
    EXPECT_NE(child.ReadUntil("from now on: ").find("now?"), std::string::npos);
    child.Type("a\n");
    EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::abort));
}

TEST(BoxTest, WhatWasTypedBeforeTheQuestionIsNoAnswer)
{
    Child child(
        []
        {
            ::write(STDOUT_FILENO, "ready", 5);
            // The line is there once it can be read; it is left unread.
            pollfd waiting{STDIN_FILENO, POLLIN, 0};
            ::poll(&waiting, 1, 100000);
            return Ask();
        },
        Child::Terminal::foreground);
    child.ReadUntil("ready");
    child.Type("a\n");
    child.ReadUntil("from now on: ");
    child.Type("r\n");
    EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::retry));
}

TEST(BoxTest, TerminalOfAnotherProcessGroupIsLeftAlone)
{
    Child child([] { return AskWithDisplay(nullptr); }, Child::Terminal::background);
    EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::ignore));
}

TEST(BoxTest, TerminalThatGoesAwayIsIgnore)
{
    Child child(
        []
        {
            ::signal(SIGHUP, SIG_IGN);
            return Ask();
        },
        Child::Terminal::foreground);
    child.ReadUntil("from now on: ");
    child.HangUp();
    EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::ignore));
}

TEST_F(BoxDialogTest, ZenityGetsTheTextAsItIsAndItsButtonIsTheAnswer)
{
    const std::string keep = "printf '%s\\n' \"$@\" >'" + (m_folder / "arguments").string() + "'\n";
    Program("zenity", keep + "echo Abort; exit 1\n");
    EXPECT_EQ(Answer(), CodeOf(BoxAnswer::abort));
    EXPECT_EQ(support::TemporaryFolder::BytesOf(m_folder / "arguments"),
              "--question\n--switch\n--no-markup\n--title\nTitle\n--text\nWhat\nnow?\n--extra-button\nIgnore\n"
              "--extra-button\nRetry\n--extra-button\nAbort\n");
    Program("zenity", "echo Retry; exit 1\n");
    EXPECT_EQ(Answer(), CodeOf(BoxAnswer::retry));
    Program("zenity", "echo Ignore; exit 1\n");
    EXPECT_EQ(Answer(), CodeOf(BoxAnswer::ignore));
}

TEST_F(BoxDialogTest, KdialogGetsTheTextAsItIsAndItsExitCodeIsTheAnswer)
{
    const std::string keep = "printf '%s\\n' \"$@\" >'" + (m_folder / "arguments").string() + "'\n";
    Program("kdialog", keep + "exit 0\n");
    EXPECT_EQ(Answer(), CodeOf(BoxAnswer::abort));
    EXPECT_EQ(support::TemporaryFolder::BytesOf(m_folder / "arguments"),
              "--title\nTitle\n--yes-label\nAbort\n--no-label\nRetry\n--cancel-label\nIgnore\n--warningyesnocancel\n"
              "What\nnow?\n");
    Program("kdialog", "exit 1\n");
    EXPECT_EQ(Answer(), CodeOf(BoxAnswer::retry));
    Program("kdialog", "exit 2\n");
    EXPECT_EQ(Answer(), CodeOf(BoxAnswer::ignore));
}

TEST_F(BoxDialogTest, EitherKindOfDisplayWillDo)
{
    Program("zenity", "echo Abort; exit 1\n");
    EXPECT_EQ(AnswerWith("DISPLAY"), CodeOf(BoxAnswer::abort));
    EXPECT_EQ(AnswerWith("WAYLAND_DISPLAY"), CodeOf(BoxAnswer::abort));
}

TEST_F(BoxDialogTest, WindowThatWasClosedIsIgnore)
{
    Program("zenity", "exit 1\n");
    EXPECT_EQ(Answer(), CodeOf(BoxAnswer::ignore));
}

TEST_F(BoxDialogTest, ProgramThatCrashesIsIgnore)
{
    Program("kdialog", "kill -9 $$\n");
    EXPECT_EQ(Answer(), CodeOf(BoxAnswer::ignore));
}

TEST_F(BoxDialogTest, NoDisplayIsIgnore)
{
    Program("zenity", "echo Abort; exit 1\n");
    EXPECT_EQ(AnswerWith(nullptr), CodeOf(BoxAnswer::ignore));
}

TEST_F(BoxDialogTest, NoDialogProgramIsIgnore) { EXPECT_EQ(Answer(), CodeOf(BoxAnswer::ignore)); }

/// Does some work in another process, and gives what comes onto its error stream.
std::string ErrorsOf(const support::TemporaryFolder& folder, const std::function<int()>& work)
{
    const auto errors = folder.File("errors", "");
    Child child(
        [&]
        {
            ::dup2(::open(errors.c_str(), O_WRONLY), STDERR_FILENO);
            return work();
        });
    EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::ignore));
    return support::TemporaryFolder::BytesOf(errors);
}

TEST_F(BoxDialogTest, QuestionThatNobodyCanAnswerIsOnTheErrorStream)
{
    EXPECT_EQ(ErrorsOf(m_folder, [] { return AskWithDisplay(nullptr); }), "What\nnow?\n");
    const auto ask = [&]
    {
        ::setenv("PATH", (m_folder / ".").c_str(), 1);
        return AskWithDisplay("DISPLAY");
    };
    EXPECT_NE(ErrorsOf(m_folder, ask).find("What\nnow?\n"), std::string::npos);
    Program("kdialog", "kill -9 $$\n");
    EXPECT_NE(ErrorsOf(m_folder, ask).find("What\nnow?\n"), std::string::npos);
    Program("zenity", "exit 1\n");
    EXPECT_EQ(ErrorsOf(m_folder, ask), "What\nnow?\n");
    // And what was asked is not.
    Program("zenity", "echo Ignore; exit 1\n");
    EXPECT_EQ(ErrorsOf(m_folder, ask), "");
}

TEST_F(BoxDialogTest, AnswerIsTheSameWhereTheHostIgnoresTheEndOfItsChildren)
{
    Program("kdialog", "exit 1\n");
    const auto answer = [&]
    {
        Child child(
            [&]
            {
                ::signal(SIGCHLD, SIG_IGN);
                ::setenv("PATH", (m_folder / ".").c_str(), 1);
                return AskWithDisplay("DISPLAY");
            });
        return child.ExitCode();
    };
    EXPECT_EQ(answer(), CodeOf(BoxAnswer::retry));
    Program("zenity", "echo Abort; exit 1\n");
    EXPECT_EQ(answer(), CodeOf(BoxAnswer::abort));
}

TEST_F(BoxDialogTest, AnswerIsTheSameAmongSignals)
{
    const std::string aWhile = "i=0; while [ $i -lt 20000 ]; do i=$((i+1)); done\n";
    for (const char* const program : {"kdialog", "zenity"})
    {
        Program(program, aWhile + (program == std::string_view("zenity") ? "echo Retry\n" : "") + "exit 1\n");
        Child child(
            [&]
            {
                const support::FrequentAlarm alarm;
                ::setenv("PATH", (m_folder / ".").c_str(), 1);
                return AskWithDisplay("DISPLAY");
            });
        EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::retry)) << program;
    }
}

// A text to be seen

namespace
{

/// Shows a text, and tells by the exit code that it came back.
int ShowText(UINT style = 0x40)
{
    Boxes().Show(L"Title \u00FC", L"-What\nnow? \u20AC", style, 0);
    return 7;
}

int ShowTextWithDisplay(UINT style = 0x40)
{
    ::setenv("DISPLAY", ":99", 1);
    return ShowText(style);
}

}

TEST(BoxTest, TextIsOnTheTerminalUntilEnter)
{
    Child child([] { return ShowText(); }, Child::Terminal::foreground);
    const std::string shown = child.ReadUntil("Enter to go on: ");
    EXPECT_NE(shown.find("\r\nTitle \xC3\xBC\r\n\r\n-What\r\nnow? \xE2\x82\xAC\r\n"), std::string::npos) << shown;
    child.Type("\n");
    EXPECT_EQ(child.ExitCode(), 7);
}

TEST(BoxTest, EnterAheadOfATextIsNoAnswerToIt)
{
    Child child(
        []
        {
            ::write(STDOUT_FILENO, "ready", 5);
            pollfd waiting{STDIN_FILENO, POLLIN, 0};
            ::poll(&waiting, 1, 100000);
            return ShowText();
        },
        Child::Terminal::foreground);
    child.ReadUntil("ready");
    child.Type("\n");
    child.ReadUntil("Enter to go on: ");
    child.Type("\n");
    EXPECT_EQ(child.ExitCode(), 7);
}

TEST(BoxTest, TextGoesOnWhenTheTerminalGoesAway)
{
    Child child(
        []
        {
            ::signal(SIGHUP, SIG_IGN);
            return ShowText();
        },
        Child::Terminal::foreground);
    child.ReadUntil("Enter to go on: ");
    child.HangUp();
    EXPECT_EQ(child.ExitCode(), 7);
}

/// What a dialog program got to show a text of each style, an argument a line; nothing may come onto the error stream.
class BoxTextTest : public BoxDialogTest
{
protected:
    std::string ArgumentsFor(const char* program, UINT style) const
    {
        Program(program, "printf '%s\\n' \"$@\" >'" + (m_folder / "arguments").string() + "'\n");
        EXPECT_EQ(Errors([&] { return ShowTextWithDisplay(style); }), "");
        return support::TemporaryFolder::BytesOf(m_folder / "arguments");
    }

    std::string Errors(const std::function<int()>& work) const
    {
        const auto errors = m_folder.File("errors", "");
        Child child(
            [&]
            {
                ::dup2(::open(errors.c_str(), O_WRONLY), STDERR_FILENO);
                ::unsetenv("DISPLAY");
                ::unsetenv("WAYLAND_DISPLAY");
                ::setenv("PATH", (m_folder / ".").c_str(), 1);
                return work();
            });
        EXPECT_EQ(child.ExitCode(), 7);
        return support::TemporaryFolder::BytesOf(errors);
    }

    static constexpr const char* text = "-What\nnow? \xE2\x82\xAC\n";
};

TEST_F(BoxTextTest, ZenityShowsItWithTheSignOfItsStyle)
{
    const std::string rest = std::string("\n--no-markup\n--title\nTitle \xC3\xBC\n--text\n") + text;
    EXPECT_EQ(ArgumentsFor("zenity", 0x10), "--error" + rest);
    EXPECT_EQ(ArgumentsFor("zenity", 0x20), "--info" + rest);
    EXPECT_EQ(ArgumentsFor("zenity", 0x34), "--warning" + rest);
    EXPECT_EQ(ArgumentsFor("zenity", 0x40), "--info" + rest);
    EXPECT_EQ(ArgumentsFor("zenity", 0), "--info" + rest);
}

TEST_F(BoxTextTest, KdialogShowsItWithTheSignOfItsStyle)
{
    const std::string title = "--title\nTitle \xC3\xBC\n";
    EXPECT_EQ(ArgumentsFor("kdialog", 0x10), title + "--error\n" + text);
    EXPECT_EQ(ArgumentsFor("kdialog", 0x30), title + "--sorry\n" + text);
    EXPECT_EQ(ArgumentsFor("kdialog", 0x40), title + "--msgbox\n" + text);
    EXPECT_EQ(ArgumentsFor("kdialog", 0), title + "--msgbox\n" + text);
}

TEST_F(BoxTextTest, IsShownOnce)
{
    Program("kdialog", "echo second >&2\n");
    Program("zenity", "exit 0\n");
    EXPECT_EQ(Errors([] { return ShowTextWithDisplay(); }), "");
}

TEST_F(BoxTextTest, IsOnTheErrorStreamWhereNobodyMayHaveSeenIt)
{
    EXPECT_EQ(Errors([] { return ShowText(); }), text) << "no display";
    EXPECT_EQ(Errors([] { return ShowTextWithDisplay(); }), text) << "no program";
    Program("kdialog", "exit 1\n");
    EXPECT_EQ(Errors([] { return ShowTextWithDisplay(); }), text) << "a program that fails";
    Program("zenity", "kill -9 $$\n");
    EXPECT_NE(Errors([] { return ShowTextWithDisplay(); }).find(text), std::string::npos) << "one that crashes";
}

TEST_F(BoxTextTest, ServerThatHangsIsNoneAndTheTextGoesToTheErrorStream)
{
    Program("zenity", "/bin/sleep 60\n");
    const support::MadeUpXServer server;
    ASSERT_NE(server.Display(), "");
    const auto show = [&]
    {
        ::setenv("DISPLAY", server.Display().c_str(), 1);
        return ShowText();
    };
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Errors(show), text);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(BoxTextTest, IsSeenWhereTheHostIgnoresTheEndOfItsChildren)
{
    Program("zenity", "exit 0\n");
    const auto show = []
    {
        ::signal(SIGCHLD, SIG_IGN);
        return ShowTextWithDisplay();
    };
    EXPECT_EQ(Errors(show), "");
}

TEST_F(BoxTextTest, NullIsAnEmptyText)
{
    const auto show = []
    {
        Boxes().Show(nullptr, nullptr, 0, 0);
        return 7;
    };
    EXPECT_EQ(Errors(show), "\n");
}

// What fails below

TEST(BoxTest, InterruptedQuestionIsAskedAndAnsweredAllTheSame)
{
    Child child(
        []
        {
            const FailingCall opening("open", EINTR);
            const FailingCall writing("write", EINTR, 2);
            const FailingCall reading("read", EINTR);
            const int answer = Ask();
            return opening.HasFailed() && writing.HasFailed() && reading.HasFailed() ? answer : -1;
        },
        Child::Terminal::foreground);
    const std::string question = child.ReadUntil("from now on: ");
    EXPECT_NE(question.find("Title\r\n\r\nWhat\r\nnow?\r\n"), std::string::npos) << question;
    child.Type("a\n");
    EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::abort));
}

TEST(BoxTest, QuestionThatIsTakenInPartsIsAskedWhole)
{
    Child child(
        []
        {
            const support::ShortWrites three(3);
            return Ask();
        },
        Child::Terminal::foreground);
    const std::string question = child.ReadUntil("from now on: ");
    EXPECT_NE(question.find("Title\r\n\r\nWhat\r\nnow?\r\n"), std::string::npos) << question;
    child.Type("a\n");
    EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::abort));
}

TEST(BoxTest, TerminalThatFailsIsIgnore)
{
    for (const char* const call : {"write", "read"})
    {
        Child child(
            [&]
            {
                const std::ptrdiff_t descriptors = support::OpenDescriptors();
                const FailingCall failing(call, EIO);
                const int answer = Ask();
                return failing.HasFailed() && support::OpenDescriptors() == descriptors ? answer : -1;
            },
            Child::Terminal::foreground);
        EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::ignore)) << call;
    }
}

TEST_F(BoxDialogTest, InterruptedWaitForTheAnswerGoesOn)
{
    Program("zenity", "echo Abort; exit 1\n");
    Child child(
        [&]
        {
            ::setenv("PATH", (m_folder / ".").c_str(), 1);
            const FailingCall starting("waitpid", EINTR);
            const FailingCall waiting("poll", EINTR);
            const FailingCall reading("pread", EINTR);
            const int answer = AskWithDisplay("DISPLAY");
            return starting.HasFailed() && waiting.HasFailed() && reading.HasFailed() ? answer : -1;
        });
    EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::abort));
}

TEST_F(BoxDialogTest, DialogThatCannotBeHadIsIgnore)
{
    Program("zenity", "echo Abort; exit 1\n");
    for (const char* const call : {"memfd_create", "clone", "open", "pread"})
    {
        Child child(
            [&]
            {
                ::setenv("PATH", (m_folder / ".").c_str(), 1);
                const std::ptrdiff_t descriptors = support::OpenDescriptors();
                const FailingCall failing(call, EMFILE, FailingCall::always);
                const int answer = AskWithDisplay("DISPLAY");
                return failing.HasFailed() && support::OpenDescriptors() == descriptors ? answer : -1;
            });
        EXPECT_EQ(child.ExitCode(), CodeOf(BoxAnswer::ignore)) << call;
    }
}
