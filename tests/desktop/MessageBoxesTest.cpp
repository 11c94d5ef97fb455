#include "utility/desktop/MessageBoxes.h"

#include "tests/support/ForwardingLocale.h"
#include "tests/support/ForwardingText.h"
#include "tests/support/ScriptedDesktop.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using support::ScriptedDesktop;
using support::Substitute;
using utility::platform::TextService;
using utility::platform::TextSlot;
using Shown = std::vector<ScriptedDesktop::Shown>;

TEST(ZeloMessageBoxTest, TextStyleAndHelpReachTheBox)
{
    ScriptedDesktop desktop;
    ZeloMessageBox(L"The tool is worn.", 0x34, 12);
    EXPECT_EQ(desktop.shown, (Shown{{L"UtilityTests", L"The tool is worn.", 0x34, 12}}));
}

TEST(ZeloMessageBoxTest, NumberedStringIsTheText)
{
    ScriptedDesktop desktop;
    ZeloMessageBox(8413, 0x10, 3);
    EXPECT_EQ(desktop.shown, (Shown{{L"UtilityTests", L"The disk is full", 0x10, 3}}));
}

TEST(ShowSystemErrorMessageTest, ShowsTheSystemsMessageAsAnInformation)
{
    ScriptedDesktop desktop;
    ShowSystemErrorMessage(2);
    ASSERT_EQ(desktop.shown.size(), 1u);
    EXPECT_EQ(desktop.shown[0].title, L"UtilityTests");
    EXPECT_NE(desktop.shown[0].text.find(L"ile"), std::wstring::npos) << "file not found";
    EXPECT_EQ(desktop.shown[0].style, 64u);
    EXPECT_EQ(desktop.shown[0].helpTopic, 0u);
}

TEST(ShowSystemErrorMessageTest, MessageIsInTheLanguageOfTheThreadWithItsDefaultSublanguage)
{
    ScriptedDesktop desktop;
    struct Austrian : support::ForwardingLocale
    {
        LCID ThreadLocale() override { return 0x0C07; }
    } locale;
    support::ForwardingText text;
    const Substitute<TextService> scope(TextSlot(), text);
    ShowSystemErrorMessage(5);
    EXPECT_EQ(text.askedLanguage, 0x0407u);
    EXPECT_EQ(desktop.shown.size(), 1u);
}

TEST(ShowSystemErrorMessageTest, LongMessageIsShownWhole)
{
    ScriptedDesktop desktop;
    struct Talkative : support::ForwardingText
    {
        std::wstring WholeSystemMessage(DWORD, DWORD) override { return std::wstring(100000, L'x'); }
    } text;
    const Substitute<TextService> scope(TextSlot(), text);
    ShowSystemErrorMessage(5);
    EXPECT_EQ(desktop.shown, (Shown{{L"UtilityTests", std::wstring(100000, L'x'), 64, 0}}));
}

TEST(ShowSystemErrorMessageTest, ErrorWithoutAMessageHasAnEmptyText)
{
    ScriptedDesktop desktop;
    ShowSystemErrorMessage(0x2FFFFFFF);
    EXPECT_EQ(desktop.shown, (Shown{{L"UtilityTests", L"", 64, 0}}));
}
