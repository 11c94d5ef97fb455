#include "utility/platform/Desktop.h"

#include "utility/diagnostics/Assertions.h"
#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <thread>

using utility::platform::BoxAnswer;
using utility::platform::Desktop;
using utility::platform::DesktopService;

namespace
{

/// Waits for a message box of this process, reads it, and presses one of its buttons.
class BoxAnswerer
{
public:
    explicit BoxAnswerer(int button) : m_thread([this, button] { Answer(button); }) {}
    BoxAnswerer(const BoxAnswerer&) = delete;
    BoxAnswerer& operator=(const BoxAnswerer&) = delete;
    ~BoxAnswerer() { Wait(); }

    std::wstring Title()
    {
        Wait();
        return m_title;
    }
    std::wstring Text()
    {
        Wait();
        return m_text;
    }
    HWND Owner()
    {
        Wait();
        return m_owner;
    }

private:
    static BOOL CALLBACK IsBox(HWND window, LPARAM found)
    {
        wchar_t name[16];
        DWORD process = 0;
        ::GetWindowThreadProcessId(window, &process);
        if (process != ::GetCurrentProcessId() || !::IsWindowVisible(window) ||
            ::GetClassNameW(window, name, 16) == 0 || std::wstring_view(name) != L"#32770")
            return TRUE;
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }

    static std::wstring TextOf(HWND window)
    {
        wchar_t text[4096];
        return {text, static_cast<std::size_t>(::GetWindowTextW(window, text, 4096))};
    }

    void Answer(int button)
    {
        constexpr int textControl = 0xFFFF;
        HWND box = nullptr;
        for (int i = 0; i < 1000 && box == nullptr; ++i)
        {
            ::Sleep(10);
            ::EnumWindows(&IsBox, reinterpret_cast<LPARAM>(&box));
        }
        m_title = TextOf(box);
        m_text = TextOf(::GetDlgItem(box, textControl));
        m_owner = ::GetWindow(box, GW_OWNER);
        ::PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    }

    void Wait()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    std::wstring m_title;
    std::wstring m_text;
    HWND m_owner = nullptr;
    std::thread m_thread;
};

/// The Control key of the calling thread, as its keyboard state has it.
void HoldControl(bool isHeld)
{
    BYTE keys[256];
    ::GetKeyboardState(keys);
    keys[VK_CONTROL] = isHeld ? 0x80 : 0;
    ::SetKeyboardState(keys);
}

/// The exit code of a request to quit that waits in the calling thread's queue, which it leaves.
std::optional<int> WaitingQuit()
{
    MSG message;
    if (!::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) || message.message != WM_QUIT)
        return std::nullopt;
    return static_cast<int>(message.wParam);
}

struct Button
{
    const char* name;
    int button;
    BoxAnswer expected;
};

class DesktopBoxTest : public ::testing::TestWithParam<Button>
{
};

}

TEST_P(DesktopBoxTest, ButtonIsTheAnswer)
{
    BoxAnswerer answerer(GetParam().button);
    EXPECT_EQ(Desktop().AskAbortRetryIgnore("The title", "What\nnow?"), GetParam().expected);
    EXPECT_EQ(answerer.Title(), L"The title");
    EXPECT_EQ(answerer.Text(), L"What\nnow?");
}

INSTANTIATE_TEST_SUITE_P(Buttons, DesktopBoxTest,
                         ::testing::Values(Button{"Abort", IDABORT, BoxAnswer::abort},
                                           Button{"Retry", IDRETRY, BoxAnswer::retry},
                                           Button{"Ignore", IDIGNORE, BoxAnswer::ignore}),
                         [](const auto& tested) { return tested.param.name; });

TEST(DesktopTest, ActiveWindowOwnsTheBox)
{
    const HWND window = ::CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 100, 100,
                                          nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    ::SetActiveWindow(window);
    BoxAnswerer answerer(IDRETRY);
    EXPECT_EQ(Desktop().AskAbortRetryIgnore("The title", "What\nnow?"), BoxAnswer::retry);
    EXPECT_EQ(answerer.Owner(), window);
    ::DestroyWindow(window);
}

TEST(DesktopTest, QuitMessageIsTakenOnceWithItsExitCode)
{
    EXPECT_EQ(Desktop().TakeQuitMessage(), std::nullopt);
    ::PostQuitMessage(42);
    EXPECT_EQ(Desktop().TakeQuitMessage(), 42);
    EXPECT_EQ(Desktop().TakeQuitMessage(), std::nullopt);
}

TEST(DesktopTest, QuitMessageThatIsPostedArrivesInTheQueue)
{
    Desktop().PostQuitMessage(-7);
    EXPECT_EQ(WaitingQuit(), -7);
}

TEST(DesktopTest, TakingAQuitMessageLeavesTheOthers)
{
    ::PostThreadMessageW(::GetCurrentThreadId(), WM_APP, 5, 6);
    EXPECT_EQ(Desktop().TakeQuitMessage(), std::nullopt);
    MSG message;
    EXPECT_TRUE(::PeekMessageW(&message, nullptr, WM_APP, WM_APP, PM_REMOVE));
}

TEST(DesktopTest, ControlKeyIsThatOfTheThread)
{
    EXPECT_FALSE(Desktop().IsControlKeyDown());
    HoldControl(true);
    EXPECT_TRUE(Desktop().IsControlKeyDown());
    HoldControl(false);
    EXPECT_FALSE(Desktop().IsControlKeyDown());
}

TEST(DesktopTest, ProgramPathIsThatOfTheTests)
{
    char path[DesktopService::pathSize];
    ASSERT_TRUE(Desktop().ProgramPath(path));
    EXPECT_TRUE(std::string_view(path).ends_with("\\UtilityTests.exe")) << path;
}

TEST(DesktopDeathTest, EndOfTheProcessIsExitCodeThree)
{
    EXPECT_EXIT(Desktop().EndProcess(), ::testing::ExitedWithCode(3), "");
}

TEST(DesktopDeathTest, AssertionThatIsAbortedEndsTheProcess)
{
    EXPECT_EXIT(
        {
            BoxAnswerer answerer(IDABORT);
            bool ignored = false;
            ZeloAssertFailed("part.cpp", 12, 0, ignored);
        },
        ::testing::ExitedWithCode(3), "");
}

TEST(DesktopTest, QuitMessagePendingAtAnAssertionSurvivesTheBox)
{
    ::PostQuitMessage(42);
    BoxAnswerer answerer(IDIGNORE);
    bool ignored = false;
    EXPECT_FALSE(ZeloAssertFailed("part.cpp", 12, 0, ignored));
    EXPECT_EQ(answerer.Title(), L"Selvane Production Software Debug Library");
    EXPECT_NE(answerer.Text().find(L"\nFile: part.cpp\nLine: 12\nSeverity: 0\n"), std::wstring::npos);
    EXPECT_EQ(WaitingQuit(), 42);
}

TEST(DesktopTest, RetryOfAnAssertionTellsTheCallerToBreak)
{
    BoxAnswerer answerer(IDRETRY);
    bool ignored = false;
    EXPECT_TRUE(ZeloAssertFailed("part.cpp", 12, 0, ignored));
}

TEST(DesktopTest, ControlHeldWhenAnAssertionIsIgnoredSwitchesItOff)
{
    bool ignored = false;
    {
        BoxAnswerer answerer(IDIGNORE);
        HoldControl(true);
        EXPECT_FALSE(ZeloAssertFailed("part.cpp", 12, 0, ignored));
        HoldControl(false);
    }
    EXPECT_TRUE(ignored);
    EXPECT_FALSE(ZeloAssertFailed("part.cpp", 12, 0, ignored));
}
