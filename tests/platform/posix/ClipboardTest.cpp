#include "utility/platform/Clipboard.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/MadeUpXServer.h"
#include "tests/support/posix/Script.h"
#include "tests/support/posix/ScriptTest.h"
#include "tests/support/posix/XServer.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using support::Child;
using support::FailingCall;
using utility::platform::Clipboard;

namespace
{

constexpr const wchar_t* pasted = L"-n N10 \u20AC\n\"$(x)\" 'y' %s";
constexpr const char* pastedBytes = "-n N10 \xE2\x82\xAC\n\"$(x)\" 'y' %s";

/// Programs that a test writes are all that is on the path.
class PosixClipboardTest : public testing::Test
{
protected:
    void Program(const char* name, const std::string& script) const { support::MakeScript(m_folder / name, script); }

    /// One that keeps what it got.
    void Keeper(const char* name) const
    {
        Program(name,
                "printf '%s\\n' \"${0##*/}\" \"$@\" >>'" + Kept("arguments") + "'; /bin/cat >'" + Kept("text") + "'\n");
    }

    std::string Kept(const char* file) const { return (m_folder / file).string(); }
    std::string Text() const { return m_folder.BytesOf(m_folder / "text"); }
    std::string Arguments() const { return m_folder.BytesOf(m_folder / "arguments"); }

    /// What a process with these displays gets: 1 for a text that was taken, 0 for one that was not.
    int Set(
        const char* x11, const char* wayland, const std::function<void()>& before = [] {}) const
    {
        Child child(
            [&]
            {
                ::setenv("PATH", m_folder.Path().c_str(), 1);
                x11 != nullptr ? ::setenv("DISPLAY", x11, 1) : ::unsetenv("DISPLAY");
                wayland != nullptr ? ::setenv("WAYLAND_DISPLAY", wayland, 1) : ::unsetenv("WAYLAND_DISPLAY");
                before();
                const bool isSet = Clipboard().SetText(pasted);
                // Nothing is left to be waited for.
                return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD ? (isSet ? 1 : 0) : 2;
            });
        return child.ExitCode();
    }

    const support::TemporaryFolder m_folder;
};

}

TEST_F(PosixClipboardTest, UnderWaylandWlCopyGetsTheTextAsUtf8)
{
    for (const char* const program : {"wl-copy", "xclip", "xsel"})
        Keeper(program);
    EXPECT_EQ(Set(":0", "wayland-0"), 1);
    EXPECT_EQ(Arguments(), "wl-copy\n--type\ntext/plain\n");
    EXPECT_EQ(Text(), pastedBytes);
}

TEST_F(PosixClipboardTest, OnAnXServerItIsXclip)
{
    for (const char* const program : {"wl-copy", "xclip", "xsel"})
        Keeper(program);
    EXPECT_EQ(Set(":0", nullptr), 1);
    EXPECT_EQ(Arguments(), "xclip\n-in\n-selection\nclipboard\n");
    EXPECT_EQ(Text(), pastedBytes);
}

TEST_F(PosixClipboardTest, OrElseXsel)
{
    Keeper("xsel");
    EXPECT_EQ(Set(":0", ""), 1);
    EXPECT_EQ(Arguments(), "xsel\n--input\n--clipboard\n");
    EXPECT_EQ(Text(), pastedBytes);
}

TEST_F(PosixClipboardTest, NextProgramGetsAllOfTheTextThatOneBeforeItRefused)
{
    Program("wl-copy", "/bin/cat >/dev/null; exit 1\n");
    Program("xclip", "read -r line; exit 3\n");
    Keeper("xsel");
    EXPECT_EQ(Set(":0", "wayland-0"), 1);
    EXPECT_EQ(Text(), pastedBytes);
}

TEST_F(PosixClipboardTest, WithoutADisplayThereIsNoClipboard)
{
    for (const char* const program : {"wl-copy", "xclip", "xsel"})
        Keeper(program);
    EXPECT_EQ(Set(nullptr, nullptr), 0);
    EXPECT_EQ(Set("", ""), 0);
    EXPECT_EQ(Arguments(), "");
}

TEST_F(PosixClipboardTest, WithoutAProgramThereIsNone)
{
    EXPECT_EQ(Set(":0", "wayland-0"), 0);
    Keeper("wl-copy");
    EXPECT_EQ(Set(":0", nullptr), 0);
}

TEST_F(PosixClipboardTest, ProgramThatFailsHasNotTakenTheText)
{
    Program("xclip", "exit 1\n");
    EXPECT_EQ(Set(":0", nullptr), 0);
    Program("xclip", "kill -9 $$\n");
    EXPECT_EQ(Set(":0", nullptr), 0);
    m_folder.File("xclip", "no program");
    EXPECT_EQ(Set(":0", nullptr), 0);
}

TEST_F(PosixClipboardTest, ProgramThatHangsIsKilledWithWhatItHasStarted)
{
    Program("xclip", "/bin/sleep 60 & echo $! >'" + Kept("started") + "'; echo $$ >'" + Kept("itself") + "'; wait\n");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Set(":0", nullptr), 0);
    const auto taken = std::chrono::steady_clock::now() - start;
    EXPECT_GE(taken, std::chrono::seconds(4));
    EXPECT_LT(taken, std::chrono::seconds(30));
    for (const char* const name : {"started", "itself"})
    {
        const std::string process = m_folder.BytesOf(m_folder / name);
        ASSERT_FALSE(process.empty());
        const std::string status = "/proc/" + process.substr(0, process.size() - 1) + "/stat";
        // It may be on its way out, and then be waiting to be collected by whoever has adopted it.
        std::string text;
        const auto isThere = [&]
        {
            text = m_folder.BytesOf(status);
            return !text.empty() && text.find(") Z ") == std::string::npos;
        };
        for (int i = 0; i < 10000 && isThere(); ++i)
            ::usleep(10000);
        EXPECT_FALSE(isThere()) << text;
    }
}

TEST_F(PosixClipboardTest, ProgramsThatAllHangHaveFiveSecondsTogether)
{
    for (const char* const program : {"wl-copy", "xclip", "xsel"})
        Program(program, "echo \"${0##*/}\" >>'" + Kept("started") + "'; exec /bin/sleep 60\n");
    EXPECT_EQ(Set(":0", "wayland-0"), 0);
    EXPECT_EQ(m_folder.BytesOf(m_folder / "started"), "wl-copy\n") << "which took all of the time";
}

TEST_F(PosixClipboardTest, ServerThatHangsIsNoneAndNothingIsStarted)
{
    for (const char* const program : {"wl-copy", "xclip", "xsel"})
        Keeper(program);
    const support::MadeUpXServer server;
    ASSERT_NE(server.Display(), "");
    const std::string socket = "/tmp/.X11-unix/X" + server.Display().substr(1);
    const auto start = std::chrono::steady_clock::now();
    // Of either kind.
    EXPECT_EQ(Set((server.Display() + ".0").c_str(), socket.c_str()), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_EQ(Arguments(), "");
}

TEST_F(PosixClipboardTest, ServerThatRefusesTheGreetingIsThere)
{
    Keeper("xclip");
    const support::MadeUpXServer server({std::string(8, '\0')});
    EXPECT_EQ(Set(server.Display().c_str(), nullptr), 1);
}

TEST_F(PosixClipboardTest, OwnerOfTheTextGoesOnByItself)
{
    Program("xclip", "/bin/cat >'" + Kept("text") + "'; (" + support::AwaitingFile(m_folder / "now") +
                         "echo went on >'" + Kept("owner") + "') &\n");
    EXPECT_EQ(Set(":0", nullptr), 1);
    EXPECT_FALSE(boost::filesystem::exists(m_folder / "owner")) << "it is not waited for";
    EXPECT_EQ(Text(), pastedBytes);
    m_folder.File("now", "");
    std::string said;
    for (int i = 0; i < 10000 && said.empty(); ++i)
    {
        ::usleep(10000);
        said = m_folder.BytesOf(m_folder / "owner");
    }
    EXPECT_EQ(said, "went on\n");
}

TEST_F(PosixClipboardTest, OwnerThatVanishesDoesNoHarm)
{
    Program("xclip", "(/bin/sleep 60 & echo $! >'" + Kept("owner") + "')\n");
    EXPECT_EQ(Set(":0", nullptr), 1);
    const std::string owner = m_folder.BytesOf(m_folder / "owner");
    ASSERT_EQ(::kill(static_cast<pid_t>(std::stol(owner)), SIGKILL), 0);
    Keeper("xclip");
    EXPECT_EQ(Set(":0", nullptr), 1);
    EXPECT_EQ(Text(), pastedBytes);
}

TEST_F(PosixClipboardTest, LongTextIsTakenWholeAndOneThatNobodyReadsBreaksNothing)
{
    const auto set = [this]
    {
        Child child(
            [this]
            {
                ::setenv("PATH", m_folder.Path().c_str(), 1);
                ::setenv("DISPLAY", ":0", 1);
                ::unsetenv("WAYLAND_DISPLAY");
                return Clipboard().SetText(std::wstring(10'000'000, L'x').c_str()) ? 1 : 0;
            });
        return child.ExitCode();
    };
    Keeper("xclip");
    EXPECT_EQ(set(), 1);
    EXPECT_EQ(Text(), std::string(10'000'000, 'x'));
    Program("xclip", "exit 0\n");
    EXPECT_EQ(set(), 1);
}

TEST_F(PosixClipboardTest, IsTheSameWhereTheHostIgnoresTheEndOfItsChildren)
{
    Keeper("xclip");
    EXPECT_EQ(Set(":0", nullptr, [] { ::signal(SIGCHLD, SIG_IGN); }), 1);
    EXPECT_EQ(Text(), pastedBytes);
    Program("xclip", "exit 1\n");
    EXPECT_EQ(Set(":0", nullptr, [] { ::signal(SIGCHLD, SIG_IGN); }), 0);
}

TEST_F(PosixClipboardTest, IsTheSameWhereTheHostHasClosedTheStandardStreams)
{
    Keeper("xclip");
    const auto close = []
    {
        for (int file = 0; file < 3; ++file)
            ::close(file);
    };
    EXPECT_EQ(Set(":0", nullptr, close), 1);
    EXPECT_EQ(Text(), pastedBytes);
}

TEST_F(PosixClipboardTest, OwnerKeepsNoDescriptorOfTheHost)
{
    Program("xclip", "[ ! -e /proc/$$/fd/77 ]\n");
    EXPECT_EQ(Set(":0", nullptr, [] { ::dup2(2, 77); }), 1);
    Program("xclip", "[ -e /proc/$$/fd/0 ]\n");
    EXPECT_EQ(Set(":0", nullptr), 1) << "the question is a good one";
}

TEST_F(PosixClipboardTest, WhatCannotBeStartedHasNotTakenTheText)
{
    Keeper("xclip");
    for (const char* const call : {"memfd_create", "write", "lseek", "clone", "open"})
    {
        Child child(
            [&]
            {
                ::setenv("PATH", m_folder.Path().c_str(), 1);
                ::setenv("DISPLAY", ":0", 1);
                ::unsetenv("WAYLAND_DISPLAY");
                const std::ptrdiff_t descriptors = support::OpenDescriptors();
                const FailingCall failing(call, EMFILE, FailingCall::always);
                const bool isSet = Clipboard().SetText(pasted);
                return !isSet && failing.HasFailed() && support::OpenDescriptors() == descriptors ? 0 : 1;
            });
        EXPECT_EQ(child.ExitCode(), 0) << call;
    }
    EXPECT_EQ(Arguments(), "");
}

TEST_F(PosixClipboardTest, SignalsDoNotHurry)
{
    Program("xclip", "/bin/sleep 0.2; /bin/cat >'" + Kept("text") + "'\n");
    const auto often = [] { static const support::FrequentAlarm alarm; };
    EXPECT_EQ(Set(":0", nullptr, often), 1);
    EXPECT_EQ(Text(), pastedBytes);
}

TEST(RealClipboardTest, TextCanBePastedFromARealXServerUntilItsOwnerVanishes)
{
    for (const char* const program : {"xclip", "xsel"})
    {
        support::XServer server;
        if (!server.IsThere() || ::access((std::string("/usr/bin/") + program).c_str(), X_OK) != 0)
            GTEST_SKIP() << "The machine lacks Xvfb or " << program;
        const support::TemporaryFolder folder;
        boost::filesystem::create_symlink(std::string("/usr/bin/") + program, folder / program);
        const std::string paste = std::string("DISPLAY=") + server.Display() +
                                  (program == std::string("xclip") ? " timeout 10 xclip -out -selection clipboard"
                                                                   : " timeout 10 xsel --output --clipboard");
        const auto set = [&](const wchar_t* text)
        {
            Child child(
                [&]
                {
                    ::setenv("PATH", folder.Path().c_str(), 1);
                    ::setenv("DISPLAY", server.Display().c_str(), 1);
                    ::unsetenv("WAYLAND_DISPLAY");
                    return Clipboard().SetText(text) ? 1 : 0;
                });
            return child.ExitCode();
        };
        EXPECT_EQ(set(pasted), 1);
        // xsel says that it has taken a text a moment ahead of that.
        const auto pastes = [&](const std::string& text)
        {
            std::string found;
            for (int i = 0; i < 100 && found != text; ++i, ::usleep(50000))
                found = support::OutputOfShell(paste);
            return found;
        };
        EXPECT_EQ(pastes(pastedBytes), pastedBytes) << program;
        EXPECT_EQ(set(L"second"), 1);
        EXPECT_EQ(pastes("second"), "second") << program;
        server.End();
        EXPECT_EQ(set(L"third"), 0) << "nobody is there";
    }
}
