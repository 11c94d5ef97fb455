#include "tests/support/CrashReport.h"
#include "tests/support/Crasher.h"
#include "tests/support/posix/Child.h"
#include "tests/support/posix/Script.h"

#include <boost/algorithm/hex.hpp>
#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <functional>
#include <iterator>
#include <link.h>
#include <linux/capability.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <span>
#include <string>
#include <string_view>
#include <sys/auxv.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

// Where a program crashes in a world that is not as it should be.

using support::ComplaintAbout;
using support::Crasher;
using support::CrashReport;

namespace
{

constexpr char reportProgram[] = "UtilityCrashReport";

/// Where the debugging information of a module is that names its build, as packages install it; empty if it does not.
boost::filesystem::path DebugFileOf(const dl_phdr_info& module)
{
    for (const ElfW(Phdr) & each : std::span(module.dlpi_phdr, module.dlpi_phnum))
    {
        if (each.p_type != PT_NOTE)
            continue;
        const auto* at = reinterpret_cast<const char*>(module.dlpi_addr + each.p_vaddr);
        for (const char* const end = at + each.p_memsz; at < end;)
        {
            const auto& note = *reinterpret_cast<const ElfW(Nhdr)*>(at);
            const char* const build = at + sizeof(note) + (note.n_namesz + 3) / 4 * 4;
            if (note.n_type == NT_GNU_BUILD_ID)
            {
                std::string name;
                boost::algorithm::hex_lower(build, build + note.n_descsz, std::back_inserter(name));
                return "/usr/lib/debug/.build-id/" + name.substr(0, 2) + '/' + name.substr(2) + ".debug";
            }
            at = build + (note.n_descsz + 3) / 4 * 4;
        }
    }
    return {};
}

/// Whether the C library's variables are known here. Its functions for memory and for the end of a process have
/// pointers to pointers, where a report breaks off.
bool HasLibraryVariables()
{
    const auto look = [](dl_phdr_info* module, std::size_t, void* isThere)
    {
        if (std::string_view(module->dlpi_name).find("/libc.so.") != std::string_view::npos)
            *static_cast<bool*>(isThere) = boost::filesystem::exists(DebugFileOf(*module));
        return 0;
    };
    bool isThere = false;
    ::dl_iterate_phdr(look, &isThere);
    return isThere;
}

/// The calling process has mounts of its own from here on.
void LeaveMounts()
{
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        ::_exit(125);
}

bool MayMount()
{
    support::Child child(
        []
        {
            LeaveMounts();
            return 1;
        });
    return child.ExitCode() == 1;
}

void Mount(const char* kind, const boost::filesystem::path& place, unsigned long flags, const char* options)
{
    if (::mount("none", place.c_str(), kind, flags, options) != 0)
        ::_exit(125);
}

void Limit(int resource, rlim_t limit)
{
    const rlimit both = {limit, limit};
    ::setrlimit(static_cast<decltype(RLIMIT_AS)>(resource), &both);
}

/// What comes is the first process of a numbering of its own, and /proc has the old one. The calling process ends as
/// that one does.
void NumberProcessesAnew()
{
    if (::unshare(CLONE_NEWPID) != 0)
        ::_exit(125);
    const pid_t first = ::fork();
    if (first == 0)
        return;
    int status = 0;
    ::waitpid(first, &status, 0);
    if (WIFSIGNALED(status))
        ::raise(WTERMSIG(status));
    ::_exit(WEXITSTATUS(status));
}

/// One that is exhausted at once, and may be made larger.
void UseSmallStack()
{
    rlimit limit;
    ::getrlimit(RLIMIT_STACK, &limit);
    limit.rlim_cur = 256 * 1024;
    ::setrlimit(RLIMIT_STACK, &limit);
}

/// The calling process, and what it becomes, may look into none that does not let everybody.
void LeaveRightToLook() { ::prctl(PR_CAPBSET_DROP, CAP_SYS_PTRACE); }

/// From here on the system answers so where the calling process, or one of its, looks into another one.
void FilterLooks(std::uint32_t answer)
{
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_process_vm_readv, 1, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_ptrace, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, answer),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program = {static_cast<unsigned short>(std::size(steps)), steps};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
        ::_exit(125);
}

/// Whether the machine leaves an image of the memory of a process that crashes in a folder.
bool LeavesImages(const boost::filesystem::path& folder)
{
    const pid_t process = ::fork();
    if (process == 0)
    {
        Limit(RLIMIT_CORE, RLIM_INFINITY);
        ::signal(SIGSEGV, SIG_DFL);
        if (::chdir(folder.c_str()) == 0)
            ::raise(SIGSEGV);
        ::_exit(125);
    }
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFSIGNALED(status) && WCOREDUMP(status);
}

/// The causes that have a stack of their own for signals have one of this size.
void UseOwnStack(std::size_t size) { ::setenv("STACK_SIZE", std::to_string(size).c_str(), 1); }

class PosixCrashReport : public ::testing::Test
{
protected:
    explicit PosixCrashReport(const char* program = "Crasher") : m_crasher(program) {}

    void ExpectEndBy(int signal, const char* cause, const std::function<void()>& inside = nullptr)
    {
        m_end = m_crasher.Run(cause, inside);
        EXPECT_TRUE(m_end.isCrash) << m_end.output;
        EXPECT_EQ(m_end.outcome, static_cast<std::uint32_t>(signal)) << m_end.output;
    }

    CrashReport Report()
    {
        m_text = m_crasher.Report();
        EXPECT_NE(m_text, "") << m_crasher.Reports().size() << " reports";
        return CrashReport(m_text);
    }

    void ExpectWholeReport(std::uint32_t code)
    {
        const CrashReport report = Report();
        EXPECT_EQ(report.code, code);
        EXPECT_TRUE(report.isWhole) << m_text;
        EXPECT_EQ(ComplaintAbout(m_text), "");
    }

    void ExpectNoReport() { EXPECT_TRUE(m_crasher.Reports().empty()); }

    void ExpectReportWhereProcessesAreNumberedAnew()
    {
        if (!MayMount())
            GTEST_SKIP() << "The user lacks the right to have processes of its own";
        ExpectEndBy(SIGSEGV, "null", NumberProcessesAnew);
        ExpectWholeReport(0xC0000005);
        EXPECT_EQ(Report().path, m_crasher.PathInReport());
        EXPECT_NE(m_text.find("WriteAValue"), std::string::npos) << m_text;
    }

    Crasher m_crasher;
    Crasher::End m_end;
    std::string m_text;
};

/// A program that has the library in it, and beside it what each test puts there.
class PosixCrashReportAlone : public PosixCrashReport
{
protected:
    PosixCrashReportAlone() : PosixCrashReport("CrasherStatic") { m_crasher.UseCopy("CrasherStatic"); }

    boost::filesystem::path Helper() const { return m_crasher.Program().parent_path() / reportProgram; }
    void UseHastyHelper()
    {
        support::TemporaryFolder::Copy(boost::filesystem::path(UTILITY_CRASHERS) / "HastyCrashReport", Helper());
    }
};

}

// How the process ends.

TEST_F(PosixCrashReport, ProcessEndsByTheSignalOfTheFault)
{
    ExpectEndBy(SIGSEGV, "null");
    EXPECT_FALSE(m_end.hasCore);
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReport, ProcessLeavesTheImageOfItsMemoryThatItWouldHaveLeft)
{
    if (!LeavesImages(m_crasher.Folder().Path()))
        GTEST_SKIP() << "The machine lacks images of processes";
    const auto unlimited = [] { Limit(RLIMIT_CORE, RLIM_INFINITY); };
    for (const auto& [cause, signal] : {std::pair("null", SIGSEGV), std::pair("divide", SIGFPE),
                                        std::pair("abort", SIGABRT), std::pair("thread", SIGSEGV)})
    {
        ExpectEndBy(signal, cause, unlimited);
        EXPECT_TRUE(m_end.hasCore) << cause;
    }
    ExpectEndBy(SIGSEGV, "undumpable", unlimited);
    EXPECT_FALSE(m_end.hasCore);
}

TEST_F(PosixCrashReport, AbortHasZeroCharactersForADescriptionDeliberately)
{
    ExpectEndBy(SIGABRT, "abort");
    const CrashReport report = Report();
    EXPECT_EQ(report.code, 0x40000015U);
    EXPECT_EQ(report.description, std::string(128, '\0'));
    EXPECT_TRUE(report.isWhole) << m_text;
    EXPECT_NE(ComplaintAbout(m_text), "") << "zero characters";
}

TEST_F(PosixCrashReport, TellsOfAnAssertion)
{
    ExpectEndBy(SIGABRT, "assert");
    EXPECT_NE(m_end.output.find("weight > 0"), std::string::npos) << m_end.output;
    EXPECT_EQ(Report().code, 0x40000015U);
    EXPECT_NE(m_text.find("<Symbol>weight</Symbol>"), std::string::npos) << m_text;
}

TEST_F(PosixCrashReport, TellsOfAFailureThatNobodyCaught)
{
    ExpectEndBy(SIGABRT, "throw");
    EXPECT_EQ(Report().code, 0x40000015U);
    EXPECT_NE(m_text.find("NoSuch"), std::string::npos) << m_text;
}

TEST_F(PosixCrashReport, TellsOfAFileThatWasShortenedWhileItWasMapped)
{
    ExpectEndBy(SIGBUS, "bus");
    ExpectWholeReport(0xC0000006);
}

TEST_F(PosixCrashReport, TellsOfAStackThatIsExhausted)
{
    Crasher optimised("CrasherOptimised");
    m_end = optimised.Run("exhausted", UseSmallStack);
    EXPECT_EQ(m_end.outcome, static_cast<std::uint32_t>(SIGSEGV)) << m_end.output;
    m_text = optimised.Report();
    const CrashReport report(m_text);
    EXPECT_EQ(report.code, 0xC00000FDU);
    EXPECT_EQ(report.description, "STACK_OVERFLOW");
    EXPECT_TRUE(report.isWhole);
    EXPECT_GT(report.frames.size(), 300U);
}

TEST_F(PosixCrashReport, LeavesOutTheVariablesThatAnExhaustedStackHasNoRoomFor)
{
    ExpectEndBy(SIGSEGV, "exhausted", UseSmallStack);
    const CrashReport report = Report();
    EXPECT_EQ(report.code, 0xC00000FDU);
    EXPECT_TRUE(report.isWhole);
    EXPECT_GT(report.frames.size(), 300U);
}

TEST_F(PosixCrashReport, SignalFromAnotherProcessEndsThisOneAsItWasMeantTo)
{
    m_crasher.SendWhenReady(SIGSEGV);
    ExpectEndBy(SIGSEGV, "signal");
    const CrashReport report = Report();
    EXPECT_EQ(report.code, 0xC0000005U);
}

TEST_F(PosixCrashReport, FaultWhoseSignalIsBlockedEndsTheProcessWithoutAReport)
{
    ExpectEndBy(SIGSEGV, "blocked");
    ExpectNoReport();
}

TEST_F(PosixCrashReport, SignalThatTheHostIgnoresDoesNothing)
{
    m_end = m_crasher.Run("ignored");
    EXPECT_FALSE(m_end.isCrash);
    EXPECT_EQ(m_end.output, "ready\n");
    ExpectNoReport();
}

TEST_F(PosixCrashReport, TwoThreadsThatCrashAtOnceEndTheProcessByTheSignalOfOneOfThem)
{
    for (int run = 0; run < 5; ++run)
    {
        m_end = m_crasher.Run("threads");
        EXPECT_TRUE(m_end.isCrash);
        EXPECT_TRUE(m_end.outcome == SIGSEGV || m_end.outcome == SIGFPE) << m_end.outcome;
    }
    ASSERT_FALSE(m_crasher.Reports().empty());
    for (const boost::filesystem::path& each : m_crasher.Reports())
    {
        m_text = Crasher::TextOf(each);
        EXPECT_TRUE(CrashReport(m_text).isWhole) << m_text;
        EXPECT_EQ(ComplaintAbout(m_text), "");
    }
}

// Handlers of the host.

TEST_F(PosixCrashReport, HandlerThatWasThereEarlierIsCalledAheadOfTheReport)
{
    ExpectEndBy(SIGSEGV, "earlier");
    EXPECT_EQ(m_end.output.substr(0, 8), "handled\n");
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReport, HandlerThatWasThereEarlierIsCalledWhereNoReportIsWantedToo)
{
    ExpectEndBy(SIGSEGV, "earlier-quiet");
    EXPECT_EQ(m_end.output, "handled\n");
    EXPECT_FALSE(boost::filesystem::exists(m_crasher.DataFolder()));
}

TEST_F(PosixCrashReport, HandlerThatWasThereEarlierIsCalledAheadOfWhatIsThrown)
{
    m_end = m_crasher.Run("earlier-caught");
    EXPECT_FALSE(m_end.isCrash);
    EXPECT_EQ(m_end.outcome, 0U);
    EXPECT_EQ(m_end.output, "handled\ncaught\n");
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReport, HandlerThatWasThereEarlierMayEndTheProcess)
{
    m_end = m_crasher.Run("earlier-ends");
    EXPECT_FALSE(m_end.isCrash);
    EXPECT_EQ(m_end.outcome, 7U);
    EXPECT_EQ(m_end.output, "handled\n");
    ExpectNoReport();
}

TEST_F(PosixCrashReport, EarlierHandlerThatCrashesEndsTheProcessAsItWouldHave)
{
    ExpectEndBy(SIGSEGV, "earlier-crashes");
    EXPECT_EQ(m_end.output, "handled\n");
    ExpectNoReport();
}

TEST_F(PosixCrashReport, FaultOfAProcessThatIgnoresItsSignalEndsIt) { ExpectEndBy(SIGSEGV, "earlier-ignores"); }

TEST_F(PosixCrashReport, HandlerOfTheHostThatComesLaterHandsOn)
{
    ExpectEndBy(SIGSEGV, "later");
    EXPECT_EQ(m_end.output.substr(0, 8), "handled\n");
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReport, HandlerOfTheHostThatComesLaterHasTheLastWord)
{
    m_end = m_crasher.Run("later-ends");
    EXPECT_FALSE(m_end.isCrash);
    EXPECT_EQ(m_end.outcome, 7U);
    ExpectNoReport();
}

// Where the report goes.

TEST_F(PosixCrashReport, CrashesInTheSameSecondShareAFileThatTheFirstHasToItself)
{
    // What a program that crashed in another second leaves is another file: then it is tried again.
    for (int run = 0; run < 10 && m_crasher.Reports().size() != 1; ++run)
    {
        boost::filesystem::remove_all(m_crasher.DataFolder());
        Crasher::End other;
        std::thread beside([&] { other = m_crasher.Run("deep"); });
        ExpectEndBy(SIGSEGV, "deep");
        beside.join();
        EXPECT_EQ(other.outcome, static_cast<std::uint32_t>(SIGSEGV));
    }
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReport, GoesToTheHomeFolderWithoutAFolderForData)
{
    ExpectEndBy(SIGSEGV, "null", [] { ::unsetenv("XDG_DATA_HOME"); });
    EXPECT_TRUE(m_crasher.Reports().empty());
    const auto folder =
        m_crasher.Folder() / "home/.local/share/Selvane Production Software/Exception Reports/Crasher/0.0";
    EXPECT_TRUE(boost::filesystem::exists(folder)) << folder;
}

TEST_F(PosixCrashReport, HomeThatCannotBeMadeCostsTheReportAlone)
{
    m_crasher.Folder().File("file", "");
    ExpectEndBy(SIGSEGV, "null", [&] { ::setenv("XDG_DATA_HOME", (m_crasher.Folder() / "file/below").c_str(), 1); });
    ExpectNoReport();
}

TEST_F(PosixCrashReport, HomeThatMayOnlyBeReadCostsTheReportAlone)
{
    if (!MayMount())
        GTEST_SKIP() << "The user lacks the right to mount file systems";
    boost::filesystem::create_directory(m_crasher.DataFolder());
    ExpectEndBy(SIGSEGV, "null",
                [&]
                {
                    LeaveMounts();
                    Mount("tmpfs", m_crasher.DataFolder(), MS_RDONLY, "");
                });
    ExpectNoReport();
}

TEST_F(PosixCrashReport, FullDiskCostsTheRestOfTheReport)
{
    if (!MayMount())
        GTEST_SKIP() << "The user lacks the right to mount file systems";
    boost::filesystem::create_directory(m_crasher.DataFolder());
    support::Child child(
        [&]
        {
            LeaveMounts();
            Mount("tmpfs", m_crasher.DataFolder(), 0, "size=16k");
            const Crasher::End end = m_crasher.Run("deep");
            const std::string text = m_crasher.Report();
            const CrashReport report(text);
            return end.outcome == SIGSEGV && report.code == 0xC0000005 && !report.isWhole && text.size() > 4096 ? 1 : 0;
        });
    EXPECT_EQ(child.ExitCode(), 1);
}

TEST_F(PosixCrashReport, LimitOfTheSizeOfFilesCostsTheRestOfTheReport)
{
    ExpectEndBy(SIGSEGV, "deep", [] { Limit(RLIMIT_FSIZE, 4096); });
    const CrashReport report = Report();
    EXPECT_FALSE(report.isWhole);
    EXPECT_EQ(m_text.size(), 4096U);
    EXPECT_EQ(report.code, 0xC0000005U);
}

TEST_F(PosixCrashReportAlone, LimitOfTheSizeOfFilesCostsTheRestOfTheReportFromInsideToo)
{
    ExpectEndBy(SIGSEGV, "deep", [] { Limit(RLIMIT_FSIZE, 4096); });
    EXPECT_FALSE(Report().isWhole);
    EXPECT_EQ(m_text.size(), 4096U);
}

TEST_F(PosixCrashReport, IsForTheUserAlone)
{
    ExpectEndBy(SIGSEGV, "null");
    struct stat status;
    ASSERT_EQ(::stat(m_crasher.Reports().at(0).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(PosixCrashReport, OfALaterSecondHasAFileOfItsOwn)
{
    ExpectEndBy(SIGSEGV, "null");
    ::usleep(1100 * 1000);
    ExpectEndBy(SIGSEGV, "null");
    ASSERT_EQ(m_crasher.Reports().size(), 2U);
    for (const boost::filesystem::path& each : m_crasher.Reports())
        EXPECT_TRUE(CrashReport(support::TemporaryFolder::BytesOf(each)).isWhole);
}

TEST_F(PosixCrashReport, IsTheOnlyFileWithoutTheCallForTheLog)
{
    ExpectEndBy(SIGSEGV, "null");
    using boost::filesystem::directory_iterator;
    EXPECT_EQ(std::distance(directory_iterator(m_crasher.ReportFolder()), directory_iterator()), 1);
}

// What the process lacks.

TEST_F(PosixCrashReport, IsThereWithoutDescriptors)
{
    ExpectEndBy(SIGSEGV, "descriptors");
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReport, IsThereAfterTheFirstThreadHasEnded)
{
    ExpectEndBy(SIGSEGV, "after-main");
    ExpectWholeReport(0xC0000005);
    EXPECT_EQ(Report().path, m_crasher.PathInReport());
    EXPECT_NE(m_text.find("AfterMain"), std::string::npos) << m_text;
}

TEST_F(PosixCrashReport, IsThereOnASmallStackOfTheHosts)
{
    ExpectEndBy(SIGSEGV, "own-stack", [] { UseOwnStack(8192); });
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReport, IsNotThereOnAStackOfTheHostsWithoutRoomAndTheProcessEndsAllTheSame)
{
    ExpectEndBy(SIGSEGV, "own-stack", [] { UseOwnStack(5120); });
    ExpectNoReport();
}

TEST_F(PosixCrashReport, StackOfTheHostsMayHaveAnySizeAndTheProcessEndsByTheSignalOfTheFault)
{
    constexpr struct
    {
        const char* cause;
        int signal;
    } ends[] = {{"own-stack", SIGSEGV}, {"own-stack-divide", SIGFPE}, {"own-stack-trap", SIGTRAP}};
    for (std::size_t size = 2048; size <= 8192; size += 64)
    {
        SCOPED_TRACE(size);
        for (const auto& [cause, signal] : ends)
        {
            // A process that has not ended by the alarm never would.
            m_end = m_crasher.Run(cause,
                                  [size]
                                  {
                                      UseOwnStack(size);
                                      ::alarm(100);
                                  });
            EXPECT_TRUE(m_end.isCrash) << m_end.output;
            // Where the system finds no room for the signal it ends the process by one of its own.
            const bool isSystems = m_end.outcome == SIGSEGV && size < ::getauxval(AT_MINSIGSTKSZ);
            ASSERT_TRUE(isSystems || m_end.outcome == static_cast<std::uint32_t>(signal)) << cause << m_end.outcome;
        }
    }
}

TEST_F(PosixCrashReport, IsThereWithoutADescriptorThatIsFree)
{
    // The one that is left is for loading the libraries.
    ExpectEndBy(SIGSEGV, "null",
                []
                {
                    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
                    Limit(RLIMIT_NOFILE, 4);
                });
    const CrashReport report = Report();
    EXPECT_EQ(report.code, 0xC0000005U);
}

TEST_F(PosixCrashReport, IsThereUnderALimitOfMemory)
{
    ExpectEndBy(SIGSEGV, "null", [] { Limit(RLIMIT_AS, 64 * 1024 * 1024); });
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReport, IsThereWhenTheHeapIsCorrupted)
{
    ExpectEndBy(SIGABRT, "heap");
    EXPECT_EQ(Report().code, 0x40000015U);
}

TEST_F(PosixCrashReport, IsThereWhenTheLockOfTheAllocatorIsHeld)
{
    ExpectEndBy(SIGSEGV, "malloc");
    const CrashReport report = Report();
    EXPECT_EQ(report.code, 0xC0000005U);
    EXPECT_TRUE(report.isWhole) << m_text;
    EXPECT_NE(m_text.find("WithinMalloc"), std::string::npos) << m_text;
}

TEST_F(PosixCrashReport, ProcessWithoutProcEndsByTheSignalOfTheFault)
{
    if (!MayMount())
        GTEST_SKIP() << "The user lacks the right to mount file systems";
    ExpectEndBy(SIGSEGV, "null",
                []
                {
                    LeaveMounts();
                    if (::umount2("/proc", MNT_DETACH) != 0)
                        ::_exit(125);
                });
}

TEST_F(PosixCrashReport, IsThereWhereNobodyMayLookIntoTheProcess)
{
    ExpectEndBy(SIGSEGV, "undumpable", LeaveRightToLook);
    ExpectWholeReport(0xC0000005);
    EXPECT_EQ(m_crasher.Reports().size(), 1U);
    EXPECT_NE(Report().frames.at(0).line, 0);
}

TEST_F(PosixCrashReport, IsThereWhereAFilterRefusesToLookIntoProcesses)
{
    ExpectEndBy(SIGSEGV, "null", [] { FilterLooks(SECCOMP_RET_ERRNO | EPERM); });
    ExpectWholeReport(0xC0000005);
    EXPECT_NE(Report().frames.at(0).line, 0);
}

TEST_F(PosixCrashReport, FilterThatKillsWhatLooksIntoProcessesCostsTheRestOfTheReport)
{
    ExpectEndBy(SIGSEGV, "null", [] { FilterLooks(SECCOMP_RET_KILL_PROCESS); });
    const CrashReport report = Report();
    EXPECT_EQ(report.code, 0xC0000005U);
    EXPECT_FALSE(report.modules.empty());
    EXPECT_FALSE(report.isWhole) << m_text;
}

TEST_F(PosixCrashReport, IsOfTheProcessThatCrashedWhereNumbersOfProcessesAreNotThoseOfProc)
{
    ExpectReportWhereProcessesAreNumberedAnew();
}

TEST_F(PosixCrashReportAlone, IsOfTheProcessThatCrashedFromInsideTooWhereNumbersAreNotThoseOfProc)
{
    ExpectReportWhereProcessesAreNumberedAnew();
}

// What the names are.

TEST_F(PosixCrashReport, NamesThatAreNoUtf8AndHaveMarkupAreRead)
{
    m_crasher.UseCopy("R&D \"new\" \xFF");
    ExpectEndBy(SIGSEGV, "null");
    const CrashReport report = Report();
    EXPECT_TRUE(report.isWhole) << m_text;
    EXPECT_TRUE(report.path.value_or("").ends_with("R&D \"new\" \xEF\xBF\xBD")) << m_text;
    EXPECT_TRUE(report.faultingModule.ends_with("R&D \"new\" \xEF\xBF\xBD")) << m_text;
}

TEST_F(PosixCrashReport, FunctionsAndFilesMayHaveAnyName)
{
    ExpectEndBy(SIGSEGV, "hostile");
    ExpectWholeReport(0xC0000005);
    const CrashReport report = Report();
    EXPECT_EQ(report.frames.at(0).path.value_or(""), "/parts/R&D \"new\"/\xEF\xBF\xBD<1>.cpp");
    EXPECT_NE(report.frames.at(0).symbol.find("Hostile"), std::string::npos) << report.frames.at(0).symbol;
}

TEST_F(PosixCrashReport, HasNoAnswerForAStrippedProgramButItsModules)
{
    Crasher stripped("CrasherStripped");
    EXPECT_TRUE(stripped.Run("null").isCrash);
    const std::string text = stripped.Report();
    const CrashReport report(text);
    EXPECT_TRUE(report.isWhole) << text;
    EXPECT_EQ(ComplaintAbout(text), "");
    EXPECT_TRUE(std::none_of(report.frames.begin(), report.frames.end(),
                             [](const CrashReport::Frame& each) { return each.hasVariables; }))
        << text;
    EXPECT_FALSE(report.modules.empty());
}

// Modules.

TEST_F(PosixCrashReport, HasTheModulesWithTheTimesOfTheirFiles)
{
    ExpectEndBy(SIGSEGV, "null");
    const CrashReport report = Report();
    bool hasProgram = false;
    bool hasKernels = false;
    for (const CrashReport::Module& each : report.modules)
    {
        std::time_t time = 0;
        struct stat status;
        if (::stat(each.path.c_str(), &status) == 0)
            time = status.st_mtime;
        char built[32];
        std::strftime(built, sizeof(built), "%Y%m%d-%H%M%S", std::gmtime(&time));
        EXPECT_EQ(each.built, built) << each.path;
        EXPECT_EQ(each.base % 4096, 0U);
        EXPECT_EQ(each.size % 4096, 0U);
        EXPECT_NE(each.size, 0U);
        hasProgram = hasProgram || each.path == report.path;
        hasKernels = hasKernels || time == 0;
    }
    EXPECT_TRUE(hasProgram);
    EXPECT_TRUE(hasKernels) << "the kernel's own module has no file";
}

TEST(PosixCrashReportModules, FileThatIsGoneOrAnotherHasNoTime)
{
    for (const char* const cause : {"unlinked", "replaced"})
    {
        Crasher crasher("CrasherStatic");
        crasher.UseCopy(cause);
        EXPECT_EQ(crasher.Run(cause).outcome, static_cast<std::uint32_t>(SIGSEGV));
        const std::string text = crasher.Report();
        const CrashReport report(text);
        EXPECT_EQ(report.modules.at(0).path, crasher.Program().native());
        EXPECT_EQ(report.modules.at(0).built, "19700101-000000");
    }
}

TEST(PosixCrashReportModules, LineFeedInThePathOfTheProgramCostsNothing)
{
    // The system writes the one as the other.
    for (const char* const name : {"turning\nmilling", "turning\\012milling"})
    {
        Crasher crasher("Crasher");
        crasher.UseCopy(name);
        EXPECT_EQ(crasher.Run("null").outcome, static_cast<std::uint32_t>(SIGSEGV));
        const std::string text = crasher.Report();
        const CrashReport report(text);
        EXPECT_TRUE(report.isWhole) << text;
        EXPECT_EQ(report.path, crasher.PathInReport());
        ASSERT_FALSE(report.modules.empty() || report.frames.empty()) << text;
        EXPECT_EQ(report.modules[0].path, report.path);
        EXPECT_NE(report.modules[0].built, "19700101-000000");
        EXPECT_NE(report.frames[0].line, 0U) << text;
    }
}

// The program that writes the report.

TEST_F(PosixCrashReportAlone, IsWrittenFromInsideWithoutTheProgramForReports)
{
    ExpectEndBy(SIGSEGV, "null");
    ExpectWholeReport(0xC0000005);
    EXPECT_EQ(Report().frames.at(0).line != 0, true);
}

TEST_F(PosixCrashReportAlone, IsWrittenFromInsideAfterTheFirstThreadHasEnded)
{
    ExpectEndBy(SIGSEGV, "after-main");
    ExpectWholeReport(0xC0000005);
    EXPECT_NE(m_text.find("AfterMain"), std::string::npos) << m_text;
}

TEST_F(PosixCrashReportAlone, IsWrittenFromInsideWhereTheProgramForReportsMayNotBeRun)
{
    std::ofstream(Helper().string()) << "no program";
    ExpectEndBy(SIGSEGV, "null");
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReportAlone, IsWrittenFromInsideWhereTheProgramForReportsIsAnother)
{
    support::MakeScript(Helper(), "exit 3");
    ExpectEndBy(SIGSEGV, "null");
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReportAlone, IsWrittenFromInsideWhereTheProgramForReportsIsKilled)
{
    support::MakeScript(Helper(), "kill -KILL $$");
    ExpectEndBy(SIGSEGV, "null");
    ExpectWholeReport(0xC0000005);
}

TEST_F(PosixCrashReportAlone, ProgramForReportsThatIsKilledLaterCostsTheRestOfTheReport)
{
    support::MakeScript(Helper(), "echo; kill -KILL $$");
    ExpectEndBy(SIGSEGV, "null");
    ExpectNoReport();
}

TEST_F(PosixCrashReportAlone, ProgramForReportsThatHangsIsEnded)
{
    support::MakeScript(Helper(), "exec sleep 1000");
    ExpectEndBy(SIGSEGV, "null");
    ExpectNoReport();
}

TEST_F(PosixCrashReportAlone, ReportFromInsideThatExhaustsAStackOfTheHostsLeavesTheProcessItsFirstSignal)
{
    ExpectEndBy(SIGFPE, "own-stack-divide", [] { UseOwnStack(16384); });
    ExpectEndBy(SIGABRT, "own-stack-abort", [] { UseOwnStack(16384); });
}

TEST_F(PosixCrashReportAlone, ReportFromInsideThatWaitsForTheLockOfTheAllocatorIsEnded)
{
    ExpectEndBy(SIGSEGV, "malloc");
}

TEST_F(PosixCrashReportAlone, ReportFromInsideThatWaitsIsEndedWhateverTheHostsHandlerBlocks)
{
    ExpectEndBy(SIGSEGV, "earlier-malloc");
    EXPECT_EQ(m_end.output, "handled\n");
}

TEST_F(PosixCrashReportAlone, ReportFromInsideThatFindsTheHeapCorruptedIsEnded) { ExpectEndBy(SIGABRT, "heap"); }

TEST_F(PosixCrashReportAlone, FrameThatWasLostCostsItsVariablesAndTheProcessEndsByItsFirstSignal)
{
    ExpectEndBy(SIGSEGV, "smashed");
    const CrashReport report = Report();
    EXPECT_TRUE(report.isWhole) << m_text;
    EXPECT_NE(report.frames.at(0).symbol.find("Smashed"), std::string::npos);
    EXPECT_TRUE(report.frames.at(0).parameters.empty());
}

TEST_F(PosixCrashReportAlone, PointerToAPointerDeliberatelyKeepsTheReportFromEnding)
{
    UseHastyHelper();
    ExpectEndBy(SIGSEGV, "unending");
    const CrashReport report = Report();
    EXPECT_FALSE(report.isWhole);
    EXPECT_TRUE(m_text.ends_with("<Symbol>place</Symbol>\n")) << m_text;
}

TEST_F(PosixCrashReportAlone, TellsOfADestructorOfAStaticObject)
{
    UseHastyHelper();
    ExpectEndBy(SIGSEGV, "destructor");
    const CrashReport report = Report();
    EXPECT_NE(m_text.find("~AtTheEnd"), std::string::npos) << m_text;
    EXPECT_EQ(report.isWhole, !HasLibraryVariables()) << m_text;
}
