#include "utility/desktop/Clipboard.h"

#include "tests/support/Substitute.h"
#include "utility/platform/Clipboard.h"

#include <gtest/gtest.h>

#include <string>

TEST(SetClipboardTextTest, GivesTheTextToTheSystemAndTellsWhetherItWasTaken)
{
    struct : utility::platform::ClipboardService
    {
        bool SetText(const wchar_t* text) override
        {
            given = text;
            return takes;
        }
        std::wstring given;
        bool takes = true;
    } clipboard;
    const support::Substitute<utility::platform::ClipboardService> scope(utility::platform::ClipboardSlot(), clipboard);
    EXPECT_TRUE(SetClipboardText(L"G01 X12.5"));
    EXPECT_EQ(clipboard.given, L"G01 X12.5");
    clipboard.takes = false;
    EXPECT_FALSE(SetClipboardText(L""));
    EXPECT_EQ(clipboard.given, L"");
}

TEST(SetClipboardTextTest, NullIsNoText) { EXPECT_FALSE(SetClipboardText(nullptr)); }
