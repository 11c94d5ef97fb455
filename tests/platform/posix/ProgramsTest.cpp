#include "utility/platform/Programs.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/Script.h"
#include "tests/support/posix/ScriptTest.h"
#include "utility/platform/Error.h"
#include "utility/platform/formats/CommandLine.h"
#include "utility/platform/Paths.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <string>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using support::Child;
using support::FailingCall;
using utility::platform::LastError;
using utility::platform::Programs;
using utility::platform::UntilItEnds;
using utility::platform::WideFromPath;
using utility::platform::formats::JoinCommandLine;

namespace
{

class PosixProgramsTest : public support::ScriptTest
{
protected:
    static bool Run(const std::string& script, UntilItEnds then = UntilItEnds::wait)
    {
        return Programs().Run(support::ScriptLine(script).data(), then);
    }

    /// A program that tells its name and its arguments.
    boost::filesystem::path Program(const char* name) const
    {
        const boost::filesystem::path file =
            m_folder.File(name, "#!/bin/sh\nfor each in \"$@\"; do told=$told\"<$each>\"; done; "
                                "echo \"${0##*/}$told\" > \"$here/new\"; mv \"$here/new\" \"$here/told\"\n");
        ::chmod(file.c_str(), 0700);
        return file;
    }
};

/// Programs are found in the folder of the test first.
class OpenTest : public PosixProgramsTest
{
protected:
    OpenTest() { ::setenv("PATH", (m_folder.Path().string() + ':' + m_earlier).c_str(), 1); }
    ~OpenTest() override { ::setenv("PATH", m_earlier.c_str(), 1); }

private:
    const std::string m_earlier = std::getenv("PATH");
};

}

TEST_F(PosixProgramsTest, ProgramThatIsAwaitedHasEnded)
{
    EXPECT_TRUE(Run("sleep 0.2; echo done > \"$here/told\""));
    EXPECT_EQ(Told(), "done\n");
}

TEST_F(PosixProgramsTest, ProgramThatIsNotAwaitedIsAGroupOfItsOwn)
{
    EXPECT_TRUE(Run(support::AwaitingFile(m_folder / "now") + "echo $(ps -o pgid= -p $$) $$ > \"$here/told\"",
                    UntilItEnds::goOn));
    EXPECT_EQ(Told(), "");
    m_folder.File("now", "");
    const std::string told = ToldAtLast();
    EXPECT_EQ(told.substr(0, told.find(' ')) + '\n', told.substr(told.find(' ') + 1));
}

TEST_F(PosixProgramsTest, AwaitedProgramIsOfTheCallersGroup)
{
    EXPECT_TRUE(Run("echo $(ps -o pgid= -p $$) > \"$here/told\""));
    EXPECT_EQ(Told(), std::to_string(::getpgrp()) + '\n');
}

TEST_F(PosixProgramsTest, HostIsToldOfNoChildAndHasNone)
{
    const support::CountedSignal told(SIGCHLD);
    for (const UntilItEnds then : {UntilItEnds::wait, UntilItEnds::goOn})
    {
        EXPECT_TRUE(Run("echo $$ > \"$here/told\"", then));
        const pid_t process = std::stoi(ToldAtLast());
        EXPECT_TRUE(GoesAway(process)) << "it is left behind as one that nobody collects";
        boost::filesystem::remove(m_folder / "told");
    }
    EXPECT_EQ(::waitpid(-1, nullptr, __WALL | WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(told.Count(), 0);
}

TEST_F(PosixProgramsTest, HostThatIgnoresItsChildrenMayWaitAndTheProgramMayForItsOwn)
{
    Child child(
        []
        {
            ::signal(SIGCHLD, SIG_IGN);
            return Run("sh -c 'exit 3'; echo $? > \"$here/told\"") ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
    EXPECT_EQ(Told(), "3\n");
}

TEST_F(PosixProgramsTest, HostThatAdoptsOrphansIsLeftWithNone)
{
    Child child(
        []
        {
            ::prctl(PR_SET_CHILD_SUBREAPER, 1);
            if (!Run("true"))
                return 1;
            return ::waitpid(-1, nullptr, __WALL) == -1 && errno == ECHILD ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixProgramsTest, SignalsArriveWhileAProgramIsAwaited)
{
    {
        const boost::filesystem::path often = m_folder / "often";
        const support::FrequentAlarm told(often.string());
        EXPECT_TRUE(Run(support::AwaitingFile(often) + "echo done > \"$here/told\""));
        EXPECT_GT(told.Count(), 5);
    }
    EXPECT_EQ(Told(), "done\n");
}

TEST_F(PosixProgramsTest, ProgramHasTheSignalsOfItsCallerButNoHandler)
{
    sigset_t blocked;
    sigset_t before;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
    std::wstring line = JoinCommandLine({L"cp", L"/proc/self/status", WideFromPath(m_folder / "told")});
    EXPECT_TRUE(Programs().Run(line.data(), UntilItEnds::wait));
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_NE(Told().find("SigBlk:\t0000000000000200\n"), std::string::npos) << Told();
}

TEST_F(PosixProgramsTest, ProgramHasNoFileButTheStandardStreams)
{
    const int held = ::open("/dev/null", O_RDONLY); // for every program that is started
    ASSERT_GT(held, 2);
    EXPECT_TRUE(Run("for each in 3 4 5 6 7 8 9 10 11 12; do test -e /proc/$$/fd/$each && found=$each; done; "
                    "echo ${found:-none} > \"$here/told\""));
    ::close(held);
    EXPECT_EQ(Told(), "none\n");
}

TEST_F(PosixProgramsTest, WithNoDescriptorLeftItIsAwaitedAllTheSame)
{
    Child child(
        []
        {
            while (::open("/dev/null", O_RDONLY) >= 0)
            {
            }
            return Run("sleep 0.2; echo done > \"$here/told\"") ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
    EXPECT_EQ(Told(), "done\n");
}

TEST_F(PosixProgramsTest, ReasonIsTold)
{
    wchar_t missing[] = L"there-is-no-such-program";
    EXPECT_FALSE(Programs().Run(missing, UntilItEnds::wait));
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    wchar_t folder[] = L"/usr";
    EXPECT_FALSE(Programs().Run(folder, UntilItEnds::wait));
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_FALSE(Programs().Run(nullptr, UntilItEnds::goOn));
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    const FailingCall failing("clone", EAGAIN);
    EXPECT_FALSE(Run("true"));
    EXPECT_TRUE(failing.HasFailed());
}

TEST_F(OpenTest, ProgramIsGivenItsParameters)
{
    const boost::filesystem::path program = Program("pro gram");
    EXPECT_GT(Programs().Open(WideFromPath(program).c_str(), L"a \"b c\""), 32);
    EXPECT_EQ(ToldAtLast(), "pro gram<a><b c>\n");
}

TEST_F(OpenTest, ProgramIsFoundAlongThePath)
{
    Program("some-program");
    EXPECT_GT(Programs().Open(L"some-program", L""), 32);
    EXPECT_EQ(ToldAtLast(), "some-program\n");
}

TEST_F(OpenTest, FileIsForTheDesktopToOpen)
{
    Program("xdg-open");
    const boost::filesystem::path file = m_folder.File("a part.pdf", "");
    EXPECT_GT(Programs().Open(WideFromPath(file).c_str(), L""), 32);
    EXPECT_EQ(ToldAtLast(), "xdg-open<" + file.string() + ">\n");
}

TEST_F(OpenTest, FileThatMayBeRunAndIsNoProgramIsForTheDesktopToo)
{
    Program("xdg-open");
    const boost::filesystem::path file = m_folder.File("part.pdf", "%PDF");
    ::chmod(file.c_str(), 0700);
    EXPECT_GT(Programs().Open(WideFromPath(file).c_str(), L""), 32);
    EXPECT_EQ(ToldAtLast(), "xdg-open<" + file.string() + ">\n");
}

TEST_F(OpenTest, AddressIsForTheDesktopToo)
{
    Program("xdg-open");
    EXPECT_GT(Programs().Open(L"https://example.org/a?b=c&d", L""), 32);
    EXPECT_EQ(ToldAtLast(), "xdg-open<https://example.org/a?b=c&d>\n");
}

TEST_F(OpenTest, AddressOfMailIsForTheDesktopToo)
{
    Program("xdg-open");
    EXPECT_GT(Programs().Open(L"mailto:ann@example.org", L""), 32);
    EXPECT_EQ(ToldAtLast(), "xdg-open<mailto:ann@example.org>\n");
}

TEST_F(OpenTest, FileWhoseNameLooksLikeAnOptionIsAFileToTheDesktop)
{
    Program("xdg-open");
    m_folder.File("-part.pdf", "");
    const boost::filesystem::path earlier = boost::filesystem::current_path();
    boost::filesystem::current_path(m_folder.Path());
    EXPECT_GT(Programs().Open(L"-part.pdf", L""), 32);
    boost::filesystem::current_path(earlier);
    EXPECT_EQ(ToldAtLast(), "xdg-open<./-part.pdf>\n");
}

TEST_F(OpenTest, ProgramInTheCurrentFolderIsFoundThere)
{
    const boost::filesystem::path earlier = boost::filesystem::current_path();
    boost::filesystem::create_directory(m_folder / "here");
    boost::filesystem::rename(Program("a-program"), m_folder / "here/a-program");
    boost::filesystem::current_path(m_folder / "here");
    EXPECT_GT(Programs().Open(L"a-program", L"7"), 32);
    boost::filesystem::current_path(earlier);
    EXPECT_EQ(ToldAtLast(), "a-program<7>\n");
}

TEST_F(OpenTest, ReasonWhoseNumberWouldBeASuccessIsAGeneralFailure)
{
    EXPECT_EQ(Programs().Open(std::wstring(5000, L'x').c_str(), L""), 31);
    EXPECT_EQ(Programs().Open(std::wstring(5000, L'x').c_str(), L"1"), 2) << "no program along the path";
}

TEST_F(OpenTest, FileOrProgramThatIsMissingIsTwo)
{
    Program("xdg-open");
    EXPECT_EQ(Programs().Open(L"/there/is/no.pdf", L""), 2);
    EXPECT_EQ(Programs().Open(L"there-is-no-such-program", L"1"), 2);
    EXPECT_EQ(Programs().Open(nullptr, L""), 2);
}

TEST_F(OpenTest, WithoutADesktopThereIsNoProgramForAFile)
{
    ::setenv("PATH", m_folder.Path().c_str(), 1);
    const boost::filesystem::path file = m_folder.File("part.pdf", "");
    EXPECT_EQ(Programs().Open(WideFromPath(file).c_str(), L""), 31);
}
