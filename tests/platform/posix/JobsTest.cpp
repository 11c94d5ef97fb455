#include "utility/platform/Jobs.h"

#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/Script.h"
#include "tests/support/posix/ScriptTest.h"
#include "tests/support/posix/Threads.h"
#include "tests/support/Thorough.h"
#include "utility/platform/Error.h"
#include "utility/platform/formats/CommandLine.h"
#include "utility/platform/Handles.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/descriptors/Readable.h"
#include "utility/platform/posix/jobs/ControlGroup.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using support::Child;
using support::FailingCall;
using utility::platform::Handles;
using utility::platform::Jobs;
using utility::platform::LastError;
using utility::platform::formats::JoinCommandLine;
using utility::platform::posix::ControlGroupFolder;

namespace
{

constexpr DWORD soon = 100000;

/// A daemon, two processes away from the one that the job started and in a session of its own.
constexpr char daemonScript[] =
    "setsid sh -c 'sh -c \"echo \\$\\$ > $here/daemon; exec sleep 600\" & exit' <&- >&- 2>&- & "
    "while ! test -s \"$here/daemon\"; do sleep 0.01; done; echo $$ > \"$here/told\"; exec sleep 600";

class PosixJobTest : public support::ScriptTest
{
protected:
    PosixJobTest() { Open(); }
    ~PosixJobTest() override
    {
        Close();
        Handles().CloseHandle(m_watch);
    }

    void Open()
    {
        m_job = Jobs().MakeJob();
        m_watch = Jobs().Watch(m_job);
    }

    void Close()
    {
        if (m_job != nullptr)
            Handles().CloseHandle(m_job);
        m_job = nullptr;
    }

    HANDLE Shell(const std::string& script) const { return Jobs().StartIn(m_job, support::ScriptLine(script).c_str()); }

    /// The exit code of a script.
    std::optional<DWORD> Run(const std::string& script) const
    {
        const HANDLE process = Shell(script);
        const std::optional<DWORD> code = process == nullptr ? std::nullopt : Jobs().WaitForExitCode(process, soon);
        Handles().CloseHandle(process);
        return code;
    }

    /// The supervisor, of which a process that the job has started is a child.
    pid_t Supervisor() const
    {
        EXPECT_EQ(Run("echo $PPID > \"$here/supervisor\""), 0u);
        return Processes("supervisor").at(0);
    }

    /// What looks after the supervisor.
    pid_t Guard() const
    {
        EXPECT_EQ(Run("ps -o ppid= -p $PPID > \"$here/guard\""), 0u);
        return Processes("guard").at(0);
    }

    void KillSupervisorAndGuard() const
    {
        const pid_t guard = Guard();
        const pid_t supervisor = Supervisor();
        ::kill(guard, SIGSTOP); // so that it is too late for it
        ::kill(supervisor, SIGKILL);
        ::kill(guard, SIGKILL);
        EXPECT_TRUE(GoesAway(guard));
        EXPECT_TRUE(GoesAway(supervisor));
    }

    /// Whether the system lets this process have groups in its own.
    static bool MayHaveControlGroup()
    {
        const std::string probe = ControlGroupFolder() + "/utility-test-" + std::to_string(::getpid());
        return ::mkdir(probe.c_str(), 0700) == 0 && ::rmdir(probe.c_str()) == 0;
    }

    /// From this process alone, by an empty folder over its own.
    static bool HideControlGroups()
    {
        const boost::filesystem::path folder = ControlGroupFolder();
        boost::filesystem::path mounted = folder;
        if (::unshare(CLONE_NEWNS | (::geteuid() == 0 ? 0 : CLONE_NEWUSER)) != 0)
            return false;
        while (::mount(nullptr, mounted.c_str(), nullptr, MS_PRIVATE, nullptr) != 0)
        {
            if (!mounted.has_parent_path())
                return false;
            mounted = mounted.parent_path();
        }
        return ::mount("none", folder.c_str(), "tmpfs", 0, nullptr) == 0;
    }

    /// The control group that a process of the job is in; empty if it is that of this process.
    std::string ControlGroup() const
    {
        EXPECT_EQ(Run("cp /proc/$$/cgroup \"$here/groups\""), 0u);
        const std::string group =
            ControlGroupFolder(Told("groups"), support::TemporaryFolder::BytesOf("/proc/self/mountinfo"));
        return group != ControlGroupFolder() ? group : std::string();
    }

    /// Whether a folder is gone soon.
    static bool IsRemoved(const std::string& folder)
    {
        for (int tries = 0; boost::filesystem::exists(folder) && tries < 10000; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return !boost::filesystem::exists(folder);
    }

    static constexpr int withoutProgram = 77;

    /// Does something in a copy of this process with a job of its own, for which the system has no control group.
    template <class Work>
    void WithoutControlGroup(Work work)
    {
        Child copy(
            [&]
            {
                if (MayHaveControlGroup() && !HideControlGroups())
                    return 2;
                // Below a root that is no mount a process with mounts of its own is told another path of its program.
                if (!boost::filesystem::exists(boost::filesystem::read_symlink("/proc/self/exe")))
                    return withoutProgram;
                Open();
                work();
                return HasFailure() ? 1 : 0;
            });
        if (copy.ExitCode() == withoutProgram)
            GTEST_SKIP() << "The machine lacks a root of its own";
        EXPECT_EQ(copy.ExitCode(), 0);
    }

    /// Has `work` done with a process of the job that has left a daemon, with a control group and without one.
    template <class Work>
    void WithDaemon(Work work)
    {
        const auto both = [&]
        {
            const HANDLE process = Shell(daemonScript);
            ASSERT_FALSE(ToldAtLast().empty());
            work(process, ControlGroup());
            Handles().CloseHandle(process);
            boost::filesystem::remove(m_folder / "told");
            boost::filesystem::remove(m_folder / "daemon");
        };
        both();
        WithoutControlGroup(both);
    }

    HANDLE m_job = nullptr;
    HANDLE m_watch = nullptr;
};

/// Programs that would live on.
struct Tough
{
    const char* name;
    const char* script; ///< writes the numbers of its processes, and at last a line `ready` to another file
};

class ToughProcessTest : public PosixJobTest, public testing::WithParamInterface<Tough>
{
protected:
    void IsKilled()
    {
        const HANDLE process = Shell(GetParam().script);
        ASSERT_NE(process, nullptr);
        ASSERT_EQ(ToldAtLast("ready"), "ready\n");
        const std::vector<pid_t> processes = Processes();
        ASSERT_FALSE(processes.empty());
        EXPECT_TRUE(IsThere(processes.back()));
        EXPECT_EQ(Jobs().WaitForExitCode(m_watch, 0), std::nullopt);
        Close();
        EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 0u);
        // They are gone by now, and collected.
        for (const pid_t each : Processes())
            EXPECT_FALSE(IsThere(each)) << each;
        Handles().CloseHandle(process);
    }
};

}

TEST_P(ToughProcessTest, IsKilledWithTheJob) { IsKilled(); }

TEST_P(ToughProcessTest, IsKilledWithTheJobWhereThereAreNoControlGroups)
{
    WithoutControlGroup([this] { IsKilled(); });
}

INSTANTIATE_TEST_SUITE_P(
    All, ToughProcessTest,
    testing::Values(Tough{"Plain", "echo $$ > \"$here/told\"; echo ready > \"$here/ready\"; sleep 600"},
                    Tough{"IgnoresSignals", "trap '' INT TERM HUP QUIT USR1 TSTP CHLD; echo $$ > \"$here/told\"; "
                                            "echo ready > \"$here/ready\"; sleep 600; sleep 600"},
                    Tough{"Daemon",
                          "setsid sh -c '(echo $$ >> \"$here/told\"; setsid sh -c \"echo \\$\\$ >> $here/told; "
                          "echo ready > $here/ready; exec sleep 600\" <&- >&- 2>&- &) & exit' & wait; exit 0"},
                    Tough{"Stopped",
                          "sh -c 'echo $$ >> \"$here/told\"; echo ready > \"$here/ready\"; kill -STOP $$; sleep 600' & "
                          "wait"},
                    Tough{"Tree", "for a in 1 2 3; do (for b in 1 2 3; do (for c in 1 2 3; do sleep 600 & echo $! >> "
                                  "\"$here/told\"; done; wait) & done; wait) & done; "
                                  "while [ $(cat \"$here/told\" 2>/dev/null | wc -l) -lt 27 ]; do sleep 0.05; done; "
                                  "echo ready > \"$here/ready\"; "
                                  "wait"}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(PosixJobTest, ProcessesThatForkOnAndOnAreKilled)
{
    // Each ends as soon as it has started the next one, some ten thousand times at most.
    ASSERT_NE(
        Shell("echo 'echo $$ >> \"$here/told\"; test $1 -gt 0 && sh \"$here/next\" $(($1 - 1)) &' > \"$here/next\"; "
              "sh \"$here/next\" 20000"),
        nullptr);
    while (Processes().size() < 20)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    Close();
    EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 0u);
    const std::size_t count = Processes().size();
    EXPECT_LT(count, 20000u);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(Processes().size(), count);
    for (const pid_t each : Processes())
        EXPECT_FALSE(IsThere(each));
}

TEST_F(PosixJobTest, ProcessesThatBecomeMoreAndMoreAreKilled)
{
    // Three become of each, up to a few hundred.
    ASSERT_NE(Shell("echo 'echo $$ >> \"$here/told\"; test $1 -gt 0 && for i in 1 2 3; do sh \"$here/next\" $(($1 - "
                    "1)) & done; "
                    "sleep 600' > \"$here/next\"; sh \"$here/next\" 5"),
              nullptr);
    while (Processes().size() < 30)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    Close();
    EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 0u);
    for (const pid_t each : Processes())
        EXPECT_FALSE(IsThere(each));
}

TEST_F(PosixJobTest, DaemonKeepsTheWatchGoingBehindTheProcessThatStartedIt)
{
    EXPECT_EQ(Run("setsid sleep 600 & echo $! > \"$here/told\""), 0u);
    EXPECT_EQ(Jobs().WaitForExitCode(m_watch, 100), std::nullopt);
    ::kill(Processes().at(0), SIGKILL);
    EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 0u);
}

TEST_F(PosixJobTest, WatchThatBeginsLaterIsOfWhatIsStartedThen)
{
    EXPECT_EQ(Run("true"), 0u);
    EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 0u);
    const HANDLE later = Jobs().Watch(m_job);
    EXPECT_EQ(Jobs().WaitForExitCode(later, 100), std::nullopt);
    EXPECT_EQ(Run("true"), 0u);
    EXPECT_EQ(Jobs().WaitForExitCode(later, soon), 0u);
    const HANDLE last = Jobs().Watch(m_job);
    Close();
    EXPECT_EQ(Jobs().WaitForExitCode(last, 200), std::nullopt);
    Handles().CloseHandle(last);
    Handles().CloseHandle(later);
}

TEST_F(PosixJobTest, WhatASignalEndsHasItsNumber)
{
    EXPECT_EQ(Run("kill -TERM $$"), 128u + SIGTERM);
    EXPECT_EQ(Run("kill -KILL $$"), 128u + SIGKILL);
    EXPECT_EQ(Run("exit 255"), 255u);
}

TEST_F(PosixJobTest, KilledSupervisorIsAnEndOfTheWatchWithOneAndTakesTheWholeJobAlong)
{
    const auto test = [this](HANDLE process, const std::string& group)
    {
        const pid_t supervisor = Supervisor();
        const pid_t guard = Guard();
        ::kill(guard, SIGSTOP);
        ::kill(supervisor, SIGKILL);
        // Nobody is told of an end that is none yet.
        EXPECT_EQ(Jobs().WaitForExitCode(m_watch, 100), std::nullopt);
        ::kill(guard, SIGCONT);
        EXPECT_TRUE(IsRemoved(group));
        EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 1u);
        EXPECT_EQ(Jobs().WaitForExitCode(process, soon), 1u);
        // They are gone by now.
        EXPECT_FALSE(IsThere(Processes().at(0)));
        EXPECT_FALSE(IsThere(Processes("daemon").at(0)));
        EXPECT_EQ(Shell("true"), nullptr);
        EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_BROKEN_PIPE));
        const HANDLE late = Jobs().Watch(m_job);
        EXPECT_EQ(Jobs().WaitForExitCode(late, soon), 1u);
        Handles().CloseHandle(late);
        EXPECT_FALSE(boost::filesystem::exists(group));
    };
    WithDaemon(test);
}

TEST_F(PosixJobTest, CommandThatASupervisorWasKilledOverIsNotStarted)
{
    const pid_t supervisor = Supervisor();
    ::kill(supervisor, SIGSTOP);
    std::jthread killing(
        [supervisor]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            ::kill(supervisor, SIGKILL);
        });
    EXPECT_EQ(Shell("true"), nullptr);
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_BROKEN_PIPE));
}

TEST_F(PosixJobTest, KilledGuardOfTheSupervisorTakesTheWholeJobAlong)
{
    const auto test = [this](HANDLE process, const std::string& group)
    {
        ::kill(Guard(), SIGKILL);
        EXPECT_EQ(Jobs().WaitForExitCode(process, soon), 128u + SIGKILL);
        EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 0u);
        EXPECT_FALSE(IsThere(Processes().at(0)));
        EXPECT_FALSE(IsThere(Processes("daemon").at(0)));
        EXPECT_EQ(Shell("true"), nullptr);
        EXPECT_FALSE(boost::filesystem::exists(group));
    };
    WithDaemon(test);
}

TEST_F(PosixJobTest, SupervisorKilledWithItsGuardTakesAlongWhatItStartedAndWithAControlGroupAll)
{
    const auto test = [this](HANDLE /*process*/, const std::string& group)
    {
        KillSupervisorAndGuard();
        EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 1u);
        EXPECT_TRUE(GoesAway(Processes().at(0)));
        const pid_t daemon = Processes("daemon").at(0);
        EXPECT_EQ(group.empty() ? !IsThere(daemon) : GoesAway(daemon), !group.empty());
        ::kill(daemon, SIGKILL);
        EXPECT_TRUE(IsRemoved(group));
    };
    WithDaemon(test);
}

TEST_F(PosixJobTest, CloseKillsWhatAKilledSupervisorAndItsGuardHaveLeftInAControlGroup)
{
    const std::string group = ControlGroup();
    ASSERT_NE(Shell(daemonScript), nullptr);
    ASSERT_FALSE(ToldAtLast().empty());
    KillSupervisorAndGuard();
    Close();
    const pid_t daemon = Processes("daemon").at(0);
    EXPECT_EQ(group.empty() ? !IsThere(daemon) : GoesAway(daemon), !group.empty());
    ::kill(daemon, SIGKILL);
    EXPECT_TRUE(IsRemoved(group));
}

TEST_F(PosixJobTest, WhatKillsTheGroupOfTheSupervisorSparesItsGuardWhichKillsTheJob)
{
    WithoutControlGroup(
        [this]
        {
            const HANDLE process = Shell(daemonScript);
            ASSERT_FALSE(ToldAtLast().empty());
            EXPECT_NE(::getpgid(Guard()), ::getpgrp());
            ::kill(-::getpgid(Supervisor()), SIGKILL);
            EXPECT_EQ(Jobs().WaitForExitCode(process, soon), 1u);
            EXPECT_FALSE(IsThere(Processes("daemon").at(0)));
        });
}

TEST_F(PosixJobTest, StrangerInTheControlGroupIsKilledWithTheJobAlsoByTheGuard)
{
    for (const bool isSupervisorKilled : {false, true})
    {
        Close();
        Handles().CloseHandle(m_watch);
        Open();
        const std::string group = ControlGroup();
        Child stranger(
            [&]
            {
                std::ofstream(group + "/cgroup.procs") << 0;
                std::ofstream((m_folder / "told").c_str()) << "there\n";
                ::alarm(group.empty() ? 1 : 60);
                ::pause();
                return 0;
            });
        EXPECT_EQ(ToldAtLast(), "there\n");
        if (isSupervisorKilled)
            ::kill(Supervisor(), SIGKILL);
        else
            Close();
        EXPECT_EQ(stranger.Signal(), group.empty() ? SIGALRM : SIGKILL);
        EXPECT_TRUE(IsRemoved(group));
        boost::filesystem::remove(m_folder / "told");
    }
}

TEST_F(PosixJobTest, NextJobKillsWhatAKilledOwnerWithAKilledSupervisorHasLeftInAControlGroup)
{
    Child child(
        [this]
        {
            // In a group of the test, where others have no jobs.
            const std::string folder = ControlGroupFolder() + "/utility-test-" + std::to_string(::getpid());
            const std::string outside = ControlGroupFolder() + "/cgroup.procs";
            const bool mayHave = MayHaveControlGroup() && ::mkdir(folder.c_str(), 0700) == 0;
            if (mayHave)
                std::ofstream(folder + "/cgroup.procs") << 0;
            Child owner(
                [this]
                {
                    Open();
                    Shell(daemonScript);
                    ToldAtLast();
                    KillSupervisorAndGuard();
                    ::kill(::getpid(), SIGKILL);
                    return 0;
                });
            EXPECT_EQ(owner.Signal(), SIGKILL);
            const pid_t daemon = Processes("daemon").at(0);
            EXPECT_TRUE(IsThere(daemon));
            Open();
            EXPECT_EQ(Run("true"), 0u);
            EXPECT_EQ(mayHave ? GoesAway(daemon) : !IsThere(daemon), mayHave);
            ::kill(daemon, SIGKILL);
            Close();
            EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 0u);
            if (mayHave)
            {
                std::ofstream(outside) << 0;
                // The guard may be there for a moment more.
                bool isGone = false;
                for (int tries = 0; !(isGone = ::rmdir(folder.c_str()) == 0) && tries < 10000; ++tries)
                    std::this_thread::sleep_for(std::chrono::milliseconds(10));
                EXPECT_TRUE(isGone);
            }
            return HasFailure() ? 1 : 0;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixJobTest, ProcessesAreInAControlGroupOfTheirOwnWhereTheSystemLendsOneWhichIsGoneWithTheJob)
{
    EXPECT_EQ(Run("sleep 600 & echo $! > \"$here/sleeper\""), 0u);
    const std::string group = ControlGroup();
    EXPECT_EQ(!group.empty(), MayHaveControlGroup());
    EXPECT_EQ(boost::filesystem::path(group).filename().native().starts_with("utility-job-"), MayHaveControlGroup());
    Close();
    EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 0u);
    EXPECT_FALSE(IsThere(Processes("sleeper").at(0)));
    EXPECT_FALSE(boost::filesystem::exists(group));
}

TEST_F(PosixJobTest, KilledOwnerTakesItsJobAlong)
{
    Child owner(
        [this]
        {
            Open();
            Shell("setsid sleep 600 & echo $! > \"$here/told\"; wait");
            ToldAtLast();
            ::kill(::getpid(), SIGKILL);
            return 0;
        });
    EXPECT_EQ(owner.Signal(), SIGKILL);
    ASSERT_EQ(Processes().size(), 1u);
    EXPECT_TRUE(GoesAway(Processes()[0]));
}

TEST_F(PosixJobTest, OwnerThatIsKilledTakesItsJobAlongThoughACopyOfItGoesOn)
{
    Child owner(
        [this]
        {
            Open();
            Shell("echo $$ > \"$here/told\"; exec sleep 600");
            ToldAtLast();
            if (const pid_t copy = ::fork(); copy == 0)
            {
                ::sleep(60);
                ::_exit(0);
            }
            else
                std::ofstream((m_folder / "copy").c_str()) << copy << '\n';
            ::kill(::getpid(), SIGKILL);
            return 0;
        });
    EXPECT_EQ(owner.Signal(), SIGKILL);
    EXPECT_TRUE(GoesAway(Processes().at(0)));
    EXPECT_TRUE(IsThere(Processes("copy").at(0)));
    ::kill(Processes("copy").at(0), SIGKILL);
}

TEST_F(PosixJobTest, JobIsClosedThoughACopyOfItsOwnerHasTheHandle)
{
    const HANDLE process = Shell("sleep 600");
    const pid_t copy = ::fork();
    if (copy == 0)
    {
        ::sleep(60);
        ::_exit(0);
    }
    Close();
    EXPECT_EQ(Jobs().WaitForExitCode(process, soon), 128u + SIGKILL);
    EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 0u);
    ::kill(copy, SIGKILL);
    ::waitpid(copy, nullptr, 0);
    Handles().CloseHandle(process);
}

TEST_F(PosixJobTest, CopyOfItsOwnerDoesNotCloseTheJob)
{
    const HANDLE process = Shell("sleep 600");
    Child copy(
        [this]
        {
            Close();
            return 0;
        });
    EXPECT_EQ(copy.ExitCode(), 0);
    EXPECT_EQ(Jobs().WaitForExitCode(process, 100), std::nullopt);
    EXPECT_EQ(Run("exit 4"), 4u);
    Handles().CloseHandle(process);
}

TEST_F(PosixJobTest, ProcessHasTheFolderAndTheEnvironmentOfItsCallerAtThatTime)
{
    const boost::filesystem::path earlier = boost::filesystem::current_path();
    boost::filesystem::create_directory(m_folder / "inner");
    boost::filesystem::current_path(m_folder / "inner");
    ::setenv("said", "of now, \xFF", 1);
    EXPECT_EQ(Run("pwd -P > ../folder; printf %s \"$said\" > ../said"), 0u);
    ::unsetenv("said");
    boost::filesystem::current_path(earlier);
    EXPECT_EQ(Told("folder"), boost::filesystem::canonical(m_folder / "inner").string() + '\n');
    EXPECT_EQ(Told("said"), "of now, \xFF");
}

TEST_F(PosixJobTest, ProcessIsOfItsCallersGroupOnATerminalSoThatControlCReachesIt)
{
    const auto work = [this]
    {
        Open();
        return Run("test $(ps -o pgid= -p $$) -eq " + std::to_string(::getpgrp())) == 0u ? 0 : 1;
    };
    EXPECT_EQ(Child(work, Child::Terminal::foreground).ExitCode(), 0);
    EXPECT_EQ(Child(work, Child::Terminal::none).ExitCode(), 1);
}

TEST_F(PosixJobTest, EndOfAProcessHangsNothingUpWhereTheCallerHasAStoppedOne)
{
    Child child(
        [this]
        {
            Open();
            const pid_t stopped = ::fork();
            if (stopped == 0)
                ::raise(SIGSTOP);
            ::waitpid(stopped, nullptr, WUNTRACED);
            const bool isEnd = Run("exit 3") == 3u && Run("exit 4") == 4u;
            ::kill(stopped, SIGKILL);
            return isEnd ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixJobTest, ProcessHasTheStandardStreamsOfItsCallerAndNoOtherFile)
{
    Child child(
        [this]
        {
            Open();
            const int output = ::open((m_folder / "output").c_str(), O_WRONLY | O_CREAT, 0600);
            const int input = ::open((m_folder / "input").c_str(), O_RDWR | O_CREAT, 0600);
            static_cast<void>(::write(input, "typed\n", 6));
            ::lseek(input, 0, SEEK_SET);
            ::dup2(input, 0);
            ::dup2(output, 1);
            ::close(2);
            ::fcntl(output, F_SETFD, 0); // for every program that it starts
            const std::optional<DWORD> code = Run("read line; echo got $line; for each in 0 1 2 3 4 5 6 7 8 9 10; do "
                                                  "test -e /proc/$$/fd/$each && echo $each; done; true");
            return code == 0u ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
    EXPECT_EQ(Told("output"), "got typed\n0\n1\n");
}

TEST_F(PosixJobTest, ClosedStandardStreamsAreClosedInTheProcess)
{
    Child child(
        [this]
        {
            for (const int stream : {0, 1, 2})
                ::close(stream);
            Open();
            return static_cast<int>(
                Run("exec 9> \"$here/told\"; for each in 0 1 2 3 4 5 6 7 8 9 10; do test -e /proc/$$/fd/$each && "
                    "echo $each >&9; done; exit 6")
                    .value_or(1));
        });
    EXPECT_EQ(child.ExitCode(), 6);
    EXPECT_EQ(Told(), "9\n");
}

TEST_F(PosixJobTest, ProcessIsNotBlockedFromSignalsAsItsSupervisorIs)
{
    const HANDLE process = Jobs().StartIn(
        m_job,
        JoinCommandLine({L"cp", L"/proc/self/status", utility::platform::WideFromPath(m_folder / "told")}).c_str());
    EXPECT_EQ(Jobs().WaitForExitCode(process, soon), 0u);
    Handles().CloseHandle(process);
    EXPECT_NE(Told().find("SigBlk:\t0000000000000000\n"), std::string::npos) << Told();
}

TEST_F(PosixJobTest, HostThatIgnoresItsChildrenGetsExitCodesAndHasNoChildOfOurs)
{
    Child child(
        [this]
        {
            ::signal(SIGCHLD, SIG_IGN);
            Open();
            if (Run("(exit 3); exit $?") != 3u)
                return 1;
            return ::waitpid(-1, nullptr, __WALL | WNOHANG) == -1 && errno == ECHILD ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixJobTest, HostIsToldOfNoChild)
{
    const support::CountedSignal told(SIGCHLD);
    EXPECT_EQ(Run("true"), 0u);
    Close();
    EXPECT_EQ(Jobs().WaitForExitCode(m_watch, soon), 0u);
    EXPECT_EQ(told.Count(), 0);
}

TEST_F(PosixJobTest, WaitGoesOnBehindASignal)
{
    const boost::filesystem::path often = m_folder / "often";
    const support::FrequentAlarm told(often.string());
    EXPECT_EQ(Run(support::AwaitingFile(often) + "exit 8"), 8u);
    EXPECT_GT(told.Count(), 5);
}

TEST_F(PosixJobTest, LongCommandLinesAndEnvironmentsArrive)
{
    const std::string part(100000, 'x');
    for (const char* const name : {"long1", "long2", "long3", "long4"})
        ::setenv(name, part.c_str(), 1);
    EXPECT_EQ(Run("test ${#long1} -eq 100000 -a ${#long4} -eq 100000 || exit 1; : " + part + "; exit 9"), 9u);
    for (const char* const name : {"long1", "long2", "long3", "long4"})
        ::unsetenv(name);
    // A text of this length is refused by the system itself.
    EXPECT_EQ(Shell(": " + std::string(200000, 'x')), nullptr);
}

TEST_F(PosixJobTest, ProgramNameOfBytesThatAreNoTextIsFound)
{
    const boost::filesystem::path program = m_folder.File("a\xFF b", "#!/bin/sh\nexit 5\n");
    ::chmod(program.c_str(), 0700);
    const HANDLE process = Jobs().StartIn(m_job, JoinCommandLine({utility::platform::WideFromPath(program)}).c_str());
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(Jobs().WaitForExitCode(process, soon), 5u);
    Handles().CloseHandle(process);
}

TEST_F(PosixJobTest, ReasonOfAProgramThatCannotBeStartedIsTold)
{
    EXPECT_EQ(Jobs().StartIn(m_job, L"/etc/passwd"), nullptr);
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    const boost::filesystem::path program = m_folder.File("text", "no program\n");
    ::chmod(program.c_str(), 0700);
    EXPECT_EQ(Jobs().StartIn(m_job, utility::platform::WideFromPath(program).c_str()), nullptr);
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_BAD_EXE_FORMAT));
}

TEST_F(PosixJobTest, NoCallThatFailsLeavesADescriptor)
{
    const std::ptrdiff_t open = support::OpenDescriptors();
    for (const char* const call : {"socketpair", "memfd_create", "write", "open", "sendmsg", "recv"})
    {
        const FailingCall failing(call, EMFILE);
        EXPECT_EQ(Shell("true"), nullptr) << call;
        EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_TOO_MANY_OPEN_FILES)) << call;
        EXPECT_TRUE(failing.HasFailed()) << call;
    }
    {
        const FailingCall failing("socketpair", EMFILE, FailingCall::always);
        EXPECT_EQ(Jobs().MakeJob(), nullptr);
        EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_TOO_MANY_OPEN_FILES));
        EXPECT_EQ(Jobs().Watch(m_job), nullptr);
    }
    {
        const FailingCall failing("clone", EAGAIN);
        EXPECT_EQ(Jobs().MakeJob(), nullptr);
        EXPECT_TRUE(failing.HasFailed());
    }
    {
        const FailingCall failing("access", ENOENT);
        EXPECT_EQ(Jobs().MakeJob(), nullptr);
        EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    }
    EXPECT_EQ(support::OpenDescriptors(), open);
    EXPECT_EQ(Run("exit 2"), 2u);
}

TEST_F(PosixJobTest, ManyJobsOneAfterTheOtherLeaveNothing)
{
    const std::ptrdiff_t open = support::OpenDescriptors();
    for (int each = 0; each < support::Cases(1000); ++each)
    {
        Close();
        Handles().CloseHandle(m_watch);
        Open();
        ASSERT_NE(m_job, nullptr);
        ASSERT_EQ(Run("echo $PPID >> \"$here/told\""), 0u);
    }
    EXPECT_EQ(support::OpenDescriptors(), open);
    Close();
    EXPECT_EQ(Processes().size(), static_cast<std::size_t>(support::Cases(1000)));
    for (const pid_t supervisor : Processes())
        EXPECT_TRUE(GoesAway(supervisor));
    EXPECT_EQ(::waitpid(-1, nullptr, __WALL | WNOHANG), -1);
}

TEST_F(PosixJobTest, AnyThreadMayStartAndWait)
{
    std::vector<std::thread> threads;
    for (unsigned int each = 0; each < 4; ++each)
        threads.emplace_back(
            [this, each]
            {
                for (unsigned int time = 0; time < 5; ++time)
                    EXPECT_EQ(Run("exit " + std::to_string(10 * each + time)), 10 * each + time);
            });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(PosixJobTest, CopiesOfAProgramWithThreadsHaveJobsToo)
{
    support::ExpectChildrenOfThreadsToWork([this] { return Run("exit 3") == 3u; },
                                           [this]
                                           {
                                               const HANDLE parents = m_job;
                                               const bool isOld = Run("exit 4") == 4u;
                                               Open();
                                               const bool isNew = Run("exit 5") == 5u;
                                               Close();
                                               const bool isEnd = Jobs().WaitForExitCode(m_watch, soon) == 0u;
                                               m_job = parents;
                                               return isOld && isNew && isEnd;
                                           });
}

TEST_F(PosixJobTest, ControlCEndsTheProcessAndLeavesTheJob)
{
    Child child(
        [this]
        {
            ::signal(SIGINT, [](int) {}); // which ends the owner otherwise
            Open();
            const HANDLE process = Shell("trap 'exit 9' INT; echo ready; sleep 600 & wait");
            return Jobs().WaitForExitCode(process, soon) == 9u && Run("exit 4") == 4u ? 0 : 1;
        },
        Child::Terminal::foreground);
    EXPECT_NE(child.ReadUntil("ready").find("ready"), std::string::npos);
    child.Type("\x03");
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixJobTest, LimitOnTheSizeOfFilesIsAReasonAndNoEndOfTheHost)
{
    Child child(
        [this]
        {
            Open();
            rlimit size = {0, RLIM_INFINITY};
            ::setrlimit(RLIMIT_FSIZE, &size);
            if (Shell("true") != nullptr || LastError() != ERROR_FILE_TOO_LARGE)
                return 1;
            size.rlim_cur = RLIM_INFINITY;
            ::setrlimit(RLIMIT_FSIZE, &size);
            return Run("exit 3") == 3u ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

// A sanitizer takes descriptors itself to look at what it checks.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

TEST_F(PosixJobTest, SupervisorWithTooFewDescriptorsEndsAtOnce)
{
    const boost::filesystem::path program =
        boost::filesystem::canonical("/proc/self/exe").parent_path() / "UtilityJobSupervisor";
    // It needs one more for its control group.
    const rlim_t most = MayHaveControlGroup() ? 7 : 6;
    for (rlim_t count = 4; count <= most; ++count)
    {
        int ends[2];
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
        Child supervisor(
            [&]
            {
                ::dup2(ends[1], STDIN_FILENO);
                const rlimit files = {count, count};
                ::setrlimit(RLIMIT_NOFILE, &files);
                ::close_range(STDERR_FILENO + 1, ~0U, 0);
                return ::execl(program.c_str(), program.c_str(), nullptr);
            });
        ::close(ends[1]);
        EXPECT_EQ(utility::platform::posix::WaitUntilReadable(ends[0], soon), true) << count;
        ::close(ends[0]);
        EXPECT_EQ(supervisor.ExitCode(), 0);
    }
}

#endif

TEST_F(PosixJobTest, JobHasMoreProcessesThanItsOwnersLimitOfOpenFilesWhichTheyHaveAllTheSame)
{
    Child child(
        [this]
        {
            rlimit files = {};
            ::getrlimit(RLIMIT_NOFILE, &files);
            const rlimit earlier = files;
            files.rlim_cur = static_cast<rlim_t>(20 + support::OpenDescriptors());
            ::setrlimit(RLIMIT_NOFILE, &files);
            Open();
            ::setrlimit(RLIMIT_NOFILE, &earlier);
            for (int each = 0; each < 60; ++each)
            {
                if (Shell("exec sleep 600") == nullptr)
                    return 1;
            }
            return Run("test $(ulimit -n) -eq " + std::to_string(files.rlim_cur)) == 0u ? 0 : 2;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixJobTest, HostThatCollectsWhateverEndsIsLeftAlone)
{
    Child child(
        [this]
        {
            // As servers do that have many children.
            ::signal(SIGCHLD,
                     [](int)
                     {
                         while (::waitpid(-1, nullptr, WNOHANG) > 0)
                         {
                         }
                     });
            const pid_t own = ::fork();
            if (own == 0)
                ::_exit(0);
            Open();
            for (unsigned int each = 0; each < 20; ++each)
            {
                if (Run("exit " + std::to_string(each)) != each)
                    return 1;
            }
            return 0;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixJobTest, ManyJobsAtATimeAreKilledByTheEndOfTheirOwner)
{
    Child owner(
        [this]
        {
            for (int each = 0; each < support::Cases(200); ++each)
            {
                Open();
                Shell("echo $$ >> \"$here/told\"; exec sleep 600");
            }
            while (Processes().size() < static_cast<std::size_t>(support::Cases(200)))
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            return 0;
        });
    EXPECT_EQ(owner.ExitCode(), 0);
    EXPECT_EQ(Processes().size(), static_cast<std::size_t>(support::Cases(200)));
    for (const pid_t each : Processes())
        EXPECT_TRUE(GoesAway(each));
}
