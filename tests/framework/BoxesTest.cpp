#include "utility/framework/internal/Boxes.h"

#include "tests/support/ScriptedDesktop.h"
#include "utility/framework/internal/ResourceModules.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using support::ScriptedDesktop;
using utility::framework::CurrentModuleState;
using utility::framework::ShowBox;
using Shown = std::vector<ScriptedDesktop::Shown>;

TEST(FrameworkBoxTest, HasTheNameOfTheProgramAsItsTitle)
{
    ScriptedDesktop desktop;
    ShowBox(L"The tool is worn.", 0x30, 7);
    EXPECT_EQ(desktop.shown, (Shown{{L"UtilityTests", L"The tool is worn.", 0x30, 7}}));
}

TEST(FrameworkBoxTest, ProgramIsTheModuleThatTheFrameworkTakesForIt)
{
    ScriptedDesktop desktop;
    char none[1];
    HINSTANCE earlier = std::exchange(CurrentModuleState().currentInstance, reinterpret_cast<HINSTANCE>(none));
    ShowBox(L"text", 0, 0);
    CurrentModuleState().currentInstance = earlier;
    EXPECT_EQ(desktop.shown, (Shown{{L"", L"text", 0, 0}}));
}

TEST(FrameworkBoxTest, NumberedStringIsTheText)
{
    ScriptedDesktop desktop;
    ShowBox(8402, 0x40, 0);
    EXPECT_EQ(desktop.shown, (Shown{{L"UtilityTests", L"The file was not found", 0x40, 0}}));
}

TEST(FrameworkBoxTest, NumberWithoutAStringHasAnEmptyText)
{
    ScriptedDesktop desktop;
    ShowBox(1, 0, 0);
    EXPECT_EQ(desktop.shown, (Shown{{L"UtilityTests", L"", 0, 0}}));
}
