// Loads a module that uses the library, uses it on several threads, which stay alive, and unloads it, again and again,
// for the tests of startup/CMakeLists.txt:
//   Counted MODULE FILE     FILE is for the module to read
// Its exit code is 0 if the process then has what it had before: handlers of faults, thread slots, files and
// descriptors or handles, what it has mapped.

#include <boost/dll/shared_library.hpp>
#include <boost/filesystem/operations.hpp>

#include <atomic>
#include <barrier>
#include <cinttypes>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#ifdef _WIN32
#include <windows.h>

#include <psapi.h>
#else
#include <csignal>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace
{

/// Names of what the process has, and how much of each.
using Counts = std::map<std::string, std::uint64_t>;

std::uint64_t NumberOf(const void* address) { return reinterpret_cast<std::uintptr_t>(address); }

#ifdef _WIN32

/// Windows keeps its own libraries, once they are loaded, with what they have taken.
void LoadLibrariesOfTheSystem()
{
    for (const wchar_t* const name : {L"advapi32", L"imm32", L"shell32", L"user32", L"ucrtbase", L"version", L"zlib1"})
        ::LoadLibraryW(name);
}

Counts Count()
{
    Counts counts;
    const auto filter = ::SetUnhandledExceptionFilter(nullptr);
    ::SetUnhandledExceptionFilter(filter);
    counts["filter"] = NumberOf(reinterpret_cast<const void*>(filter));

    std::vector<DWORD> slots;
    for (DWORD slot; (slot = ::TlsAlloc()) != TLS_OUT_OF_INDEXES;)
        slots.push_back(slot);
    for (const DWORD slot : slots)
        ::TlsFree(slot);
    counts["thread slots"] = slots.size();

    DWORD handles = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &handles);
    counts["handles"] = handles;

    const unsigned char* place = nullptr;
    MEMORY_BASIC_INFORMATION region;
    for (; ::VirtualQuery(place, &region, sizeof(region)) != 0;
         place = static_cast<const unsigned char*>(region.BaseAddress) + region.RegionSize)
    {
        char name[MAX_PATH] = "";
        if (region.AllocationBase == region.BaseAddress && (region.Type == MEM_IMAGE || region.Type == MEM_MAPPED))
        {
            ::GetMappedFileNameA(::GetCurrentProcess(), region.BaseAddress, name, MAX_PATH);
            ++counts[std::string("mapped ") + name];
        }
    }
    return counts;
}

#else

void LoadLibrariesOfTheSystem() {}

Counts Count()
{
    Counts counts;
    for (int number = 1; number < NSIG; ++number)
    {
        struct sigaction action;
        if (::sigaction(number, nullptr, &action) == 0)
            counts["signal " + std::to_string(number)] = NumberOf(reinterpret_cast<const void*>(action.sa_sigaction));
    }
    stack_t stack;
    ::sigaltstack(nullptr, &stack);
    counts["stack for signals"] = NumberOf(stack.ss_sp);

    std::vector<pthread_key_t> slots;
    for (pthread_key_t slot; ::pthread_key_create(&slot, nullptr) == 0;)
        slots.push_back(slot);
    for (const pthread_key_t slot : slots)
        ::pthread_key_delete(slot);
    counts["thread slots"] = slots.size();

    for (const auto& entry : boost::filesystem::directory_iterator("/proc/self/fd"))
    {
        boost::system::error_code gone;
        ++counts["descriptor of " + boost::filesystem::read_symlink(entry.path(), gone).string()];
    }
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
    {
        if (const std::size_t name = line.find('/'); name != std::string::npos)
            ++counts["mapped " + line.substr(name)];
    }

    // It would run what the library has to be run at a fork.
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    int status = -1;
    ::waitpid(child, &status, 0);
    counts["child's end"] = static_cast<std::uint64_t>(status);
    return counts;
}

#endif

/// What the system keeps once it was asked for it: tables of code pages and locales.
bool IsOfTheSystem(const std::string& name)
{
    return name.find("/gconv/") != std::string::npos || name.find("/locale/") != std::string::npos ||
           name.ends_with(".nls");
}

/// Whether there is as much of everything as before. What differs is told.
bool IsAsBefore(Counts before, Counts now, int round)
{
    std::erase_if(now, [](const auto& count) { return IsOfTheSystem(count.first); });
    std::erase_if(before, [](const auto& count) { return IsOfTheSystem(count.first); });
    Counts all = before;
    all.insert(now.begin(), now.end());
    for (const auto& [name, count] : all)
    {
        if (before[name] != now[name])
            std::fprintf(stderr, "round %d: %s: %" PRIu64 " before, %" PRIu64 " now\n", round, name.c_str(),
                         before[name], now[name]);
    }
    return before == now;
}

constexpr int threadCount = 4;
constexpr int rounds = 3;

using UseFunction = bool(const char* file);
using UseInThreadFunction = bool(void* owner);

}

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3)
        return 2;
    bool isUsed = true;
    bool isAsBefore = true;
    UseInThreadFunction* useInThread = nullptr;
    std::atomic<int> uses = 0;
    std::barrier step(threadCount + 1);
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number)
        threads.emplace_back(
            [&]
            {
                for (int round = 0; round < rounds; ++round)
                {
                    step.arrive_and_wait();
                    uses += useInThread(&step) ? 1 : 0;
                    step.arrive_and_wait();
                }
                step.arrive_and_wait();
            });

    LoadLibrariesOfTheSystem();
    const Counts before = Count();
    for (int round = 0; round < rounds; ++round)
    {
        boost::dll::shared_library module(boost::filesystem::absolute(arguments[1]).make_preferred());
        useInThread = &module.get<UseInThreadFunction>("UseInThread");
        step.arrive_and_wait();
        isUsed = module.get<UseFunction>("Use")(arguments[2]) && isUsed;
        step.arrive_and_wait();
        module.unload();
        isAsBefore = IsAsBefore(before, Count(), round) && isAsBefore;
    }
    step.arrive_and_wait();
    for (std::thread& thread : threads)
        thread.join();
    return isUsed && uses == threadCount * rounds && isAsBefore ? 0 : 1;
}
