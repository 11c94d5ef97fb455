#include "utility/diagnostics/internal/DebugReport.h"

#include "tests/support/RecordingDebugger.h"
#include "tests/support/ScriptedDesktop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

using support::ScriptedDesktop;
using utility::reportAssertion;
using utility::reportError;
using utility::reportWarning;
using utility::ZeloDbgMessage;
using utility::ZeloDbgReport;

namespace
{

using Texts = std::vector<std::string>;

constexpr const char* tooLong = "ZeloDbgReport: String too long or IO Error";

class DebugReportTest : public ::testing::Test
{
protected:
    support::RecordingDebugger m_debugger;
    ScriptedDesktop m_desktop;
};

class DebugMessageTest : public DebugReportTest
{
protected:
    /// The text of the box, without what is the same in each.
    std::string Box(const char* file = nullptr, const char* line = nullptr, const char* module = nullptr,
                    const char* message = "")
    {
        EXPECT_EQ(ZeloDbgMessage(reportAssertion, file, line, 3, module, message), 0);
        const std::string box = m_desktop.boxes.back();
        const std::string front = "Debug Assertion Failed!\n\nProgram: ";
        const std::string end = "\n\n(Press Retry to debug the application)";
        EXPECT_TRUE(box.starts_with(front)) << box;
        EXPECT_TRUE(box.ends_with(end)) << box;
        return box.substr(front.size(), box.size() - front.size() - end.size());
    }
};

/// A text whose parts can be told apart, so that it shows what was cut.
std::string Numbered(std::size_t size)
{
    std::string text;
    while (text.size() < size)
        text += std::to_string(text.size()) + '/';
    return text.substr(0, size);
}

struct TextOfType
{
    const char* name;
    int type;
    const char* format;
    const char* expected;
};

class DebugReportOutputTest : public DebugReportTest, public ::testing::WithParamInterface<TextOfType>
{
};

}

TEST_P(DebugReportOutputTest, IsFileLineAndReport)
{
    const TextOfType& report = GetParam();
    EXPECT_EQ(ZeloDbgReport(report.type, 0, false, "part.cpp", 12, nullptr, report.format, "count", -3), 0);
    EXPECT_EQ(m_debugger.narrow, Texts{std::string("part.cpp(12) : ") + report.expected});
    EXPECT_EQ(m_desktop.calls, Texts());
}

TEST_P(DebugReportOutputTest, WithoutAFileIsTheReportAlone)
{
    const TextOfType& report = GetParam();
    EXPECT_EQ(ZeloDbgReport(report.type, 0, false, nullptr, 12, nullptr, report.format, "count", -3), 0);
    EXPECT_EQ(m_debugger.narrow, Texts{report.expected});
}

INSTANTIATE_TEST_SUITE_P(
    Types, DebugReportOutputTest,
    ::testing::Values(TextOfType{"Warning", reportWarning, "%s %d", "count -3"},
                      TextOfType{"WarningWithoutFormat", reportWarning, nullptr, ""},
                      TextOfType{"Error", reportError, "%s is %d\n", "count is -3\n"},
                      TextOfType{"Assertion", reportAssertion, "%s = %d", "Assertion failed: count = -3\n"},
                      TextOfType{"AssertionWithEmptyFormat", reportAssertion, "", "Assertion failed: \n"},
                      TextOfType{"AssertionWithoutFormat", reportAssertion, nullptr, "Assertion failed!\n"}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(DebugReportTest, UnknownTypeGivesMinusOneAndDoesNothing)
{
    EXPECT_EQ(ZeloDbgReport(3, 0, true, "part.cpp", 12, nullptr, nullptr), -1);
    EXPECT_EQ(ZeloDbgReport(-1, 0, false, "part.cpp", 12, nullptr, nullptr), -1);
    EXPECT_EQ(m_debugger.narrow, Texts());
    EXPECT_EQ(m_desktop.calls, Texts());
}

TEST_F(DebugReportTest, MessageOf4075CharactersIsKeptAndALongerOneReplaced)
{
    const std::string longest = Numbered(4075);
    ZeloDbgReport(reportAssertion, 0, false, nullptr, 0, nullptr, "%s", longest.c_str());
    EXPECT_EQ(m_debugger.narrow.back(), "Assertion failed: " + longest + "\n");
    ZeloDbgReport(reportAssertion, 0, false, nullptr, 0, nullptr, "%s", (longest + '!').c_str());
    EXPECT_EQ(m_debugger.narrow.back(), std::string("Assertion failed: ") + tooLong + "\n");
    ZeloDbgReport(reportError, 0, false, nullptr, 0, nullptr, "%s", (longest + '!').c_str());
    EXPECT_EQ(m_debugger.narrow.back(), tooLong);
}

TEST_F(DebugReportTest, OutputThatNeedsMoreThan4096BytesWithItsNullIsReplacedAsAWhole)
{
    const std::string longest = Numbered(4095 - std::string_view("(7) : note").size());
    ZeloDbgReport(reportWarning, 0, false, longest.c_str(), 7, nullptr, "note");
    EXPECT_EQ(m_debugger.narrow.back(), longest + "(7) : note");
    ZeloDbgReport(reportWarning, 0, false, (longest + '!').c_str(), 7, nullptr, "note");
    EXPECT_EQ(m_debugger.narrow.back(), tooLong);
}

TEST_F(DebugReportTest, BoxShowsTheMessageAndSendsNothingToTheDebugger)
{
    EXPECT_EQ(ZeloDbgReport(reportAssertion, 2, true, "part.cpp", 12, nullptr, "%s = %d", "count", -3), 0);
    EXPECT_EQ(m_desktop.titles, Texts{"Selvane Production Software Debug Library"});
    EXPECT_EQ(m_desktop.boxes, Texts{"Debug Assertion Failed!\n\nProgram: C:\\host.exe\nFile: part.cpp\nLine: 12\n"
                                     "Severity: 2\n\nExpression: count = -3\n\n"
                                     "(Press Retry to debug the application)"});
    EXPECT_EQ(m_debugger.narrow, Texts());
}

TEST_F(DebugReportTest, BoxOfAMessageThatIsTooLongSaysSo)
{
    ZeloDbgReport(reportError, 0, true, nullptr, 0, nullptr, "%s", Numbered(4076).c_str());
    EXPECT_EQ(m_desktop.boxes, Texts{std::string("Debug Error!\n\nProgram: C:\\host.exe\nSeverity: 0\n\n") + tooLong +
                                     "\n\n(Press Retry to debug the application)"});
}

TEST_F(DebugReportTest, LineZeroAndNullFileAndNoFormatGiveNoElementInTheBox)
{
    EXPECT_EQ(ZeloDbgReport(reportWarning, 0, true, nullptr, 0, nullptr, nullptr), 0);
    EXPECT_EQ(m_desktop.boxes, Texts{"Debug Warning!\n\nProgram: C:\\host.exe\nSeverity: 0\n\n"
                                     "(Press Retry to debug the application)"});
}

TEST_F(DebugReportTest, NegativeLineIsShown)
{
    ZeloDbgReport(reportWarning, 0, true, nullptr, -5, nullptr, nullptr);
    EXPECT_NE(m_desktop.boxes.back().find("\nLine: -5\n"), std::string::npos);
}

TEST_F(DebugReportTest, RetryGivesOne)
{
    m_desktop.answer = ScriptedDesktop::Answer::retry;
    EXPECT_EQ(ZeloDbgReport(reportWarning, 0, true, "part.cpp", 12, nullptr, nullptr), 1);
    EXPECT_EQ(ZeloDbgReport(reportAssertion, 0, true, "part.cpp", 12, nullptr, nullptr), 1);
    EXPECT_EQ(m_debugger.breaks, 0);
}

TEST_F(DebugReportTest, AbortEndsTheProcess)
{
    m_desktop.answer = ScriptedDesktop::Answer::abort;
    ZeloDbgReport(reportAssertion, 0, true, "part.cpp", 12, nullptr, nullptr);
    EXPECT_EQ(m_desktop.calls, (Texts{"ask", "end"}));
}

TEST_F(DebugReportTest, AssertionWithinTheReportOfAnAssertionBreaksIntoTheDebugger)
{
    int answer = 0;
    m_desktop.whileAsking = [&]
    {
        answer = ZeloDbgReport(reportAssertion, 0, true, "box.cpp", 77, nullptr, "%d", 1);
        // The text is out before the process stops.
        EXPECT_EQ(m_debugger.narrow, Texts{"Second Chance Assertion Failed: File box.cpp, Line 77\n"});
    };
    EXPECT_EQ(ZeloDbgReport(reportAssertion, 0, true, "part.cpp", 12, nullptr, nullptr), 0);
    EXPECT_EQ(answer, -1);
    EXPECT_EQ(m_debugger.breaks, 1);
    EXPECT_EQ(m_desktop.boxes.size(), 1u);
}

TEST_F(DebugReportTest, NextAssertionAfterANestedOneIsReportedAsUsual)
{
    m_desktop.whileAsking = [] { ZeloDbgReport(reportAssertion, 0, false, "box.cpp", 77, nullptr, nullptr); };
    ZeloDbgReport(reportAssertion, 0, true, "part.cpp", 12, nullptr, nullptr);
    ZeloDbgReport(reportAssertion, 0, true, "part.cpp", 13, nullptr, nullptr);
    EXPECT_EQ(m_desktop.boxes.size(), 2u);
}

TEST_F(DebugReportTest, BreakThatDoesNotComeBackLeavesTheCountOfAssertionsRight)
{
    struct : support::RecordingDebugger
    {
        void Break() override
        {
            // The text is out before the process stops.
            EXPECT_EQ(narrow.size(), 1u);
            throw std::runtime_error("break");
        }
    } const debugger;
    m_desktop.whileAsking = []
    { EXPECT_THROW(ZeloDbgReport(reportAssertion, 0, false, "box.cpp", 77, nullptr, nullptr), std::runtime_error); };
    ZeloDbgReport(reportAssertion, 0, true, "part.cpp", 12, nullptr, nullptr);
    m_desktop.whileAsking = [] {};
    EXPECT_EQ(ZeloDbgReport(reportAssertion, 0, true, "part.cpp", 13, nullptr, nullptr), 0);
    EXPECT_EQ(m_desktop.boxes.size(), 2u);
}

TEST_F(DebugReportTest, FileNameTooLongForTheSecondChanceIsReplacedWithTheWholeText)
{
    m_desktop.whileAsking = []
    { ZeloDbgReport(reportAssertion, 0, false, Numbered(4096).c_str(), 77, nullptr, nullptr); };
    ZeloDbgReport(reportAssertion, 0, true, "part.cpp", 12, nullptr, nullptr);
    EXPECT_EQ(m_debugger.narrow, Texts{tooLong});
}

TEST_F(DebugReportTest, WarningsAndErrorsWithinTheReportOfAnAssertionAreReportedAsUsual)
{
    m_desktop.whileAsking = []
    {
        EXPECT_EQ(ZeloDbgReport(reportWarning, 0, false, nullptr, 0, nullptr, "still warm"), 0);
        EXPECT_EQ(ZeloDbgReport(reportError, 0, false, nullptr, 0, nullptr, "still wrong"), 0);
    };
    ZeloDbgReport(reportAssertion, 0, true, "part.cpp", 12, nullptr, nullptr);
    EXPECT_EQ(m_debugger.narrow, (Texts{"still warm", "still wrong"}));
    EXPECT_EQ(m_debugger.breaks, 0);
}

TEST(DebugReportThreadTest, AssertionOfAnotherThreadWhileABoxIsShownBreaksIntoTheDebugger)
{
    support::RecordingDebugger debugger;
    ScriptedDesktop desktop;
    int answer = 0;
    desktop.whileAsking = [&]
    { std::thread([&] { answer = ZeloDbgReport(reportAssertion, 0, true, "b.cpp", 2, nullptr, nullptr); }).join(); };
    EXPECT_EQ(ZeloDbgReport(reportAssertion, 0, true, "a.cpp", 1, nullptr, nullptr), 0);
    EXPECT_EQ(answer, -1);
    EXPECT_EQ(debugger.narrow, Texts{"Second Chance Assertion Failed: File b.cpp, Line 2\n"});
    EXPECT_EQ(debugger.breaks, 1);
}

TEST(DebugReportThreadTest, AssertionCountsUntilItsTextIsOutAlsoWhereTheFirstHasEndedMeanwhile)
{
    struct : support::RecordingDebugger
    {
        void Output(const char* text) override
        {
            RecordingDebugger::Output(text);
            if (narrow.size() > 1)
                return;
            isWriting.set_value();
            mayEnd.get_future().wait_for(std::chrono::seconds(100));
        }
        std::promise<void> isWriting;
        std::promise<void> mayEnd;
    } debugger;
    ScriptedDesktop desktop;
    std::thread second;
    desktop.whileAsking = [&]
    {
        second = std::thread([] { ZeloDbgReport(reportAssertion, 0, true, "b.cpp", 2, nullptr, nullptr); });
        debugger.isWriting.get_future().wait_for(std::chrono::seconds(100));
    };
    EXPECT_EQ(ZeloDbgReport(reportAssertion, 0, true, "a.cpp", 1, nullptr, nullptr), 0);
    ASSERT_TRUE(second.joinable());
    desktop.whileAsking = [] {};
    EXPECT_EQ(ZeloDbgReport(reportAssertion, 0, true, "c.cpp", 3, nullptr, nullptr), -1);
    debugger.mayEnd.set_value();
    second.join();
    EXPECT_EQ(debugger.breaks, 2);
    EXPECT_EQ(ZeloDbgReport(reportAssertion, 0, true, "d.cpp", 4, nullptr, nullptr), 0);
    EXPECT_EQ(desktop.boxes.size(), 2u);
}

TEST_F(DebugMessageTest, NullAndEmptyPartsAreLeftOut)
{
    EXPECT_EQ(Box(), "C:\\host.exe\nSeverity: 3");
    EXPECT_EQ(Box("part.cpp"), "C:\\host.exe\nFile: part.cpp\nSeverity: 3");
    EXPECT_EQ(Box(nullptr, "12"), "C:\\host.exe\nLine: 12\nSeverity: 3");
    EXPECT_EQ(Box(nullptr, nullptr, "host"), "C:\\host.exe\nModule: host\nSeverity: 3");
    EXPECT_EQ(Box(nullptr, nullptr, nullptr, "x > 0"), "C:\\host.exe\nSeverity: 3\n\nExpression: x > 0");
    EXPECT_EQ(Box("part.cpp", "12", "host", "x > 0"),
              "C:\\host.exe\nModule: host\nFile: part.cpp\nLine: 12\nSeverity: 3\n\nExpression: x > 0");
}

TEST_F(DebugMessageTest, OnlyAnAssertionsMessageIsAnExpression)
{
    ZeloDbgMessage(reportWarning, nullptr, nullptr, 0, nullptr, "late");
    EXPECT_EQ(m_desktop.boxes.back(), "Debug Warning!\n\nProgram: C:\\host.exe\nSeverity: 0\n\nlate\n\n"
                                      "(Press Retry to debug the application)");
    ZeloDbgMessage(reportError, nullptr, nullptr, 0, nullptr, "wrong");
    EXPECT_EQ(m_desktop.boxes.back(), "Debug Error!\n\nProgram: C:\\host.exe\nSeverity: 0\n\nwrong\n\n"
                                      "(Press Retry to debug the application)");
}

TEST_F(DebugMessageTest, ProgramThatIsNotKnownIsSaidToBe)
{
    m_desktop.program = nullptr;
    EXPECT_EQ(Box(), "<program name unknown>\nSeverity: 3");
}

TEST_F(DebugMessageTest, ProgramOver64CharactersIsCutToItsEnd)
{
    const std::string path = Numbered(259);
    for (const std::size_t size : {1u, 63u, 64u})
    {
        const std::string fits = path.substr(0, size);
        m_desktop.program = fits.c_str();
        EXPECT_EQ(Box(), fits + "\nSeverity: 3");
    }
    for (const std::size_t size : {65u, 66u, 259u})
    {
        const std::string longer = path.substr(0, size);
        m_desktop.program = longer.c_str();
        EXPECT_EQ(Box(), "..." + longer.substr(size - 61) + "\nSeverity: 3");
    }
}

TEST_F(DebugMessageTest, ModuleOver64CharactersIsCutToItsEndWhereItIs)
{
    const std::string fits = Numbered(64);
    EXPECT_EQ(Box(nullptr, nullptr, fits.c_str()), "C:\\host.exe\nModule: " + fits + "\nSeverity: 3");
    const std::string original = Numbered(70);
    std::string module = original;
    EXPECT_EQ(Box(nullptr, nullptr, module.data()), "C:\\host.exe\nModule: ..." + original.substr(9) + "\nSeverity: 3");
    EXPECT_EQ(module, original.substr(0, 6) + "..." + original.substr(9));
}

TEST_F(DebugMessageTest, TextThatNeedsMoreThan4096BytesWithItsNullIsReplacedAsAWhole)
{
    const std::size_t others = Box("f").size() - 1 + std::string_view("Debug Assertion Failed!\n\nProgram: ").size() +
                               std::string_view("\n\n(Press Retry to debug the application)").size();
    const std::string longest = Numbered(4095 - others);
    EXPECT_EQ(Box(longest.c_str()), "C:\\host.exe\nFile: " + longest + "\nSeverity: 3");
    ZeloDbgMessage(reportAssertion, (longest + '!').c_str(), nullptr, 3, nullptr, "");
    EXPECT_EQ(m_desktop.boxes.back(), tooLong);
}

TEST_F(DebugMessageTest, AnswersAreOneForRetryAndZeroForIgnore)
{
    EXPECT_EQ(ZeloDbgMessage(reportError, nullptr, nullptr, 0, nullptr, ""), 0);
    m_desktop.answer = ScriptedDesktop::Answer::retry;
    EXPECT_EQ(ZeloDbgMessage(reportError, nullptr, nullptr, 0, nullptr, ""), 1);
}
