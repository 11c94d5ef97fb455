// A module whose static object uses the library while the program that loads it does the same: see Plugged.cpp.

#include "tests/startup/FirstUses.h"

#include <boost/config.hpp>

#include <chrono>
#include <thread>

extern "C" BOOST_SYMBOL_EXPORT bool isUsed;
bool isUsed = []
{
    SetLogLevel(LogSeverityTiming); // the word to begin
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    return UseFirst("Module.zip");
}();
