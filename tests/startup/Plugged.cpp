// Loads a module whose static object uses the library, while another thread uses it as well, for the tests of
// startup/CMakeLists.txt:
//   Plugged MODULE
// What either uses first loads a library of the system, which has the thread wait until the module is loaded. The exit
// code is 0 if they do not wait for each other, which a time limit sees, and all went well.

#include "tests/startup/FirstUses.h"

#include <boost/dll/shared_library.hpp>
#include <boost/filesystem/operations.hpp>

#include <thread>

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
        return 2;
    bool isUsed = false;
    std::thread user(
        [&isUsed]
        {
            while (GetLogLevel() != LogSeverityTiming)
                std::this_thread::yield();
            isUsed = UseFirst("Program.zip");
        });
    const boost::dll::shared_library module(boost::filesystem::absolute(arguments[1]).make_preferred());
    user.join();
    return isUsed && module.get<bool>("isUsed") ? 0 : 1;
}
