#include "utility/platform/posix/threads/TimedThreads.h"

#include "utility/platform/AtFork.h"
#include "utility/platform/LoadOrder.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace utility::platform::posix
{

namespace
{

constexpr std::uint64_t ticksOfSecond = 10000000;

struct Thread
{
    pid_t id;
    // The system gives an identifier anew when a thread has ended; these two tell that one.
    std::uint64_t started;
    std::uint64_t serial;
    ProcessorTime given;
};

/// What the system's table of threads has about one: times in its own ticks.
struct TableRow
{
    unsigned long long started;
    unsigned long kernel;
    unsigned long user;
};

struct Threads
{
    ForkSafeMutex mutex;
    std::map<int, Thread> byNumber;
    int last = 0;
};

Threads& All()
{
    static UntilUnload<Threads> threads;
    return *threads;
}

/// When the library is loaded: no fork finds another thread making them.
[[gnu::constructor(restIsMade)]] void MakeThreads() { All(); }

/// A number that no other thread of the process has or has had.
std::uint64_t SerialOfCallingThread()
{
    static std::atomic<std::uint64_t> last = 0;
    static thread_local std::uint64_t serial = 0;
    if (serial == 0)
        serial = ++last;
    return serial;
}

bool ReadRow(pid_t id, TableRow& row)
{
    char name[64];
    std::snprintf(name, sizeof(name), "/proc/self/task/%d/stat", id);
    const int descriptor = ::open(name, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    char text[1024];
    const ssize_t length = ::read(descriptor, text, sizeof(text) - 1);
    ::close(descriptor);
    if (length <= 0)
        return false;
    text[length] = '\0';
    // The second field is a name of any characters in parentheses.
    const char* const rest = std::strrchr(text, ')');
    return rest != nullptr &&
           std::sscanf(rest + 1, " %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %lu %lu %*d %*d %*d %*d %*d %*d %llu",
                       &row.user, &row.kernel, &row.started) == 3;
}

std::uint64_t TicksOf(const timeval& time)
{
    return static_cast<std::uint64_t>(time.tv_sec) * ticksOfSecond + static_cast<std::uint64_t>(time.tv_usec) * 10;
}

/// The calling thread's time, which the system splits itself.
bool OwnTime(ProcessorTime& time)
{
    rusage usage;
    if (::getrusage(RUSAGE_THREAD, &usage) != 0)
        return false;
    time = {TicksOf(usage.ru_stime), TicksOf(usage.ru_utime)};
    return true;
}

/// Another thread's time: the sum is exact, and split as the system's coarser table has it.
bool TimeOfAnother(const Thread& thread, ProcessorTime& time)
{
    TableRow row;
    if (!ReadRow(thread.id, row) || row.started != thread.started)
        return false;
    // The clock of a thread's processor time, by the system's rule for its number.
    constexpr unsigned int ofThread = 4;
    constexpr unsigned int scheduled = 2;
    const auto clock = static_cast<clockid_t>(~static_cast<unsigned int>(thread.id) << 3 | ofThread | scheduled);
    timespec sum;
    if (::clock_gettime(clock, &sum) != 0)
        return false;
    const std::uint64_t ticks =
        static_cast<std::uint64_t>(sum.tv_sec) * ticksOfSecond + static_cast<std::uint64_t>(sum.tv_nsec) / 100;
    const double whole = static_cast<double>(row.kernel) + static_cast<double>(row.user);
    const double share = whole == 0 ? 0 : static_cast<double>(row.kernel) / whole;
    time.kernel = std::min(ticks, static_cast<std::uint64_t>(static_cast<double>(ticks) * share));
    time.user = ticks - time.kernel;
    return true;
}

/// A new splitting of a sum may not take back what was given of either time.
void KeepGiven(ProcessorTime& given, ProcessorTime time)
{
    const std::uint64_t sum = std::max(time.kernel + time.user, given.kernel + given.user);
    given.kernel = std::clamp(time.kernel, given.kernel, sum - given.user);
    given.user = sum - given.kernel;
}

}

int RememberCallingThread()
{
    const auto id = static_cast<pid_t>(::syscall(SYS_gettid));
    TableRow row;
    if (!ReadRow(id, row))
        return -1;
    Threads& all = All();
    const std::lock_guard lock(all.mutex);
    if (all.last == INT_MAX)
    {
        errno = EMFILE;
        return -1;
    }
    all.byNumber.emplace(++all.last, Thread{id, row.started, SerialOfCallingThread(), {}});
    return all.last;
}

bool TimeOf(int number, ProcessorTime& time)
{
    Threads& all = All();
    const std::lock_guard lock(all.mutex);
    const auto found = all.byNumber.find(number);
    if (found == all.byNumber.end())
        return false;
    Thread& thread = found->second;
    const bool own = thread.serial == SerialOfCallingThread();
    ProcessorTime now;
    if (own ? OwnTime(now) : TimeOfAnother(thread, now))
        KeepGiven(thread.given, now);
    time = thread.given;
    return true;
}

bool ForgetThread(int number) noexcept
{
    Threads& all = All();
    const std::lock_guard lock(all.mutex);
    return all.byNumber.erase(number) != 0;
}

}
