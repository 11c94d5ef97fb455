#include "utility/desktop/SendMail.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/Environment.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/LeasedFile.h"
#include "tests/support/posix/MadeUpXServer.h"
#include "tests/support/posix/Script.h"
#include "tests/support/posix/ScriptTest.h"
#include "tests/support/TemporaryFolder.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <map>
#include <pty.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using boost::filesystem::path;
using support::Environment;
using support::FailingCall;
using support::TemporaryFolder;

namespace
{

std::string PercentDecoded(const std::string& text)
{
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        if (text[at] == '%')
        {
            decoded += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
            at += 2;
        }
        else
            decoded += text[at];
    }
    return decoded;
}

/// What Thunderbird makes of the argument of -compose: pairs between commas. A text between single quotes, which end
/// ahead of a comma or at the end, is taken as it is; another one is decoded.
std::map<std::string, std::string> AsThunderbirdReads(const std::string& argument)
{
    std::map<std::string, std::string> pairs;
    for (std::size_t at = 0; at < argument.size();)
    {
        const std::size_t value = argument.find('=', at) + 1;
        const bool isQuoted = argument[value] == '\'';
        const std::size_t end = std::min(argument.find(isQuoted ? "'," : ",", value + isQuoted), argument.size());
        const std::string text = argument.substr(value, end - value + (isQuoted && end != argument.size()));
        pairs[argument.substr(at, value - 1 - at)] = isQuoted ? text.substr(1, text.size() - 2) : PercentDecoded(text);
        at = end + 1 + (isQuoted && end != argument.size());
    }
    return pairs;
}

/// Where the address of a file leads.
std::string PathOfUrl(const std::string& url)
{
    EXPECT_EQ(url.substr(0, 7), "file://");
    // More than one attachment is separated by commas.
    EXPECT_EQ(url.find(','), std::string::npos);
    return PercentDecoded(url.substr(7));
}

/// Programs that the test writes are all that is on the path. There is a display, and neither a bus nor a home.
class SendMailPrograms : public ::testing::Test
{
protected:
    SendMailPrograms()
    {
        boost::filesystem::create_directory(m_bin);
        boost::filesystem::create_directory(m_temporary);
    }

    void Program(const char* name, const std::string& script) const { support::MakeScript(m_bin / name, script); }

    /// A program that records its arguments, and does so much more.
    void Recorder(const char* name, const std::string& more = "") const
    {
        Program(name, "printf '%s\\0' \"$@\" >'" + (m_folder / "half").string() + "'\n/bin/mv '" +
                          (m_folder / "half").string() + "' '" + (m_folder / "arguments").string() + "'\n" + more);
    }

    /// xdg-email, where the desktop's mail program is this one.
    void Relay(const std::string& mailProgram, const std::string& more = "") const
    {
        Program("xdg-mime", "[ \"$*\" = 'query default x-scheme-handler/mailto' ] && echo " + mailProgram);
        Recorder("xdg-email", more);
    }

    /// Those that the program got which was to be started; on a busy machine it may come to that behind the call.
    std::vector<std::string> Arguments() const
    {
        EXPECT_TRUE(Comes(m_folder / "arguments"));
        std::vector<std::string> arguments;
        const std::string bytes = TemporaryFolder::BytesOf(m_folder / "arguments");
        for (std::size_t at = 0; at < bytes.size();)
        {
            arguments.emplace_back(bytes.c_str() + at);
            at += arguments.back().size() + 1;
        }
        return arguments;
    }

    /// The texts that Thunderbird got.
    std::map<std::string, std::string> ThunderbirdsMail() const
    {
        const std::vector<std::string> arguments = Arguments();
        EXPECT_EQ(arguments.size(), 2u);
        if (arguments.size() != 2 || arguments[0] != "-compose")
            return {};
        return AsThunderbirdReads(arguments[1]);
    }

    /// Sends a part, and gives what Send says.
    bool Send(const std::wstring& recipient = L"", const std::wstring& subject = L"",
              const std::wstring& name = L"Part 7.nc", const std::wstring& note = L"") const
    {
        return SendFile(m_part, recipient, subject, name, note);
    }
    static bool SendFile(const path& file, const std::wstring& recipient = L"", const std::wstring& subject = L"",
                         const std::wstring& name = L"Part 7.nc", const std::wstring& note = L"")
    {
        CSendMail mail;
        EXPECT_TRUE(mail.Init());
        return mail.Send(recipient, subject, file, name, note, false);
    }

    static std::string ReasonOfInit()
    {
        CSendMail mail;
        try
        {
            mail.Init();
        }
        catch (const std::runtime_error& failure)
        {
            return failure.what();
        }
        return {};
    }

    std::ptrdiff_t Copies() const { return std::distance(boost::filesystem::directory_iterator(m_temporary), {}); }

    /// Waits for a file.
    static bool Comes(const path& file)
    {
        for (int tries = 0; tries < 2000 && !boost::filesystem::exists(file); ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return boost::filesystem::exists(file);
    }

    static constexpr const char* noProgram = "No mail program was found.";
    static constexpr const char* unusable = "The mail program cannot be used to send messages.";

    const TemporaryFolder m_folder;
    const path m_bin = m_folder / "bin";
    const path m_temporary = m_folder / "temporary";
    const path m_part = m_folder.File("a part's own, name", "N10 G01\n");
    const Environment m_path{"PATH", m_bin.string()};
    const Environment m_tmpdir{"TMPDIR", m_temporary.string()};
    const Environment m_display{"DISPLAY", ":99"};
    const Environment m_wayland{"WAYLAND_DISPLAY", {}};
    const Environment m_bus{"DBUS_SESSION_BUS_ADDRESS", {}};
    const Environment m_runtime{"XDG_RUNTIME_DIR", {}};
    const Environment m_home{"HOME", {}};
    const Environment m_mailer{"MAILER", {}};
};

/// What a mail program reads five seconds later, when the written file is long gone.
std::string LargePart()
{
    std::string bytes;
    for (unsigned each = 1; bytes.size() < 300'001; each = each * 1664525 + 1013904223)
        bytes += static_cast<char>(each >> 24);
    return bytes;
}

bool WriteLargePart(std::int64_t, const path& file)
{
    std::ofstream(file.string(), std::ios::binary) << LargePart();
    return true;
}

}

TEST_F(SendMailPrograms, ThunderbirdGetsAMailThatItReadsAsItIs)
{
    Recorder("thunderbird");
    EXPECT_FALSE(Send(L"o'neil, \"shop\" <a@example.com>",
                      L"It's 5 %41,attachment='file:///etc/passwd' \u00B0\U0001F600",
                      L"Zo\u00EB's, \"part\" = 7% $(id) `id`\n.nc", L"First, 'this'\r\n<b>then</b>\nthat"));
    auto mail = ThunderbirdsMail();
    EXPECT_EQ(mail["to"], "o'neil, \"shop\" <a@example.com>");
    EXPECT_EQ(mail["subject"], "It's 5 %41,attachment='file:///etc/passwd' \u00B0\U0001F600");
    EXPECT_EQ(mail["body"], "First, 'this'\n<b>then</b>\nthat");
    EXPECT_EQ(mail["format"], "2");
    EXPECT_EQ(mail.size(), 5u);
    const path attachment = PathOfUrl(mail["attachment"]);
    EXPECT_EQ(attachment.filename(), "Zo\u00EB's, \"part\" = 7% $(id) `id`\n.nc");
    EXPECT_EQ(TemporaryFolder::BytesOf(attachment), "N10 G01\n");
}

TEST_F(SendMailPrograms, EmptyTextsAreLeftOut)
{
    Recorder("thunderbird");
    EXPECT_FALSE(Send(L"", L"", L"", L"A note goes with a subject"));
    auto mail = ThunderbirdsMail();
    EXPECT_EQ(mail.size(), 1u);
    EXPECT_EQ(path(PathOfUrl(mail["attachment"])).filename(), m_part.filename());
}

TEST_F(SendMailPrograms, LineBreakInAHeadingBecomesABlank)
{
    Recorder("thunderbird");
    EXPECT_FALSE(Send(L"a@example.com\nBcc: b@example.com", L"Part\r\nBcc: b@example.com"));
    auto mail = ThunderbirdsMail();
    EXPECT_EQ(mail["to"], "a@example.com Bcc: b@example.com");
    EXPECT_EQ(mail["subject"], "Part  Bcc: b@example.com");
}

TEST_F(SendMailPrograms, TextEndsAtANullCharacter)
{
    Recorder("thunderbird");
    using namespace std::string_literals;
    EXPECT_FALSE(Send(L"a@example.com\0b"s, L"Part\0 7"s, L"Part.nc\0.exe"s, L""));
    auto mail = ThunderbirdsMail();
    EXPECT_EQ(mail["to"], "a@example.com");
    EXPECT_EQ(mail["subject"], "Part");
    EXPECT_EQ(path(PathOfUrl(mail["attachment"])).filename(), "Part.nc");
}

TEST_F(SendMailPrograms, MailProgramThatReadsFiveSecondsLaterGetsTheWholeAttachmentUnderItsName)
{
    Recorder("thunderbird", "url=${2#*file://}\n(/bin/sleep 5; " + support::AwaitingFile(m_folder / "now") +
                                "/bin/cat \"${url%?}\" >'" + (m_folder / "got").string() + "'; echo >'" +
                                (m_folder / "done").string() + "') &");
    const path folder = m_folder / "written";
    boost::filesystem::create_directory(folder);
    {
        CSendMail mail;
        mail.Init();
        EXPECT_TRUE(mail.Send(&WriteLargePart, 0, L"Part-7.nc", folder));
    }
    EXPECT_TRUE(boost::filesystem::is_empty(folder));
    EXPECT_FALSE(boost::filesystem::exists(m_folder / "got"));
    m_folder.File("now", "");
    ASSERT_TRUE(Comes(m_folder / "done"));
    EXPECT_TRUE(TemporaryFolder::BytesOf(m_folder / "got") == LargePart());
    EXPECT_EQ(path(PathOfUrl(ThunderbirdsMail()["attachment"])).filename(), "Part-7.nc");
}

TEST_F(SendMailPrograms, CopyOfAnAttachmentIsForTheUserAlone)
{
    Recorder("thunderbird");
    const mode_t earlier = ::umask(0);
    EXPECT_FALSE(Send());
    ::umask(earlier);
    const path copy = PathOfUrl(ThunderbirdsMail()["attachment"]);
    EXPECT_EQ(copy.parent_path().parent_path(), m_temporary);
    EXPECT_EQ(boost::filesystem::status(copy.parent_path()).permissions(), boost::filesystem::owner_all);
    EXPECT_EQ(boost::filesystem::status(copy).permissions(),
              boost::filesystem::owner_read | boost::filesystem::owner_write);
}

TEST_F(SendMailPrograms, MailProgramThatFailsIsAFailureAndItsCopyIsGone)
{
    Recorder("thunderbird", "exit 1");
    EXPECT_TRUE(Send());
    EXPECT_EQ(Arguments().size(), 2u);
    EXPECT_EQ(Copies(), 0);
}

TEST_F(SendMailPrograms, MailProgramThatDiesIsAFailure)
{
    Recorder("thunderbird", "kill -9 $$");
    EXPECT_TRUE(Send());
    EXPECT_EQ(Copies(), 0);
}

TEST_F(SendMailPrograms, MailProgramThatCannotBeStartedIsAFailure)
{
    const path file = m_bin / "thunderbird";
    std::ofstream(file.string()) << "#!/nowhere/sh\n";
    boost::filesystem::permissions(file, boost::filesystem::owner_all);
    EXPECT_TRUE(Send());
    EXPECT_EQ(Copies(), 0);
}

TEST_F(SendMailPrograms, MailProgramThatRunsOnIsWaitedForFiveSecondsAndIsNoChildOfTheHost)
{
    Recorder("thunderbird", support::AwaitingFile(m_folder / "now") + "echo >'" + (m_folder / "done").string() + "'");
    const support::CountedSignal ends(SIGCHLD);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(Send());
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(taken.count(), 4.9);
    EXPECT_LT(taken.count(), 30.0);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG | __WALL), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_FALSE(boost::filesystem::exists(m_folder / "done"));
    m_folder.File("now", "");
    EXPECT_TRUE(Comes(m_folder / "done"));
    EXPECT_EQ(ends.Count(), 0);
    EXPECT_EQ(Copies(), 1);
}

TEST_F(SendMailPrograms, MailProgramThatEndsAtOnceLeavesNoZombieAndTheHostIsNotTold)
{
    Recorder("thunderbird");
    const support::CountedSignal ends(SIGCHLD);
    EXPECT_FALSE(Send());
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG | __WALL), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(ends.Count(), 0);
    ::raise(SIGCHLD);
    EXPECT_EQ(ends.Count(), 1) << "the host's own action for them is still there";
}

TEST_F(SendMailPrograms, HostThatIgnoresItsChildrenIsToldOfSuccessAndFailureAllTheSame)
{
    struct sigaction ignoring = {};
    ignoring.sa_handler = SIG_IGN;
    struct sigaction earlier;
    ::sigaction(SIGCHLD, &ignoring, &earlier);
    Recorder("thunderbird");
    EXPECT_FALSE(Send());
    Recorder("thunderbird", "exit 3");
    EXPECT_TRUE(Send());
    ::sigaction(SIGCHLD, &earlier, nullptr);
}

TEST_F(SendMailPrograms, MailProgramHasNoFileOfTheHostsAndASessionOfItsOwn)
{
    constexpr int openFile = 77;
    ASSERT_EQ(::dup2(STDERR_FILENO, openFile), openFile);
    Recorder("thunderbird", "/bin/ls -l /proc/$$/fd >'" + (m_folder / "files").string() +
                                "'\n/bin/cut -d ' ' -f 6 /proc/$$/stat >'" + (m_folder / "session").string() +
                                "'\necho >'" + (m_folder / "done").string() + "'");
    const std::ptrdiff_t before = support::OpenDescriptors();
    EXPECT_FALSE(Send());
    EXPECT_EQ(support::OpenDescriptors(), before);
    ::close(openFile);
    ASSERT_TRUE(Comes(m_folder / "done"));
    const std::string files = TemporaryFolder::BytesOf(m_folder / "files");
    EXPECT_EQ(files.find(" 77 ->"), std::string::npos) << files;
    EXPECT_NE(files.find(" 0 -> /dev/null"), std::string::npos) << files;
    EXPECT_NE(files.find(" 2 -> /dev/null"), std::string::npos) << files;
    const std::string session = TemporaryFolder::BytesOf(m_folder / "session");
    EXPECT_NE(std::stol(session), ::getsid(0));
}

TEST_F(SendMailPrograms, ClosedStandardStreamsOfTheHostHarmNothing)
{
    Relay("org.gnome.Evolution.desktop");
    int kept[3];
    for (int stream = 0; stream < 3; ++stream)
    {
        kept[stream] = ::fcntl(stream, F_DUPFD_CLOEXEC, 10);
        ::close(stream);
    }
    CSendMail mail;
    bool isPrepared = true;
    try
    {
        mail.Init();
    }
    catch (const std::runtime_error&)
    {
        isPrepared = false;
    }
    const bool isFailure = mail.Send(L"", L"", m_part, L"Part.nc", L"", false);
    for (int stream = 0; stream < 3; ++stream)
    {
        EXPECT_NE(::fcntl(stream, F_GETFD), 0) << "left open";
        ::dup2(kept[stream], stream);
        ::close(kept[stream]);
    }
    EXPECT_TRUE(isPrepared);
    EXPECT_FALSE(isFailure);
    ASSERT_EQ(Arguments().size(), 4u);
    EXPECT_EQ(TemporaryFolder::BytesOf(Arguments()[2]), "N10 G01\n");
}

TEST_F(SendMailPrograms, RelayGetsTheAttachmentAndAnAddressInWhichNothingIsAnOption)
{
    Relay("org.gnome.Evolution.desktop");
    EXPECT_FALSE(Send(L"--attach", L"--to 50% & 'x' \u00FC", L"-Part, 'n' \"7\".nc", L"Hello\nyou"));
    const std::vector<std::string> arguments = Arguments();
    ASSERT_EQ(arguments.size(), 4u);
    EXPECT_EQ(arguments[0], "--utf8");
    EXPECT_EQ(arguments[1], "--attach");
    EXPECT_EQ(path(arguments[2]).filename(), "-Part, 'n' \"7\".nc");
    EXPECT_EQ(TemporaryFolder::BytesOf(arguments[2]), "N10 G01\n");
    EXPECT_EQ(arguments[3], "mailto:--attach?subject=--to%2050%25%20%26%20%27x%27%20%C3%BC&body=Hello%0D%0Ayou");
}

TEST_F(SendMailPrograms, RelayOfTheMachineBringsTheAttachmentToThunderbirdInEveryLocale)
{
    if (!boost::filesystem::exists("/usr/bin/xdg-email") || !boost::filesystem::exists("/usr/bin/xdg-mime"))
        GTEST_SKIP() << "The machine lacks xdg-email";
    if (boost::filesystem::exists("/usr/bin/thunderbird"))
        GTEST_SKIP() << "The machine lacks a path without Thunderbird";
    // It is not on the path, but what the desktop names.
    Recorder("thunderbird");
    const path applications = m_folder / "data/applications";
    boost::filesystem::create_directories(applications);
    std::ofstream((applications / "thunderbird.desktop").string())
        << "[Desktop Entry]\nType=Application\nName=Mails\nExec=" << (m_bin / "thunderbird").string()
        << " %u\nMimeType=x-scheme-handler/mailto;\n";
    std::ofstream((m_folder / "mimeapps.list").string())
        << "[Default Applications]\nx-scheme-handler/mailto=thunderbird.desktop\n";
    const Environment data("XDG_DATA_HOME", (m_folder / "data").string());
    const Environment configuration("XDG_CONFIG_HOME", m_folder.Path().string());
    const Environment desktop("XDG_CURRENT_DESKTOP", {});
    const Environment locale("LC_ALL", "C");
    m_path.Set("/usr/bin:/bin");
    EXPECT_FALSE(Send(L"a@example.com", L"It's, well", L"Part 7 \u00FC %41.nc", L"One\ntwo"));
    auto mail = ThunderbirdsMail();
    EXPECT_EQ(mail["subject"], "It's, well");
    EXPECT_EQ(mail["body"], "One\r\ntwo");
    EXPECT_EQ(path(mail["attachment"]).filename(), "Part 7 \u00FC %41.nc");
    EXPECT_EQ(TemporaryFolder::BytesOf(mail["attachment"]), "N10 G01\n");
}

TEST_F(SendMailPrograms, RelayThatFailsIsAFailure)
{
    Relay("org.gnome.Evolution.desktop", "exit 4");
    EXPECT_TRUE(Send());
    EXPECT_EQ(Copies(), 0);
}

TEST_F(SendMailPrograms, RelayToAProgramThatMayDropAttachmentsIsNotUsed)
{
    Relay("mutt.desktop");
    EXPECT_EQ(ReasonOfInit(), unusable);
    Relay("org.kde.kmail2.desktop");
    EXPECT_EQ(ReasonOfInit(), "");
    const Environment mailer("MAILER", "mutt");
    EXPECT_EQ(ReasonOfInit(), unusable);
}

TEST_F(SendMailPrograms, RelayWithoutAnyMailProgramIsNotUsed)
{
    Relay("");
    EXPECT_EQ(ReasonOfInit(), unusable);
    Program("xdg-mime", "echo evolution; exit 1");
    EXPECT_EQ(ReasonOfInit(), unusable);
    boost::filesystem::remove(m_bin / "xdg-mime");
    EXPECT_EQ(ReasonOfInit(), unusable);
}

TEST_F(SendMailPrograms, WhatTheRelayWouldSpoilIsAFailureAndStartsNothing)
{
    Relay("thunderbird_thunderbird.desktop");
    EXPECT_FALSE(Send(L"a@example.com", L"It's, \\well", L"Part 7.nc"));
    boost::filesystem::remove(m_folder / "arguments");
    for (const wchar_t* const name : {L"Part, 7.nc", L"Part' 7.nc", L"Part\\n7.nc", L"Part\n7.nc", L"Part\"7.nc"})
        EXPECT_TRUE(Send(L"a@example.com", L"", name));
    EXPECT_TRUE(Send(L"a@example.com',attachment='/etc/passwd"));
    EXPECT_FALSE(boost::filesystem::exists(m_folder / "arguments"));
    Relay("org.gnome.Evolution.desktop");
    EXPECT_TRUE(Send(L"a@example.com", L"", L"Part\\n7.nc"));
    EXPECT_FALSE(boost::filesystem::exists(m_folder / "arguments"));
}

TEST_F(SendMailPrograms, ThunderbirdComesAheadOfTheRelay)
{
    Relay("org.gnome.Evolution.desktop");
    Recorder("thunderbird");
    EXPECT_FALSE(Send());
    EXPECT_EQ(Arguments()[0], "-compose");
}

TEST_F(SendMailPrograms, NoProgramOnThePathIsToldByInit)
{
    EXPECT_EQ(ReasonOfInit(), noProgram);
    m_path.Set("");
    EXPECT_EQ(ReasonOfInit(), noProgram);
    m_path.Set("/nowhere::relative");
    EXPECT_EQ(ReasonOfInit(), noProgram);
}

TEST_F(SendMailPrograms, ProgramInTheCurrentFolderIsNotTaken)
{
    Recorder("thunderbird");
    const path earlier = boost::filesystem::current_path();
    boost::filesystem::current_path(m_bin);
    m_path.Set(":.");
    EXPECT_EQ(ReasonOfInit(), noProgram);
    boost::filesystem::current_path(earlier);
}

TEST_F(SendMailPrograms, FileThatIsNoProgramIsNotTaken)
{
    Recorder("thunderbird");
    boost::filesystem::permissions(m_bin / "thunderbird", boost::filesystem::owner_read);
    EXPECT_EQ(ReasonOfInit(), noProgram);
    boost::filesystem::remove(m_bin / "thunderbird");
    boost::filesystem::create_directory(m_bin / "thunderbird");
    EXPECT_EQ(ReasonOfInit(), noProgram);
}

TEST_F(SendMailPrograms, WithoutADisplayThereIsNoMailProgram)
{
    Recorder("thunderbird");
    Relay("org.gnome.Evolution.desktop");
    m_display.Set({});
    EXPECT_EQ(ReasonOfInit(), noProgram);
}

TEST_F(SendMailPrograms, DisplayThatHangsIsNone)
{
    Recorder("thunderbird");
    const support::MadeUpXServer server;
    ASSERT_NE(server.Display(), "");
    m_display.Set(server.Display());
    EXPECT_EQ(ReasonOfInit(), noProgram);
}

TEST_F(SendMailPrograms, SessionWithoutABusIsToldByInit)
{
    m_runtime.Set(m_folder.Path().string());
    EXPECT_EQ(ReasonOfInit(), unusable);
    m_bus.Set("unix:path=/nowhere");
    EXPECT_EQ(ReasonOfInit(), unusable);
    m_bus.Set("rubbish");
    EXPECT_EQ(ReasonOfInit(), unusable);
}

TEST_F(SendMailPrograms, SessionWithoutABusLeavesTheMailToThunderbird)
{
    Recorder("thunderbird");
    m_bus.Set("unix:path=/nowhere");
    EXPECT_FALSE(Send());
    EXPECT_EQ(Arguments().size(), 2u);
}

TEST_F(SendMailPrograms, AttachmentThatIsNoFileIsAFailureAndStartsNothing)
{
    Recorder("thunderbird");
    const path pipe = m_folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
    const path loop = m_folder / "loop";
    boost::filesystem::create_symlink(loop, loop);
    using namespace std::string_literals;
    for (const path& file : {pipe, loop, m_folder.Path(), m_folder / "missing", m_part / "below", path(),
                             path("/dev/null"), path(m_part.native() + "\0more"s), path(std::string(5000, 'x'))})
        EXPECT_TRUE(SendFile(file)) << file;
    EXPECT_FALSE(boost::filesystem::exists(m_folder / "arguments"));
    EXPECT_EQ(Copies(), 0);
}

TEST_F(SendMailPrograms, AttachmentThatAnotherProgramHasALeaseOnIsWaitedFor)
{
    Recorder("thunderbird");
    support::LeasedFile leased(m_part);
    EXPECT_FALSE(Send());
    EXPECT_TRUE(leased.WasGivenUp());
}

TEST_F(SendMailPrograms, AttachmentThatIsATerminalDoesNotBecomeTheHosts)
{
    Recorder("thunderbird");
    support::Child child(
        [&]
        {
            int controlling = -1;
            int terminal = -1;
            char name[64];
            if (::openpty(&controlling, &terminal, name, nullptr, nullptr) != 0 || ::open("/dev/tty", O_RDWR) >= 0)
                return 2;
            CSendMail mail;
            mail.Init();
            const bool isFailure = mail.Send(L"", L"", name, L"Part.nc", L"", false);
            return isFailure && ::open("/dev/tty", O_RDWR) < 0 ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(SendMailPrograms, AttachmentWithoutAnyBytesIsSent)
{
    Recorder("thunderbird");
    EXPECT_FALSE(SendFile(m_folder.File("empty", "")));
    const path copy = PathOfUrl(ThunderbirdsMail()["attachment"]);
    EXPECT_TRUE(boost::filesystem::exists(copy));
    EXPECT_EQ(boost::filesystem::file_size(copy), 0u);
}

TEST_F(SendMailPrograms, PathOfAnAttachmentMayHaveBytesThatAreNoText)
{
    Recorder("thunderbird");
    const path file = m_folder.File("\xFF, '\".nc", "N20\n");
    EXPECT_FALSE(SendFile(file, L"", L"", L""));
    const path copy = PathOfUrl(ThunderbirdsMail()["attachment"]);
    EXPECT_EQ(copy.filename(), file.filename());
    EXPECT_EQ(TemporaryFolder::BytesOf(copy), "N20\n");
}

TEST_F(SendMailPrograms, SlashInAnAttachmentNameBecomesAnUnderscore)
{
    Recorder("thunderbird");
    EXPECT_FALSE(Send(L"", L"", L"../../Part 1/2.nc"));
    const path copy = PathOfUrl(ThunderbirdsMail()["attachment"]);
    EXPECT_EQ(copy.filename(), ".._.._Part 1_2.nc");
    EXPECT_EQ(copy.parent_path().parent_path(), m_temporary);
}

TEST_F(SendMailPrograms, AttachmentNameThatNoFileCanHaveIsAFailure)
{
    Recorder("thunderbird");
    for (const std::wstring& name : {std::wstring(256, L'x'), std::wstring(L"."), std::wstring(L"..")})
        EXPECT_TRUE(Send(L"", L"", name));
    EXPECT_FALSE(boost::filesystem::exists(m_folder / "arguments"));
    EXPECT_EQ(Copies(), 0);
    EXPECT_FALSE(Send(L"", L"", std::wstring(255, L'x')));
}

TEST_F(SendMailPrograms, FullDiskIsAFailureAndLeavesNoHalfCopy)
{
    Recorder("thunderbird");
    for (const char* const call : {"write", "close"})
    {
        CSendMail mail;
        mail.Init();
        bool isFailure = false;
        {
            const FailingCall failing(call, ENOSPC);
            isFailure = mail.Send(L"", L"", m_part, L"Part.nc", L"", false);
            EXPECT_TRUE(failing.HasFailed()) << call;
        }
        EXPECT_TRUE(isFailure) << call;
        EXPECT_EQ(Copies(), 0) << call;
    }
    EXPECT_FALSE(boost::filesystem::exists(m_folder / "arguments"));
}

TEST_F(SendMailPrograms, FileThatCannotBeReadIsAFailure)
{
    Recorder("thunderbird");
    CSendMail mail;
    mail.Init();
    {
        const FailingCall failing("read", EIO);
        EXPECT_TRUE(mail.Send(L"", L"", m_part, L"Part.nc", L"", false));
        EXPECT_TRUE(failing.HasFailed());
    }
    EXPECT_EQ(Copies(), 0);
}

TEST_F(SendMailPrograms, BytesThatAreWrittenOneByOneAreAllThere)
{
    Recorder("thunderbird");
    {
        const support::ShortWrites few(1);
        EXPECT_FALSE(Send());
    }
    EXPECT_EQ(TemporaryFolder::BytesOf(PathOfUrl(ThunderbirdsMail()["attachment"])), "N10 G01\n");
}

TEST_F(SendMailPrograms, MissingFolderForTemporaryFilesIsAFailure)
{
    Recorder("thunderbird");
    m_tmpdir.Set((m_folder / "missing").string());
    EXPECT_TRUE(Send());
    EXPECT_FALSE(boost::filesystem::exists(m_folder / "arguments"));
}

TEST_F(SendMailPrograms, CopyIsRemovedByTheNextMailAWeekLater)
{
    Recorder("thunderbird");
    const std::time_t week = 7 * 24 * 60 * 60;
    const auto make = [&](const char* name, std::time_t age)
    {
        boost::filesystem::create_directory(m_temporary / name);
        std::ofstream((m_temporary / name / "part.nc").string()) << "N10";
        boost::filesystem::last_write_time(m_temporary / name, std::time(nullptr) - age);
    };
    make("utility-mail-older", week + 60);
    make("utility-mail-newer", week - 60);
    make("another-old", 2 * week);
    make("old", 2 * week);
    boost::filesystem::create_directory_symlink(m_temporary / "old", m_temporary / "utility-mail-link");
    const timespec old[2] = {{std::time(nullptr) - 2 * week, 0}, {std::time(nullptr) - 2 * week, 0}};
    ::utimensat(AT_FDCWD, (m_temporary / "utility-mail-link").c_str(), old, AT_SYMLINK_NOFOLLOW);
    EXPECT_FALSE(Send());
    EXPECT_FALSE(boost::filesystem::exists(m_temporary / "utility-mail-older"));
    for (const char* const name : {"utility-mail-newer", "another-old", "old", "utility-mail-link"})
        EXPECT_TRUE(boost::filesystem::exists(m_temporary / name / "part.nc")) << name;
    EXPECT_EQ(Copies(), 5);
}

TEST_F(SendMailPrograms, SignalsThatComeAllTheTimeHarmNothing)
{
    Recorder("thunderbird", "/bin/sleep 0.3");
    const support::FrequentAlarm alarm;
    EXPECT_FALSE(Send());
    EXPECT_GT(alarm.Count(), 0);
    EXPECT_EQ(Arguments().size(), 2u);
}
