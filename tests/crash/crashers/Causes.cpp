#include "tests/crash/crashers/Causes.h"
#include "tests/crash/crashers/Hostile.h"

#include "utility/Utility.h"

#include <algorithm>
#include <cassert>
#include <cfenv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string_view>
#include <thread>

#ifdef _WIN32
#include <malloc.h>
#include <windows.h>
#else
#include <csignal>
#include <fcntl.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>
#endif

// Each function is left a call of its own with the parameters it has, however the compiler optimises. No function has a
// pointer to a pointer, save one: a report would not come to its end.

namespace crasher
{

const char* cause = "";

namespace
{

enum Colour
{
    red = 3,
    green = 7,
};

struct Part
{
    int number;
    double weight;
};

volatile int kept = 0;

void Callback() { kept = 1; }

[[gnu::noipa]] int WriteTo(int* place, int number, unsigned count, long size, unsigned long mask, float length,
                           bool isRound, Colour colour, const Part& part, Part copy, void (*callback)())
{
    int doubled = number * 2;
    *place = doubled; // writes to nowhere
    callback();
    kept = static_cast<int>(size) + static_cast<int>(mask) + static_cast<int>(length) + isRound + colour;
    return doubled + static_cast<int>(count) + part.number + copy.number + *place;
}

[[gnu::noipa]] int WriteAValue(int* place)
{
    const Part part{0x1234, 2.5};
    return WriteTo(place, -21, 4000000000U, -5, 9, 0.75F, true, green, part, part, &Callback) + 1;
}

void Null() { kept = WriteAValue(nullptr); }

[[gnu::noipa]] int Dividend(int number, int by)
{
    return number / by; // divides
}

void Divide() { kept = Dividend(7, 0); }

[[gnu::noipa]] double Quotient(double number, double by) { return number / by; }

void FloatDivide()
{
#ifdef _WIN32
    _controlfp(_MCW_EM & ~static_cast<unsigned>(_EM_ZERODIVIDE), _MCW_EM);
#else
    ::feenableexcept(FE_DIVBYZERO);
#endif
    kept = static_cast<int>(Quotient(7, 0));
}

void Illegal() { asm volatile("ud2"); }

void Trap() { asm volatile("int3"); }

/// Has work to do behind each call, so that no compiler makes a loop of it.
[[gnu::noipa]] int Nested(int depth, int* place)
{
    volatile char ballast[64];
    ballast[0] = static_cast<char>(depth);
    if (depth == 0)
        return WriteAValue(place) + ballast[0];
    return Nested(depth - 1, place) + ballast[0];
}

void Deep() { kept = Nested(296, nullptr); }

void Exhausted() { kept = Nested(-1, nullptr); }

void ByAbort() { std::abort(); }

[[gnu::noipa]] void NoSuch(int part) { throw std::runtime_error(std::to_string(part)); }

void ByThrow() { NoSuch(12); }

[[gnu::noipa]] void Check(int weight) { assert(weight > 0); }

void ByAssert() { Check(-1); }

void OnThread()
{
    std::thread([] { Null(); }).join();
}

void OnTwoThreads()
{
    std::thread first([] { Null(); });
    std::thread second([] { Divide(); });
    first.join();
    second.join();
}

/// The library reads what is not there.
void Library()
{
    CyclicRedundancyCheck check;
    check.Incorporate(reinterpret_cast<const void*>(8), 100);
    kept = static_cast<int>(check.Current());
}

struct AtTheEnd
{
    int number = 17;
    bool crashes = false;
    ~AtTheEnd()
    {
        if (crashes)
            Null();
    }
};

AtTheEnd atTheEnd;

void StaticDestructor() { atTheEnd.crashes = true; }

[[gnu::noipa]] int PointerToPointer(int** place, int number)
{
    **place = number;
    return number + 1;
}

void Unending()
{
    int* nowhere = nullptr;
    int** place = &nowhere;
    kept = PointerToPointer(place, 3);
}

[[gnu::noipa]] int Letter(char control, int* place)
{
    *place = control;
    return control + 1;
}

void Control() { kept = Letter('\x02', nullptr); }

/// Loses where its variables are, without optimisation.
[[gnu::noipa]] int Smashed(int number)
{
    asm volatile("mov $16, %%rbp\n\tmovl $1, 0" : : : "memory");
    return number;
}

void SmashedFrame() { kept = Smashed(5); }

void Quiet()
{
    CUnhandledExceptionFilter::g_bGenerateExceptionReport = false;
    Null();
}

/// The translator is another thread's.
void BesideTranslator()
{
    const CSETranslator translator;
    OnThread();
}

void BehindTranslator()
{
    {
        const CSETranslator translator;
    }
    Null();
}

void HostileNames() { kept = Hostile(nullptr); }

/// What malloc keeps of its memory is overwritten, and it says so.
void Heap()
{
    char* const block = static_cast<char*>(std::malloc(100));
#ifdef _WIN32
    const std::size_t size = ::_msize(block);
#else
    const std::size_t size = ::malloc_usable_size(block);
#endif
    volatile char* behind = block;
    asm volatile("" : "+r"(behind));
    for (std::size_t at = size; at < size + 16; ++at)
        behind[at] = 0x7F;
    for (std::size_t i = 1000; i < 100000; i += 1000)
        static_cast<void>(*static_cast<char volatile*>(std::malloc(i)));
}

/// Faults within malloc, which holds its lock then, since there are threads.
void WithinMalloc()
{
    std::thread([] { std::this_thread::sleep_for(std::chrono::hours(1)); }).detach();
    char* const block = static_cast<char*>(std::malloc(2000));
    static_cast<void>(*static_cast<char volatile*>(std::malloc(3000)));
    volatile char* links = block;
    asm volatile("" : "+r"(links));
    std::free(block);
    // The list of what is free goes on where nothing is.
    for (std::size_t at = 0; at < 16; ++at)
        links[at] = 0x11;
    for (std::size_t i = 2000; i < 100000; i += 1000)
        static_cast<void>(*static_cast<char volatile*>(std::malloc(i)));
}

#ifdef _WIN32

/// What the system has a text for, and no table of ours.
void Outside() { ::RaiseException(0xC0000017, 0, 0, nullptr); }

/// Where a module of the system calls WriteFile, this one is called for files, up to where their disk is full.
[[gnu::noipa]] BOOL WINAPI WriteToFullDisk(HANDLE file, const void* bytes, DWORD size, DWORD* written,
                                           OVERLAPPED* where)
{
    static DWORD room = 4096;
    if (size <= room)
    {
        room -= size;
        return ::WriteFile(file, bytes, size, written, where);
    }
    *written = 0;
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

[[gnu::noipa]] void FillDisk()
{
    // What the module calls is in a table of its own.
    auto* const module = reinterpret_cast<std::byte*>(::GetModuleHandleW(L"msvcrt"));
    const auto& header = *reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS64*>(module + header.e_lfanew);
    const IMAGE_DATA_DIRECTORY& table = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    auto* const first = reinterpret_cast<ULONG_PTR*>(module + table.VirtualAddress);
    DWORD before = 0;
    ::VirtualProtect(first, table.Size, PAGE_READWRITE, &before);
    const std::span calls(first, table.Size / sizeof(*first));
    std::ranges::replace(calls, reinterpret_cast<ULONG_PTR>(&::WriteFile),
                         reinterpret_cast<ULONG_PTR>(&WriteToFullDisk));
}

void DeepOnFullDisk()
{
    FillDisk();
    Deep();
}

/// A filter that the program sets ahead of the library's, which is in it then.
int filterCalls = 0;

LONG WINAPI GoOn(EXCEPTION_POINTERS*)
{
    ++filterCalls;
    return EXCEPTION_CONTINUE_EXECUTION;
}

LONG WINAPI End(EXCEPTION_POINTERS*) { ::ExitProcess(7); }

[[gnu::constructor(101)]] void SetEarlierFilter()
{
    const std::string_view line = ::GetCommandLineA();
    if (line.ends_with(" earlier") || line.ends_with(" earlier-caught"))
        ::SetUnhandledExceptionFilter(&GoOn);
    if (line.ends_with(" earlier-ends"))
        ::SetUnhandledExceptionFilter(&End);
}

void GoOnAfterFault()
{
    CUnhandledExceptionFilter::g_bGenerateExceptionReport = false;
    Outside();
    ::ExitProcess(filterCalls == 1 ? 7 : 8);
}

void Caught()
{
    const CSETranslator translator;
    try
    {
        Null();
    }
    catch (CStructuredException* failure)
    {
        failure->Delete();
        ::ExitProcess(filterCalls != 0 ? 7 : 8); // for what the report breaks off at too
    }
}

#else

/// Has what is waiting for a signal, or the parent, know that it may come.
void Ready() { static_cast<void>(::write(STDOUT_FILENO, "ready\n", 6)); }

void FromOutside()
{
    Ready();
    for (;;)
        ::pause();
}

void Caught()
{
    const CSETranslator translator;
    try
    {
        Null();
    }
    catch (CStructuredException* failure)
    {
        failure->Delete();
        static_cast<void>(::write(STDOUT_FILENO, "caught\n", 7));
    }
}

void Handle(int, siginfo_t*, void*) { static_cast<void>(::write(STDOUT_FILENO, "handled\n", 8)); }

struct sigaction libraryAction;

void HandleOnce(int number, siginfo_t* info, void* context)
{
    Handle(number, info, context);
    ::signal(number, SIG_DFL);
}

void HandleAndPassOn(int number, siginfo_t* info, void* context)
{
    Handle(number, info, context);
    libraryAction.sa_sigaction(number, info, context);
}

void HandleAndDie(int number, siginfo_t* info, void* context)
{
    Handle(number, info, context);
    ::_exit(7);
}

void HandleAndCrash(int number, siginfo_t* info, void* context)
{
    Handle(number, info, context);
    Null();
}

[[gnu::noipa]] void InstallFor(int number, void (*handler)(int, siginfo_t*, void*), struct sigaction* earlier)
{
    struct sigaction action = {};
    action.sa_sigaction = handler;
    action.sa_flags = SA_SIGINFO;
    ::sigaction(number, &action, earlier);
}

/// A handler of the host's that comes later and hands on what it gets.
void LaterHandler()
{
    InstallFor(SIGSEGV, &HandleAndPassOn, &libraryAction);
    Null();
}

void LaterHandlerThatEnds()
{
    InstallFor(SIGSEGV, &HandleAndDie, nullptr);
    Null();
}

[[gnu::noipa]] void Block(int number)
{
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, number);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void Blocked()
{
    Block(SIGSEGV);
    Null();
}

void Ignored()
{
    ::signal(SIGFPE, SIG_IGN);
    ::raise(SIGFPE);
    Ready();
}

/// A file that was mapped and then emptied.
void Bus()
{
    const int file = ::open("mapped", O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    static_cast<void>(::ftruncate(file, 4096));
    int* const place = static_cast<int*>(::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
    static_cast<void>(::ftruncate(file, 0));
    kept = WriteAValue(place);
}

/// Everything that the C library has of descriptors is closed.
void WithoutDescriptors()
{
    for (int descriptor = 0; descriptor < 1024; ++descriptor)
        ::close(descriptor);
    Null();
}

/// The first thread has ended, and the system knows nothing more by its number.
void AfterMain()
{
    std::thread(
        []
        {
            char file[4096];
            while (::readlink("/proc/self/exe", file, sizeof(file)) > 0)
                ::usleep(1000);
            Null();
        })
        .detach();
    ::pthread_exit(nullptr);
}

/// Nobody may look into the process, nor leave an image of its memory.
void Undumpable()
{
    ::prctl(PR_SET_DUMPABLE, 0);
    Null();
}

/// Has its signals handled on a stack of its own, of as many bytes as the environment tells, behind a page that faults.
[[gnu::noipa]] void UseOwnStack()
{
    constexpr std::size_t guard = 4096;
    const char* const size = std::getenv("STACK_SIZE");
    const std::size_t room = size != nullptr ? std::strtoul(size, nullptr, 10) : 0;
    void* const memory = ::mmap(nullptr, guard + room, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ::mprotect(memory, guard, PROT_NONE);
    const stack_t stack{static_cast<char*>(memory) + guard, 0, room};
    ::sigaltstack(&stack, nullptr);
}

void NullOnOwnStack()
{
    UseOwnStack();
    Null();
}

void DivideOnOwnStack()
{
    UseOwnStack();
    Divide();
}

void TrapOnOwnStack()
{
    UseOwnStack();
    Trap();
}

void AbortOnOwnStack()
{
    UseOwnStack();
    ByAbort();
}

/// The program's file is gone.
void Unlinked()
{
    char file[4096] = {};
    if (::readlink("/proc/self/exe", file, sizeof(file) - 1) > 0)
        ::unlink(file);
    Null();
}

/// Another file has the name of the program's.
void Replaced()
{
    char file[4096] = {};
    if (::readlink("/proc/self/exe", file, sizeof(file) - 1) <= 0)
        return;
    ::unlink(file);
    ::close(::open(file, O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    Null();
}

/// Runs ahead of every constructor, those of libraries among them, while the cause is not known yet.
void BeforeAll(int count, char** words, char**)
{
    if (count != 2)
        return;
    const std::string_view word = words[1];
    if (word == "earlier" || word == "earlier-quiet" || word == "earlier-caught")
        InstallFor(SIGSEGV, &HandleOnce, nullptr);
    if (word == "earlier-malloc")
        InstallFor(SIGSEGV, &Handle, nullptr);
    if (word == "earlier-ends")
        InstallFor(SIGSEGV, &HandleAndDie, nullptr);
    if (word == "earlier-crashes")
        InstallFor(SIGSEGV, &HandleAndCrash, nullptr);
    if (word == "earlier-ignores")
        ::signal(SIGSEGV, SIG_IGN);
}

[[gnu::section(".preinit_array"), gnu::used]] void (*const beforeAll)(int, char**, char**) = &BeforeAll;

#endif

struct Cause
{
    std::string_view word;
    void (*crash)();
};

constexpr Cause causes[] = {
    {"null", &Null},
    {"divide", &Divide},
    {"float", &FloatDivide},
    {"illegal", &Illegal},
    {"trap", &Trap},
    {"deep", &Deep},
    {"exhausted", &Exhausted},
    {"abort", &ByAbort},
    {"throw", &ByThrow},
    {"assert", &ByAssert},
    {"thread", &OnThread},
    {"threads", &OnTwoThreads},
    {"library", &Library},
    {"destructor", &StaticDestructor},
    {"unending", &Unending},
    {"control", &Control},
    {"smashed", &SmashedFrame},
    {"quiet", &Quiet},
    {"beside-translator", &BesideTranslator},
    {"behind-translator", &BehindTranslator},
    {"heap", &Heap},
    {"malloc", &WithinMalloc},
    {"hostile", &HostileNames},
#ifdef _WIN32
    {"outside", &Outside},
    {"full-disk", &DeepOnFullDisk},
    {"earlier", &GoOnAfterFault},
    {"earlier-caught", &Caught},
    {"earlier-ends", &Null},
#else
    {"signal", &FromOutside},
    {"later", &LaterHandler},
    {"later-ends", &LaterHandlerThatEnds},
    {"earlier", &Null},
    {"earlier-quiet", &Quiet},
    {"earlier-caught", &Caught},
    {"earlier-ends", &Null},
    {"earlier-malloc", &WithinMalloc},
    {"earlier-crashes", &Null},
    {"earlier-ignores", &Null},
    {"blocked", &Blocked},
    {"ignored", &Ignored},
    {"bus", &Bus},
    {"descriptors", &WithoutDescriptors},
    {"after-main", &AfterMain},
    {"undumpable", &Undumpable},
    {"own-stack", &NullOnOwnStack},
    {"own-stack-divide", &DivideOnOwnStack},
    {"own-stack-trap", &TrapOnOwnStack},
    {"own-stack-abort", &AbortOnOwnStack},
    {"unlinked", &Unlinked},
    {"replaced", &Replaced},
#endif
};

}

void Crash()
{
    for (const Cause& each : causes)
    {
        if (each.word == cause)
            each.crash();
    }
}

}
