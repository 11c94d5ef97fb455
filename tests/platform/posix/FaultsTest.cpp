#include "utility/platform/Faults.h"

#include "tests/support/FaultsOfTheProcessor.h"
#include "tests/support/posix/Child.h"
#include "utility/platform/posix/faults/ReportRequest.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <thread>
#include <ucontext.h>
#include <unistd.h>
#include <vector>

// A sanitizer has handlers of its own for these signals.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

using namespace utility::platform;
using support::Child;

namespace
{

/// What a child that faults tells its parent.
struct ToldFault
{
    std::atomic<int> filters = 0;
    std::atomic<int> reports = 0;
    std::atomic<int> earlier = 0;
    std::atomic<DWORD> code = 0;
    std::atomic<std::uint64_t> access = 0;
    std::atomic<std::uint64_t> address = 0;
    std::atomic<bool> isOnAlternateStack = false;
    std::atomic<int> value = 0;
};

constexpr std::chrono::seconds longestReport(utility::platform::posix::reportSeconds);

ToldFault* told = nullptr;
FaultFilter earlierFilter = nullptr;
std::function<void()> whileReporting;

bool IsOnAlternateStack()
{
    stack_t stack;
    return ::sigaltstack(nullptr, &stack) == 0 && (stack.ss_flags & SS_ONSTACK) != 0;
}

FaultDisposition Tell(_EXCEPTION_POINTERS* fault)
{
    ++told->filters;
    told->code = fault->ExceptionRecord->ExceptionCode;
    told->access = fault->ExceptionRecord->ExceptionInformation[0];
    told->address = fault->ExceptionRecord->ExceptionInformation[1];
    told->isOnAlternateStack = IsOnAlternateStack();
    const FaultDisposition disposition = earlierFilter != nullptr ? earlierFilter(fault) : 0;
    if (whileReporting)
        whileReporting();
    ++told->reports;
    errno = EDOM;
    return disposition;
}

void CountEarlier(int) { ++told->earlier; }

void SetAction(int signal, void (*action)(int), int flags = 0)
{
    struct sigaction set = {};
    set.sa_handler = action;
    set.sa_flags = flags;
    ::sigaction(signal, &set, nullptr);
}

/// Until all threads but this one wait for something.
void AwaitOthersWaiting()
{
    const auto areOthersRunning = []
    {
        int running = 0;
        for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task"))
        {
            std::string line;
            std::getline(std::ifstream(thread.path() / "stat"), line);
            running += line.find(") S ") == std::string::npos ? 1 : 0;
        }
        return running > 1;
    };
    while (areOthersRunning()) // the child's alarm ends it
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

class FaultsTest : public testing::Test
{
protected:
    FaultsTest()
    {
        void* const shared =
            ::mmap(nullptr, sizeof(ToldFault), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        told = ::new (shared) ToldFault;
    }
    ~FaultsTest() override { ::munmap(told, sizeof(ToldFault)); }

    /// The signal that a child ends by, or the negative of its exit code. It does `work`, with actions that `prepare`
    /// sets ahead of the filter.
    static int EndOf(
        const std::function<void()>& work, const std::function<void()>& prepare = [] {})
    {
        Child child(
            [&]
            {
                const rlimit none = {0, 0};
                ::setrlimit(RLIMIT_CORE, &none);
                ::alarm(100);
                SetFaultFilter(nullptr);
                for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT})
                    SetAction(signal, SIG_DFL);
                prepare();
                earlierFilter = SetFaultFilter(&Tell);
                work();
                return 7;
            });
        const int signal = child.Signal();
        return signal > 0 ? signal : -child.ExitCode();
    }
};

struct Cause
{
    const char* name;
    void (*happen)();
    int signal;
    DWORD code;
};

class FaultCauseTest : public FaultsTest, public testing::WithParamInterface<Cause>
{
};

/// Without the end of the stack: no other one is left for what comes then.
class FaultWithStackTest : public FaultCauseTest
{
};

void PrintTo(const Cause& cause, std::ostream* stream) { *stream << cause.name; }

void SendOneself(int signal) { ::raise(signal); }

void EndUncaught()
{
    ::close(STDERR_FILENO); // for what the runtime says about it
    std::terminate();
}

void ReadBehindEnd()
{
    char name[] = "/tmp/utility-XXXXXX";
    const int file = ::mkstemp(name);
    ::unlink(name);
    void* const mapped = ::mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file, 0);
    support::ReadAt(reinterpret_cast<std::uintptr_t>(mapped));
}

const Cause causes[] = {
    {"Stack", [] { support::ExhaustStack(); }, SIGSEGV, 0xC00000FD},
    {"Read", [] { support::ReadAt(8); }, SIGSEGV, 0xC0000005},
    {"Write", [] { support::WriteAt(8); }, SIGSEGV, 0xC0000005},
    {"CallOfNothing", [] { support::CallAt(0); }, SIGSEGV, 0xC0000005},
    {"WildCall", [] { support::CallAt(0x1234); }, SIGSEGV, 0xC0000005},
    {"NoAddress", [] { support::ReadAt(0x8000000000000000); }, SIGSEGV, 0xC0000005},
    {"Kernel", [] { support::ExecuteInstructionOfTheKernel(); }, SIGSEGV, 0xC0000096},
    {"Shortened", &ReadBehindEnd, SIGBUS, 0xC0000006},
    {"Division", [] { support::DivideByNothing(); }, SIGFPE, 0xC0000094},
    {"FloatingDivision", [] { support::DivideUnmasked(1, 0, _EM_ZERODIVIDE); }, SIGFPE, 0xC000008E},
    {"Invalid", [] { support::DivideUnmasked(0, 0, _EM_INVALID); }, SIGFPE, 0xC0000090},
    {"Overflow", [] { support::DivideUnmasked(1e300, 1e-300, _EM_OVERFLOW); }, SIGFPE, 0xC0000091},
    {"Underflow", [] { support::DivideUnmasked(1e-300, 1e300, _EM_UNDERFLOW); }, SIGFPE, 0xC0000093},
    {"Inexact", [] { support::DivideUnmasked(1, 3, _EM_INEXACT); }, SIGFPE, 0xC000008F},
    {"Illegal", [] { support::ExecuteNoInstruction(); }, SIGILL, 0xC000001D},
    {"Breakpoint", [] { support::Breakpoint(); }, SIGTRAP, 0x80000003},
    {"Abort", [] { std::abort(); }, SIGABRT, 0x40000015},
    {"SentAbort", [] { SendOneself(SIGABRT); }, SIGABRT, 0x40000015},
    {"SentSegmentation", [] { SendOneself(SIGSEGV); }, SIGSEGV, 0xC0000005},
    {"SentBus", [] { SendOneself(SIGBUS); }, SIGBUS, 0xC0000006},
    {"SentArithmetic", [] { SendOneself(SIGFPE); }, SIGFPE, 0xC0000090},
    {"SentIllegal", [] { SendOneself(SIGILL); }, SIGILL, 0xC000001D},
    {"SentTrap", [] { SendOneself(SIGTRAP); }, SIGTRAP, 0x80000003},
    {"Uncaught", EndUncaught, SIGABRT, 0x40000015},
};

}

TEST_P(FaultCauseTest, IsReportedOnceAndEndsTheProcessByItsSignal)
{
    EXPECT_EQ(EndOf(GetParam().happen), GetParam().signal);
    EXPECT_EQ(told->code, GetParam().code);
    EXPECT_EQ(told->reports, 1);
    // The main thread has it from the load of the library on.
    EXPECT_TRUE(told->isOnAlternateStack);
}

TEST_P(FaultWithStackTest, IsTheSameOnAThreadWithoutAnything)
{
    EXPECT_EQ(EndOf([] { std::thread(GetParam().happen).join(); }), GetParam().signal);
    EXPECT_EQ(told->code, GetParam().code);
    EXPECT_EQ(told->reports, 1);
    EXPECT_FALSE(told->isOnAlternateStack);
}

TEST_P(FaultCauseTest, IsFirstForTheActionThatTheHostHadAndThenReported)
{
    const int signal = GetParam().signal;
    EXPECT_EQ(EndOf(GetParam().happen,
                    [=]
                    {
                        SetAction(signal,
                                  [](int number)
                                  {
                                      CountEarlier(number);
                                      told->value = told->reports == 0;
                                      ::signal(number, SIG_DFL);
                                      ::raise(number);
                                  });
                    }),
              signal);
    EXPECT_EQ(told->earlier, 1);
    EXPECT_EQ(told->value, 1);
    EXPECT_EQ(told->reports, 1);
}

INSTANTIATE_TEST_SUITE_P(Each, FaultCauseTest, testing::ValuesIn(causes));
INSTANTIATE_TEST_SUITE_P(Each, FaultWithStackTest, testing::ValuesIn(std::begin(causes) + 1, std::end(causes)));

TEST_F(FaultsTest, SignalOfAnotherProcessIsReportedAndEndsThisOne)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      const pid_t parent = ::getpid();
                      Child([=] { return ::kill(parent, SIGSEGV); });
                      ::pause();
                  }),
              SIGSEGV);
    EXPECT_EQ(told->reports, 1);
}

TEST_F(FaultsTest, SignalThatIsIgnoredStaysSoAndIsNotReported)
{
    EXPECT_EQ(EndOf([] { ::raise(SIGFPE); }, [] { SetAction(SIGFPE, SIG_IGN); }), -7);
    EXPECT_EQ(told->filters, 0);
}

TEST_F(FaultsTest, SignalThatIsBlockedEndsTheProcessUnreported)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      sigset_t set;
                      ::sigemptyset(&set);
                      ::sigaddset(&set, SIGSEGV);
                      ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
                      support::ReadAt(8);
                  }),
              SIGSEGV);
    EXPECT_EQ(told->filters, 0);
}

TEST_F(FaultsTest, ActionThatTheHostSetsLaterIsTheOnlyOne)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      SetAction(SIGSEGV, [](int) { ::_exit(3); });
                      support::ReadAt(8);
                  }),
              -3);
    EXPECT_EQ(told->filters, 0);
}

TEST_F(FaultsTest, ActionsAreGivenBackButForThoseThatTheHostHasSetSince)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      SetAction(SIGBUS, [](int) { ::_exit(4); });
                      EXPECT_EQ(SetFaultFilter(earlierFilter), &Tell);
                      struct sigaction present;
                      ::sigaction(SIGSEGV, nullptr, &present);
                      told->value = present.sa_handler == &CountEarlier;
                      ::raise(SIGSEGV);
                      ::raise(SIGBUS);
                  },
                  [] { SetAction(SIGSEGV, &CountEarlier); }),
              -4);
    EXPECT_EQ(told->value, 1);
    EXPECT_EQ(told->earlier, 1);
    EXPECT_EQ(told->filters, 0);
}

TEST_F(FaultsTest, ThereIsNoEarlierFilterWhereTheHostHasNoAction)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      told->value = earlierFilter == nullptr;
                      EXPECT_EQ(SetFaultFilter(nullptr), &Tell);
                      EXPECT_EQ(SetFaultFilter(nullptr), nullptr);
                      struct sigaction present;
                      ::sigaction(SIGSEGV, nullptr, &present);
                      ::_exit(present.sa_handler == SIG_DFL ? told->value.load() : 9);
                  }),
              -1);
}

TEST_F(FaultsTest, ProcessGoesOnWhereTheHostsActionHasMendedTheCause)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      void* const page = ::mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
                      errno = ENOENT;
                      support::WriteAt(reinterpret_cast<std::uintptr_t>(page));
                      // Nothing of the filter is seen here.
                      told->value = errno == ENOENT && !IsOnAlternateStack();
                  },
                  []
                  {
                      struct sigaction action = {};
                      action.sa_flags = SA_SIGINFO;
                      action.sa_sigaction = [](int, siginfo_t* info, void*)
                      {
                          ++told->earlier;
                          ::mprotect(info->si_addr, 4096, PROT_READ | PROT_WRITE);
                      };
                      ::sigaction(SIGSEGV, &action, nullptr);
                  }),
              -7);
    EXPECT_EQ(told->earlier, 1);
    EXPECT_EQ(told->reports, 1);
    EXPECT_EQ(told->value, 1);
}

TEST_F(FaultsTest, FaultThatComesAgainAfterTheHostsActionIsReportedOnce)
{
    EXPECT_EQ(EndOf([] { support::ReadAt(8); },
                    []
                    {
                        SetAction(SIGSEGV,
                                  [](int)
                                  {
                                      if (++told->earlier == 10)
                                          ::_exit(5);
                                  });
                    }),
              -5);
    EXPECT_EQ(told->reports, 1);
}

TEST_F(FaultsTest, ActionThatIsMeantForOneTimeIsCalledOnce)
{
    EXPECT_EQ(EndOf([] { support::ReadAt(8); }, [] { SetAction(SIGSEGV, &CountEarlier, SA_RESETHAND); }), SIGSEGV);
    EXPECT_EQ(told->earlier, 1);
}

TEST_F(FaultsTest, SignalsThatTheHostsActionBlocksAreBlockedInIt)
{
    static const auto tellMask = [](int)
    {
        sigset_t present;
        ::pthread_sigmask(SIG_SETMASK, nullptr, &present);
        ::_exit(10 + ::sigismember(&present, SIGSEGV) + 2 * ::sigismember(&present, SIGUSR1));
    };
    const auto set = [](int flags)
    {
        struct sigaction action = {};
        action.sa_handler = tellMask;
        action.sa_flags = flags;
        ::sigaddset(&action.sa_mask, SIGUSR1);
        ::sigaction(SIGSEGV, &action, nullptr);
    };
    EXPECT_EQ(EndOf([] { support::ReadAt(8); }, [=] { set(0); }), -13);
    EXPECT_EQ(EndOf([] { support::ReadAt(8); }, [=] { set(SA_NODEFER); }), -12);
}

TEST_F(FaultsTest, ActionThatLeavesByAJumpLeavesNothingBehind)
{
    static sigjmp_buf place;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(EndOf(
                  []
                  {
                      while (told->earlier < 3)
                      {
                          if (sigsetjmp(place, 1) == 0)
                              support::ReadAt(8);
                      }
                      told->value = told->filters.load();
                      support::DivideByNothing();
                  },
                  []
                  {
                      SetAction(SIGSEGV,
                                [](int)
                                {
                                    ++told->earlier;
                                    siglongjmp(place, 1);
                                });
                  }),
              SIGFPE);
    EXPECT_EQ(told->earlier, 3);
    EXPECT_EQ(told->value, 3);
    EXPECT_EQ(told->reports, 1);
    // Nobody waits for a report that will never end.
    EXPECT_LT(std::chrono::steady_clock::now() - start, longestReport);
}

TEST_F(FaultsTest, ActionThatAbortsIsReportedAsTheAbort)
{
    EXPECT_EQ(EndOf([] { support::ReadAt(8); }, [] { SetAction(SIGSEGV, [](int) { std::abort(); }); }), SIGABRT);
    EXPECT_EQ(told->code, 0x40000015U);
    EXPECT_EQ(told->reports, 1);
}

TEST_P(FaultWithStackTest, WithinAReportEndsTheProcessByTheFirst)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      whileReporting = GetParam().happen;
                      support::ReadAt(8);
                  }),
              SIGSEGV);
    EXPECT_EQ(told->filters, 1);
    EXPECT_EQ(told->reports, 0);
    EXPECT_EQ(EndOf(
                  []
                  {
                      whileReporting = GetParam().happen;
                      std::abort();
                  }),
              SIGABRT);
}

TEST_F(FaultsTest, ThreadsThatFaultAtOnceAreEachReportedToTheEnd)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      whileReporting = []
                      {
                          // Ahead of the first report's end all are within their faults. The later ones take longer.
                          if (told->value == 0)
                              AwaitOthersWaiting();
                          std::this_thread::sleep_for(std::chrono::milliseconds(20 * ++told->value));
                      };
                      std::atomic<int> waiting = 4;
                      std::vector<std::jthread> threads;
                      for (int number = 0; number < 4; ++number)
                          threads.emplace_back(
                              [&]
                              {
                                  --waiting;
                                  while (waiting != 0)
                                      continue;
                                  support::ReadAt(8);
                              });
                  }),
              SIGSEGV);
    EXPECT_EQ(told->filters, 4);
    EXPECT_EQ(told->reports, 4);
}

TEST_F(FaultsTest, ThreadHasAStackForTheEndOfItsOwnAsLongAsItAsksForIt)
{
    std::thread(
        []
        {
            const auto size = []
            {
                stack_t stack;
                ::sigaltstack(nullptr, &stack);
                return (stack.ss_flags & SS_DISABLE) != 0 ? std::size_t() : stack.ss_size;
            };
            EXPECT_EQ(size(), 0U);
            EnterFaultStack();
            const std::size_t own = size();
            EXPECT_GE(own, 128U * 1024);
            EnterFaultStack();
            LeaveFaultStack();
            EXPECT_EQ(size(), own);
            LeaveFaultStack();
            EXPECT_EQ(size(), 0U);
            LeaveFaultStack();
            EXPECT_EQ(size(), 0U);

            // The host's own stays as it is.
            static char buffer[64 * 1024];
            const stack_t host = {buffer, 0, sizeof(buffer)};
            ::sigaltstack(&host, nullptr);
            EnterFaultStack();
            EXPECT_EQ(size(), sizeof(buffer));
            LeaveFaultStack();
            EXPECT_EQ(size(), sizeof(buffer));
            const stack_t none = {nullptr, SS_DISABLE, 0};
            ::sigaltstack(&none, nullptr);

            // One that takes the place of ours as well.
            EnterFaultStack();
            ::sigaltstack(&host, nullptr);
            LeaveFaultStack();
            EXPECT_EQ(size(), sizeof(buffer));
            ::sigaltstack(&none, nullptr);
        })
        .join();
}

TEST_F(FaultsTest, EndOfAThreadsStackIsReportedAsThat)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      std::thread(
                          []
                          {
                              EnterFaultStack();
                              support::ExhaustStack();
                          })
                          .join();
                  }),
              SIGSEGV);
    EXPECT_EQ(told->code, 0xC00000FD);
    EXPECT_TRUE(told->isOnAlternateStack);
}

TEST_F(FaultsTest, AccessIsToldAsReadingWritingOrExecuting)
{
    EXPECT_EQ(EndOf([] { support::ReadAt(0x18); }), SIGSEGV);
    EXPECT_EQ(told->access, 0U);
    EXPECT_EQ(told->address, 0x18U);
    EXPECT_EQ(EndOf([] { support::WriteAt(0x28); }), SIGSEGV);
    EXPECT_EQ(told->access, 1U);
    EXPECT_EQ(told->address, 0x28U);
    EXPECT_EQ(EndOf([] { support::CallAt(0x1000); }), SIGSEGV);
    EXPECT_EQ(told->access, 8U);
    EXPECT_EQ(told->address, 0x1000U);
}

TEST_F(FaultsTest, ChildOfAForkReportsItsOwn)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      Child child([] { return support::ReadAt(8); });
                      ::_exit(child.Signal());
                  }),
              -SIGSEGV);
    EXPECT_EQ(told->reports, 1);
}

TEST_F(FaultsTest, ChildOfAForkDoesNotWaitForTheReportsOfItsParent)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(EndOf(
                  []
                  {
                      whileReporting = []
                      {
                          told->value = 1;
                          for (;;)
                              ::pause();
                      };
                      std::jthread other([] { support::ReadAt(8); });
                      while (told->value == 0)
                          std::this_thread::yield();
                      whileReporting = nullptr;
                      Child child([] { return support::ReadAt(8); });
                      ::_exit(child.Signal());
                  }),
              -SIGSEGV);
    EXPECT_LT(std::chrono::steady_clock::now() - start, longestReport);
}

TEST_F(FaultsTest, ChildOfAForkWithinAReportHasThatReport)
{
    EXPECT_EQ(EndOf(
                  []
                  {
                      whileReporting = []
                      {
                          Child child([] { return support::ReadAt(8); });
                          told->value = child.Signal();
                      };
                      std::abort();
                  }),
              SIGABRT);
    EXPECT_EQ(told->value, SIGABRT);
}

#endif
