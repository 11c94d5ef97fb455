#include "utility/platform/Boxes.h"

#include "tests/support/windows/BoxAnswerer.h"

#include <gtest/gtest.h>

using support::BoxAnswerer;
using utility::platform::BoxAnswer;
using utility::platform::Boxes;

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
