// Loads libraries, for the tests of startup/CMakeLists.txt:
//   Loader order MODULE    unloads a module: its objects are destroyed in their order
//   Loader end MODULE      ends without unloading it: a digit is printed for each that is destroyed all the same
//   Loader often LIBRARY   loads and unloads the library more often than the system has thread slots for
// Its exit code is 0 if all went well.

#include <boost/dll/shared_library.hpp>

#include <cstdio>
#include <string>
#include <string_view>

namespace
{

std::string destroyed;

int UnloadInOrder(const char* path)
{
    boost::dll::shared_library module(path);
    module.get<void(void (*)(char))>("MakeObjects")([](char name) { destroyed += name; });
    module.unload();
    std::fprintf(stderr, "%s\n", destroyed.c_str());
    return destroyed == "o21" ? 0 : 1;
}

int End(const char* path)
{
    static auto* const module = new boost::dll::shared_library(path); // never unloaded
    module->get<void(void (*)(char))>("MakeObjects")([](char name) { std::fputc(name, stderr); });
    return 0;
}

int LoadOften(const char* path)
{
    for (int number = 0; number < 700; ++number)
    {
        const boost::dll::shared_library library(path);
        library.get<void(void*)>("_Z17SetThreadDatabaseP15CEntityDatabase")(&destroyed);
        if (library.get<void*()>("_Z17GetThreadDatabasev")() != &destroyed)
        {
            std::fprintf(stderr, "no slot is left for load %d\n", number);
            return 1;
        }
    }
    return 0;
}

}

int main(int argumentCount, char** arguments)
{
    const std::string_view what = argumentCount == 3 ? arguments[1] : "";
    return what == "order"   ? UnloadInOrder(arguments[2])
           : what == "end"   ? End(arguments[2])
           : what == "often" ? LoadOften(arguments[2])
                             : 2;
}
