#include "utility/platform/Keys.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/MadeUpXServer.h"
#include "tests/support/posix/XServer.h"
#include "utility/platform/Boxes.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
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

namespace
{

/// The bytes of numbers that have so many each.
struct SaidBytes
{
    std::string text;

    SaidBytes& Add(std::size_t size, std::uint32_t value)
    {
        text.append(reinterpret_cast<const char*>(&value), size);
        return *this;
    }
    SaidBytes& Fill(std::size_t size, char value = 0)
    {
        text.append(size, value);
        return *this;
    }
};

/// What a server says to who connects: keys have these numbers, and there is no screen.
std::string SetupOfServer(std::uint8_t firstKey, std::uint8_t lastKey)
{
    return SaidBytes()
        .Add(1, 1)
        .Fill(1)
        .Add(2, 11)
        .Fill(2)
        .Add(2, 8) // as many words as follow
        .Fill(4)
        .Add(4, 0x200000)
        .Add(4, 0x1FFFFF)
        .Fill(6)
        .Add(2, 0xFFFF) // the longest request
        .Fill(6)
        .Add(1, firstKey)
        .Add(1, lastKey)
        .Fill(4)
        .text;
}

/// All keys are held, and each has this symbol; as many of them are told as there are said to be with each key.
std::string AnswersOfServer(std::uint8_t symbolsOfEach, std::uint32_t symbols)
{
    SaidBytes said;
    said.Add(1, 1).Fill(1).Add(2, 1).Add(4, 2).Fill(32, '\xFF');
    said.Add(1, 1).Add(1, symbolsOfEach).Add(2, 2).Add(4, symbols).Fill(24);
    for (std::uint32_t i = 0; i < symbols; ++i)
        said.Add(4, 'q');
    return said.text;
}

bool IsQHeldAt(const std::string& setup, const std::string& answers)
{
    const support::MadeUpXServer server({setup, answers});
    EXPECT_NE(server.Display(), "");
    return IsHeldAt(server.Display(), 'Q');
}

}

TEST(HeldKeysTest, ServerThatHangsIsNotWaitedForForEver)
{
    const support::MadeUpXServer silent;
    const support::MadeUpXServer hanging({SetupOfServer(8, 255)});
    for (const support::MadeUpXServer* const server : {&silent, &hanging})
    {
        ASSERT_NE(server->Display(), "");
        const auto start = std::chrono::steady_clock::now();
        Child child(
            [&]
            {
                ::setenv("DISPLAY", server->Display().c_str(), 1);
                return Keys().IsDown('Q') ? 1 : 0;
            });
        EXPECT_EQ(child.ExitCode(), 0);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
    }
}

TEST(HeldKeysTest, ServerThatAnswersWhatItMayNotHarmsNothing)
{
    EXPECT_TRUE(IsQHeldAt(SetupOfServer(8, 255), AnswersOfServer(1, 248))) << "the server is a good one";
    EXPECT_FALSE(IsQHeldAt(SetupOfServer(8, 255), AnswersOfServer(0, 4))) << "no symbols of a key";
    EXPECT_FALSE(IsQHeldAt(SetupOfServer(255, 8), AnswersOfServer(1, 5000))) << "no keys";
    EXPECT_FALSE(IsQHeldAt(std::string(8, '\0'), "")) << "no connection";
    const support::MadeUpXServer server({SetupOfServer(8, 255), ""});
    EXPECT_FALSE(IsHeldAt(server.Display(), 1)) << "no screen, where the mouse would be";
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
