#include "utility/platform/Boxes.h"

#include "tests/support/windows/BoxAnswerer.h"
#include "tests/support/windows/ImportedCall.h"

#include <gtest/gtest.h>

using support::BoxAnswerer;
using support::ImportedCall;
using utility::platform::BoxAnswer;
using utility::platform::Boxes;

extern "C" decltype(&::GetActiveWindow) __imp_GetActiveWindow;
extern "C" decltype(&::GetLastActivePopup) __imp_GetLastActivePopup;
extern "C" decltype(&::MessageBoxA) __imp_MessageBoxA;
extern "C" decltype(&::MessageBoxIndirectW) __imp_MessageBoxIndirectW;

namespace
{

struct Button
{
    const char* name;
    int button;
    BoxAnswer expected;
};

class BoxButtonTest : public ::testing::TestWithParam<Button>
{
};

}

TEST_P(BoxButtonTest, ButtonIsTheAnswer)
{
    BoxAnswerer answerer(GetParam().button);
    EXPECT_EQ(Boxes().AskAbortRetryIgnore("The title", "What\nnow?"), GetParam().expected);
    EXPECT_EQ(answerer.Title(), L"The title");
    EXPECT_EQ(answerer.Text(), L"What\nnow?");
}

INSTANTIATE_TEST_SUITE_P(Buttons, BoxButtonTest,
                         ::testing::Values(Button{"Abort", IDABORT, BoxAnswer::abort},
                                           Button{"Retry", IDRETRY, BoxAnswer::retry},
                                           Button{"Ignore", IDIGNORE, BoxAnswer::ignore}),
                         [](const auto& tested) { return tested.param.name; });

TEST(BoxTest, ActiveWindowOwnsTheBox)
{
    const HWND window = ::CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 100, 100,
                                          nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    ::SetActiveWindow(window);
    BoxAnswerer answerer(IDRETRY);
    EXPECT_EQ(Boxes().AskAbortRetryIgnore("The title", "What\nnow?"), BoxAnswer::retry);
    EXPECT_EQ(answerer.Owner(), window);
    ::DestroyWindow(window);
}

TEST(BoxTest, HasTheSignOfAFailureAndRetryForWhoTakesNoChoice)
{
    HICON icon = nullptr;
    LONG retry = 0;
    BoxAnswerer answerer(IDRETRY,
                         [&](HWND box)
                         {
                             // The sign is the first text of the box.
                             const HWND sign = ::FindWindowExW(box, nullptr, L"Static", nullptr);
                             icon = reinterpret_cast<HICON>(::SendMessageW(sign, STM_GETICON, 0, 0));
                             retry = ::GetWindowLongW(::GetDlgItem(box, IDRETRY), GWL_STYLE);
                         });
    Boxes().AskAbortRetryIgnore("The title", "What\nnow?");
    answerer.Text();
    EXPECT_EQ(icon, ::LoadIconW(nullptr, reinterpret_cast<const wchar_t*>(IDI_HAND)));
    EXPECT_EQ(retry & BS_TYPEMASK, BS_DEFPUSHBUTTON);
}

TEST(BoxTest, OtherWindowsOfTheThreadWaitForTheAnswer)
{
    const HWND window = ::CreateWindowExW(WS_EX_NOACTIVATE, L"STATIC", L"host", WS_POPUP, 0, 0, 100, 100, nullptr,
                                          nullptr, nullptr, nullptr);
    ::ShowWindow(window, SW_SHOWNOACTIVATE);
    BOOL isEnabled = TRUE;
    BoxAnswerer answerer(IDRETRY, [&](HWND) { isEnabled = ::IsWindowEnabled(window); });
    Boxes().AskAbortRetryIgnore("The title", "What\nnow?");
    EXPECT_EQ(answerer.Owner(), nullptr);
    EXPECT_FALSE(isEnabled);
    EXPECT_TRUE(::IsWindowEnabled(window));
    ::DestroyWindow(window);
}

TEST(BoxTest, IsOfTheLatestPopupAndComesToTheFront)
{
    static const HWND active = reinterpret_cast<HWND>(std::intptr_t{0x1000});
    static const HWND popup = reinterpret_cast<HWND>(std::intptr_t{0x2000});
    static HWND owner = nullptr;
    static UINT style = 0;
    const ImportedCall activeCall(__imp_GetActiveWindow, [] { return active; });
    const ImportedCall popupCall(__imp_GetLastActivePopup, [](HWND of) { return of == active ? popup : nullptr; });
    const auto record = [](HWND of, const char*, const char*, UINT with)
    {
        owner = of;
        style = with;
        return IDIGNORE;
    };
    const ImportedCall boxCall(__imp_MessageBoxA, record);
    EXPECT_EQ(Boxes().AskAbortRetryIgnore("The title", "What\nnow?"), BoxAnswer::ignore);
    EXPECT_EQ(owner, popup);
    EXPECT_EQ(style, 0x12112u);
}

TEST(BoxTest, TextIsShownWithItsTitleAndSign)
{
    HICON icon = nullptr;
    BoxAnswerer answerer(IDOK,
                         [&](HWND box)
                         {
                             const HWND sign = ::FindWindowExW(box, nullptr, L"Static", nullptr);
                             icon = reinterpret_cast<HICON>(::SendMessageW(sign, STM_GETICON, 0, 0));
                         });
    Boxes().Show(L"Title \u00FC", L"What\nnow? \u20AC", 0x40, 0);
    EXPECT_EQ(answerer.Title(), L"Title \u00FC");
    EXPECT_EQ(answerer.Text(), L"What\nnow? \u20AC");
    EXPECT_EQ(icon, ::LoadIconW(nullptr, reinterpret_cast<const wchar_t*>(IDI_ASTERISK)));
}

TEST(BoxTest, TextIsOfTheLatestPopupWithItsStyleAndHelp)
{
    static const HWND popup = reinterpret_cast<HWND>(std::intptr_t{0x2000});
    static MSGBOXPARAMSW shown;
    const ImportedCall activeCall(__imp_GetActiveWindow, [] { return reinterpret_cast<HWND>(std::intptr_t{0x1000}); });
    const ImportedCall popupCall(__imp_GetLastActivePopup,
                                 [](HWND of) { return of == reinterpret_cast<HWND>(0x1000) ? popup : nullptr; });
    const auto record = [](const MSGBOXPARAMSW* box)
    {
        shown = *box;
        return IDOK;
    };
    const ImportedCall boxCall(__imp_MessageBoxIndirectW, record);
    Boxes().Show(L"title", L"text", 0x4034, 12);
    EXPECT_EQ(shown.cbSize, 80u);
    EXPECT_EQ(shown.hwndOwner, popup);
    EXPECT_EQ(shown.lpszCaption, std::wstring(L"title"));
    EXPECT_EQ(shown.lpszText, std::wstring(L"text"));
    EXPECT_EQ(shown.dwStyle, 0x4034u);
    EXPECT_EQ(shown.dwContextHelpId, 12u);
}
