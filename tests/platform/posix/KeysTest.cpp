#include "utility/platform/Keys.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/XServer.h"
#include "utility/platform/Boxes.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <unistd.h>

using support::Child;
using utility::platform::Boxes;
using utility::platform::Keys;

TEST(ControlKeyTest, OfAnAnswerIsTakenOnce)
{
    Child child(
        []
        {
            Boxes().AskAbortRetryIgnore("Title", "What\nnow?");
            return (Keys().IsControlKeyDown() ? 1 : 0) + (Keys().IsControlKeyDown() ? 2 : 0);
        },
        Child::Terminal::foreground);
    child.ReadUntil("from now on: ");
    child.Type("\t\n");
    EXPECT_EQ(child.ExitCode(), 1);
}

TEST(ControlKeyTest, IsThatOfTheLatestAnswer)
{
    Child child(
        []
        {
            Boxes().AskAbortRetryIgnore("Title", "First");
            Boxes().AskAbortRetryIgnore("Title", "Second");
            return Keys().IsControlKeyDown() ? 1 : 0;
        },
        Child::Terminal::foreground);
    for (const char* const answer : {"\t\n", "i\n"})
    {
        child.ReadUntil("from now on: ");
        child.Type(answer);
    }
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST(ControlKeyTest, IsUpWhereNobodyWasAsked) { EXPECT_FALSE(Keys().IsControlKeyDown()); }

namespace
{

/// Whether a key is held, as another process with this display sees it.
bool IsHeldAt(const std::string& display, int virtualKey)
{
    Child child(
        [&]
        {
            ::setenv("DISPLAY", display.c_str(), 1);
            const bool isDown = Keys().IsDown(virtualKey);
            return isDown == Keys().IsDownNow(virtualKey) ? (isDown ? 1 : 0) : 2;
        });
    return child.ExitCode() == 1;
}

}

TEST(HeldKeysTest, WithoutAServerNoKeyIsHeld)
{
    EXPECT_FALSE(IsHeldAt("", 0x10));
    EXPECT_FALSE(IsHeldAt(":54321", 0x10));
    EXPECT_FALSE(IsHeldAt("no display", 1));
}

TEST(HeldKeysTest, WithoutTheServersLibraryNoKeyIsHeld)
{
    Child child(
        []
        {
            ::setenv("DISPLAY", ":0", 1);
            const support::FailingCall failing("dlopen", ENOMEM, support::FailingCall::always);
            return !Keys().IsDown(0x10) && failing.HasFailed() ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST(HeldKeysTest, RealServerTellsOfKeysAndButtons)
{
    support::XServer server;
    if (!server.IsThere() || ::access("/usr/bin/xdotool", X_OK) != 0)
        GTEST_SKIP() << "The machine lacks Xvfb or xdotool";
    const auto does = [&](const std::string& command)
    { support::OutputOfShell("DISPLAY=" + server.Display() + " timeout 20 xdotool " + command); };
    const struct
    {
        const char* name;
        int virtualKey;
    } keys[] = {{"Shift_L", 0x10},  {"Shift_R", 0xA1},   {"Control_L", 0x11}, {"Control_R", 0xA3}, {"Alt_L", 0x12},
                {"Alt_L", 0xA4},    {"a", 0x41},         {"z", 0x5A},         {"0", 0x30},         {"9", 0x39},
                {"space", 0x20},    {"Return", 0x0D},    {"Escape", 0x1B},    {"Tab", 0x09},       {"BackSpace", 0x08},
                {"F1", 0x70},       {"F12", 0x7B},       {"Left", 0x25},      {"Down", 0x28},      {"Home", 0x24},
                {"Page_Up", 0x21},  {"Page_Down", 0x22}, {"End", 0x23},       {"Insert", 0x2D},    {"Delete", 0x2E},
                {"KP_Enter", 0x0D}, {"KP_Add", 0x6B},    {"Super_L", 0x5B},   {"Caps_Lock", 0x14}};
    for (const auto& key : keys)
    {
        EXPECT_FALSE(IsHeldAt(server.Display(), key.virtualKey)) << key.name;
        does(std::string("keydown ") + key.name);
        EXPECT_TRUE(IsHeldAt(server.Display(), key.virtualKey)) << key.name;
        EXPECT_FALSE(IsHeldAt(server.Display(), 0x51)) << "another key, Q";
        EXPECT_FALSE(IsHeldAt(server.Display(), 1)) << "a button";
        does(std::string("keyup ") + key.name);
        EXPECT_FALSE(IsHeldAt(server.Display(), key.virtualKey)) << key.name;
    }
    const int buttons[][2] = {{1, 1}, {3, 2}, {2, 4}};
    for (const auto& [button, virtualKey] : buttons)
    {
        does("mousedown " + std::to_string(button));
        for (const int each : {1, 2, 4})
            EXPECT_EQ(IsHeldAt(server.Display(), each), each == virtualKey) << button;
        does("mouseup " + std::to_string(button));
        EXPECT_FALSE(IsHeldAt(server.Display(), virtualKey)) << button;
    }
    for (const int none : {-1, 0, 3, 256, 0x7FFFFFFF, -0x7FFFFFFF})
        EXPECT_FALSE(IsHeldAt(server.Display(), none)) << none;
}
