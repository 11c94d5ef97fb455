// Loads the library, uses it and unloads it, again and again, for the tests of startup/CMakeLists.txt:
//   Emptied LIBRARY
// Its exit code is 0 if what the library has asked `new` for is deleted each time.

#include <boost/dll/shared_library.hpp>

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<std::ptrdiff_t> inUse = 0;

void Use(const char* path)
{
    boost::dll::shared_library library(path);
    library.get<void()>("_Z20InitialiseUtilityDLLv")();
    library.get<void*()>("_ZN15CQLMAppSettings8instanceEv")();
    library.get<void*(const void*)>("_ZN12CLogMessages8instanceEPKv")(path);
    library.unload();
}

}

// The library's too: the program's come first. Not inline, or the compiler takes malloc and delete for a wrong pair.

[[gnu::noinline]] void* operator new(std::size_t size)
{
    void* const memory = std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    ++inUse;
    return memory;
}

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    void* const memory = std::malloc(size);
    inUse += memory != nullptr ? 1 : 0;
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    inUse -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
        return 2;
    Use(arguments[1]); // what the runtime keeps from the first use is there now
    const std::ptrdiff_t before = inUse;
    for (int round = 0; round < 10; ++round)
        Use(arguments[1]);
    std::fprintf(stderr, "%td more pieces of memory in use\n", inUse - before);
    return inUse == before ? 0 : 1;
}
