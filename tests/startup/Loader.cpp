// Loads libraries, for the tests of startup/CMakeLists.txt:
//   Loader order MODULE    unloads a module: its objects are destroyed in their order
//   Loader end MODULE      ends without unloading it: a digit is printed for each that is destroyed all the same
//   Loader within MODULE   ends while it unloads it: a digit is printed for each object of another that is destroyed
//   Loader often LIBRARY   loads and unloads the library more often than there are thread slots for
//   Loader slots LIBRARY   loads and unloads the library where no thread slot is left: what it kept in one is not there
//   Loader filter LIBRARY  loads the library, which has a filter for faults, and unloads it: the earlier one is back
//   Loader steps LIBRARY   loads and unloads a library, which tells its steps, three times
//   Loader lean LIBRARY    loads the library, with which nothing comes that not every program needs (Linux)
//   Loader open LIBRARY    loads the library, which reads a hive that is there and keeps nothing open (Linux)
//   Loader zlib LIBRARY    unloads the library after it has loaded zlib, which goes with it (Linux)
// Its exit code is 0 if all went well.

#include "utility/platform/Threads.h"

#include <boost/dll/runtime_symbol_info.hpp>
#include <boost/dll/shared_library.hpp>
#include <boost/filesystem/operations.hpp>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#endif

namespace
{

std::string destroyed;

int UnloadInOrder(const boost::filesystem::path& path)
{
    boost::dll::shared_library module(path);
    module.get<void(void (*)(char))>("MakeObjects")([](char name) { destroyed += name; });
    module.unload();
    std::fprintf(stderr, "%s\n", destroyed.c_str());
    return destroyed == "o21" ? 0 : 1;
}

int End(const boost::filesystem::path& path)
{
    static auto* const module = new boost::dll::shared_library(path); // never unloaded
    module->get<void(void (*)(char))>("MakeObjects")([](char name) { std::fputc(name, stderr); });
    return 0;
}

int EndWithin(const boost::filesystem::path& path)
{
    // Not that of another loader, which may run beside.
    const std::string loader = boost::dll::program_location().filename().string();
    const boost::filesystem::path copy = path.parent_path() / (loader + "'s copy of " + path.filename().string());
    boost::filesystem::copy_file(path, copy, boost::filesystem::copy_options::overwrite_existing);
    static auto* const other = new boost::dll::shared_library(copy); // never unloaded
    other->get<void(void (*)(char))>("MakeObjects")([](char name) { std::fputc(name, stderr); });
    boost::dll::shared_library module(path);
    module.get<void(void (*)(char))>("MakeObjects")(
        [](char name)
        {
            if (name == '2')
                std::exit(0);
        });
    module.unload();
    return 1;
}

int LoadOften(const boost::filesystem::path& path)
{
    constexpr std::size_t left = 8;
    std::vector<DWORD> slots;
    for (DWORD slot; (slot = utility::platform::AllocateThreadSlot()) != TLS_OUT_OF_INDEXES;)
        slots.push_back(slot);
    for (std::size_t number = 0; number < left; ++number)
        utility::platform::FreeThreadSlot(slots[number]);
    for (std::size_t number = 0; number < 2 * left; ++number)
    {
        const boost::dll::shared_library library(path);
        library.get<void(void*)>("_Z17SetThreadDatabaseP15CEntityDatabase")(&destroyed);
        if (library.get<void*()>("_Z17GetThreadDatabasev")() != &destroyed)
        {
            std::fprintf(stderr, "no slot is left for load %zu\n", number);
            return 1;
        }
    }
    return 0;
}

int LoadWithoutSlots(const boost::filesystem::path& path)
{
    while (utility::platform::AllocateThreadSlot() != TLS_OUT_OF_INDEXES)
        continue;
    boost::dll::shared_library library(path);
    library.get<void()>("_Z20InitialiseUtilityDLLv")();
    library.get<void(void*)>("_Z17SetThreadDatabaseP15CEntityDatabase")(&destroyed);
    const bool isKept = library.get<void*()>("_Z17GetThreadDatabasev")() != nullptr;
    const bool isLogged = library.get<void*(const void*)>("_ZN12CLogMessages8instanceEPKv")(&destroyed) != nullptr;
    library.unload();
    return isKept || !isLogged ? 1 : 0;
}

/// What the system calls for a fault.
const void* Filter()
{
#ifdef _WIN32
    const auto filter = ::SetUnhandledExceptionFilter(nullptr);
    ::SetUnhandledExceptionFilter(filter);
    return reinterpret_cast<const void*>(filter);
#else
    struct sigaction action;
    ::sigaction(SIGSEGV, nullptr, &action);
    return reinterpret_cast<const void*>(action.sa_sigaction);
#endif
}

int LoadWithFilter(const boost::filesystem::path& path)
{
    const void* const before = Filter();
    boost::dll::shared_library library(path);
    if (Filter() == before)
        return 1;
    library.unload();
    return Filter() == before ? 0 : 1;
}

int LoadThreeTimes(const boost::filesystem::path& path)
{
    for (int number = 0; number < 3; ++number)
    {
        boost::dll::shared_library library(path);
        std::fputs(" loaded", stderr);
        library.unload();
        std::fputs(" unloaded", stderr);
    }
    std::fputs("\n", stderr);
    return 0;
}

bool IsMapped(std::string_view file)
{
    std::ifstream maps("/proc/self/maps");
    return std::string(std::istreambuf_iterator<char>(maps), {}).find(file) != std::string::npos;
}

int LoadLean(const boost::filesystem::path& path)
{
    const boost::dll::shared_library library(path);
    library.get<void()>("_Z20InitialiseUtilityDLLv")();
    int count = 0;
    for (const char* const file :
         {"libsqlite3.", "libdw.", "libelf.", "libsystemd.", "libz.", "libminizip.", "libxcb."})
    {
        if (!IsMapped(file))
            continue;
        std::fprintf(stderr, "%s is loaded\n", file);
        ++count;
    }
    return count;
}

int LoadWithHive(const boost::filesystem::path& path)
{
    const auto countOpen = []
    {
        const boost::filesystem::directory_iterator files("/proc/self/fd");
        return std::distance(files, {});
    };
    {
        const boost::dll::shared_library library(path);
        library.get<void*()>("_ZN15CQLMAppSettings8instanceEv")(); // makes the hive
    }
    const auto before = countOpen();
    const boost::dll::shared_library library(path);
    return IsMapped("libsqlite3.") && countOpen() == before ? 0 : 1;
}

int UnloadWithZlib(const boost::filesystem::path& path)
{
    {
        const boost::dll::shared_library library(path);
        alignas(void*) unsigned char engine[112]{};
        library.get<int(void*)>("_ZN8CZEngine10DeflateEndEv")(engine);
        if (!IsMapped("libz.so"))
            return 1;
    }
    return IsMapped("libz.so") || IsMapped("libUtility.so") ? 1 : 0;
}

}

int main(int argumentCount, char** arguments)
{
    const std::string_view what = argumentCount == 3 ? arguments[1] : "";
    const boost::filesystem::path path =
        argumentCount == 3 ? boost::filesystem::absolute(arguments[2]).make_preferred() : "";
    return what == "order"    ? UnloadInOrder(path)
           : what == "end"    ? End(path)
           : what == "within" ? EndWithin(path)
           : what == "often"  ? LoadOften(path)
           : what == "slots"  ? LoadWithoutSlots(path)
           : what == "filter" ? LoadWithFilter(path)
           : what == "steps"  ? LoadThreeTimes(path)
           : what == "lean"   ? LoadLean(path)
           : what == "open"   ? LoadWithHive(path)
           : what == "zlib"   ? UnloadWithZlib(path)
                              : 2;
}
