#include "utility/diagnostics/Assertions.h"

#include "tests/support/RecordingDebugger.h"
#include "tests/support/ScriptedDesktop.h"

#include <gtest/gtest.h>

using support::ScriptedDesktop;

// As the header shows it.
// clang-format off
#define HOST_ASSERT(x) if (static bool off; !(x) && ZeloAssertFailed(__FILE__, __LINE__, 0, off)) asm("int3")
// clang-format on

namespace
{

using Texts = std::vector<std::string>;

class AssertionsTest : public ::testing::Test
{
protected:
    bool Fails(int severity) { return ZeloAssertFailed("part.cpp", 12, severity, m_ignored); }

    bool m_ignored = false;
    support::RecordingDebugger m_debugger;
    ScriptedDesktop m_desktop;
};

struct Severity
{
    int severity;
    bool showsBox;
    bool honoursControl;
};

class AssertionSeverityTest : public AssertionsTest, public ::testing::WithParamInterface<Severity>
{
};

}

TEST_P(AssertionSeverityTest, SaysWhetherABoxIsShownOrALineGoesToTheDebugger)
{
    const auto& [severity, showsBox, honoursControl] = GetParam();
    EXPECT_FALSE(Fails(severity));
    EXPECT_EQ(m_desktop.boxes.size(), showsBox ? 1u : 0u);
    EXPECT_EQ(m_debugger.narrow, showsBox ? Texts() : Texts{"part.cpp(12) : Assertion failed!\n"});
    EXPECT_FALSE(m_ignored);
}

TEST_P(AssertionSeverityTest, SaysWhetherControlSwitchesTheAssertionOff)
{
    m_desktop.isControlKeyDown = true;
    EXPECT_FALSE(Fails(GetParam().severity));
    EXPECT_EQ(m_ignored, GetParam().honoursControl);
}

TEST_P(AssertionSeverityTest, WithIgnoredSetThereIsNoBoxAndNoBreak)
{
    m_ignored = true;
    m_desktop.answer = ScriptedDesktop::Answer::retry;
    EXPECT_FALSE(Fails(GetParam().severity));
    EXPECT_EQ(m_desktop.boxes, Texts());
    EXPECT_EQ(m_debugger.narrow, Texts{"part.cpp(12) : Assertion failed!\n"});
    EXPECT_TRUE(m_ignored);
}

INSTANTIATE_TEST_SUITE_P(Severities, AssertionSeverityTest,
                         ::testing::Values(Severity{-1, true, true}, Severity{0, true, true}, Severity{3, true, true},
                                           Severity{4, false, true}, Severity{5, false, false},
                                           Severity{100, false, false}),
                         [](const auto& tested) {
                             return tested.param.severity < 0 ? std::string("Negative")
                                                              : std::to_string(tested.param.severity);
                         });

TEST_F(AssertionsTest, BoxTellsFileLineAndSeverity)
{
    Fails(3);
    EXPECT_EQ(m_desktop.boxes, Texts{"Debug Assertion Failed!\n\nProgram: C:\\host.exe\nFile: part.cpp\nLine: 12\n"
                                     "Severity: 3\n\n(Press Retry to debug the application)"});
}

TEST_F(AssertionsTest, NullFileAndLineZeroGiveNoElementInTheBox)
{
    EXPECT_FALSE(ZeloAssertFailed(nullptr, 0, 0, m_ignored));
    EXPECT_EQ(m_desktop.boxes, Texts{"Debug Assertion Failed!\n\nProgram: C:\\host.exe\nSeverity: 0\n\n"
                                     "(Press Retry to debug the application)"});
}

TEST_F(AssertionsTest, RetryTellsTheCallerToBreakAndDoesNotAskForControl)
{
    m_desktop.answer = ScriptedDesktop::Answer::retry;
    m_desktop.isControlKeyDown = true;
    EXPECT_TRUE(Fails(0));
    EXPECT_FALSE(m_ignored);
    EXPECT_EQ(m_debugger.breaks, 0);
}

TEST_F(AssertionsTest, AbortEndsTheProcess)
{
    m_desktop.answer = ScriptedDesktop::Answer::abort;
    Fails(0);
    EXPECT_EQ(m_desktop.calls, (Texts{"take quit", "ask", "end"}));
}

TEST_F(AssertionsTest, PendingQuitMessageIsTakenBeforeTheBoxAndPutBackBehindIt)
{
    m_desktop.quit = 42;
    Fails(0);
    EXPECT_EQ(m_desktop.calls, (Texts{"take quit", "ask", "post quit"}));
    EXPECT_EQ(m_desktop.quit, 42);
}

TEST_F(AssertionsTest, QuitMessageWithExitCodeZeroIsOneToo)
{
    m_desktop.quit = 0;
    Fails(0);
    EXPECT_EQ(m_desktop.quit, 0);
}

TEST_F(AssertionsTest, QuitMessageIsPutBackWhateverTheAnswer)
{
    m_desktop.quit = 42;
    m_desktop.answer = ScriptedDesktop::Answer::retry;
    EXPECT_TRUE(Fails(0));
    EXPECT_EQ(m_desktop.quit, 42);
}

TEST_F(AssertionsTest, QuitMessageIsTakenAndPutBackAlsoWithoutABox)
{
    m_desktop.quit = 42;
    Fails(5);
    EXPECT_EQ(m_desktop.calls, (Texts{"take quit", "post quit"}));
    EXPECT_EQ(m_desktop.quit, 42);
}

TEST_F(AssertionsTest, NoQuitMessageIsPostedWhereThereWasNone)
{
    Fails(0);
    EXPECT_EQ(m_desktop.calls, (Texts{"take quit", "ask"}));
}

TEST_F(AssertionsTest, NestedAssertionTellsItsCallerToBreak)
{
    bool nestedBreaks = false;
    bool nestedIgnored = false;
    m_desktop.whileAsking = [&] { nestedBreaks = ZeloAssertFailed("box.cpp", 77, 0, nestedIgnored); };
    EXPECT_FALSE(Fails(0));
    EXPECT_TRUE(nestedBreaks);
    EXPECT_EQ(m_debugger.breaks, 1);
    EXPECT_EQ(m_debugger.narrow, Texts{"Second Chance Assertion Failed: File box.cpp, Line 77\n"});
}

TEST_F(AssertionsTest, NestedAssertionThatIsIgnoredDoesNot)
{
    bool nestedBreaks = true;
    bool nestedIgnored = true;
    m_desktop.whileAsking = [&] { nestedBreaks = ZeloAssertFailed("box.cpp", 77, 0, nestedIgnored); };
    EXPECT_FALSE(Fails(0));
    EXPECT_FALSE(nestedBreaks);
    EXPECT_EQ(m_debugger.breaks, 1);
}

TEST_F(AssertionsTest, MacroOfAHostAsksOnceWhenSwitchedOffByControl)
{
    m_desktop.isControlKeyDown = true;
    for (int count = 0; count < 3; ++count)
        HOST_ASSERT(count < 0);
    // The macro's flag is a static: when the test is repeated it is set already.
    static std::size_t boxes = 1;
    EXPECT_EQ(m_desktop.boxes.size(), boxes);
    EXPECT_EQ(m_debugger.narrow.size(), 3 - boxes);
    boxes = 0;
}

TEST_F(AssertionsTest, MacroOfAHostReportsOnlyWhatFails)
{
    HOST_ASSERT(m_desktop.boxes.empty());
    EXPECT_EQ(m_desktop.boxes, Texts());
}
