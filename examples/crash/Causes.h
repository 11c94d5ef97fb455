#pragma once

// Ways to crash, each as a program may come to it by mistake.

#include <string>
#include <vector>

namespace crash
{

struct Cause
{
    std::string name;
    std::string what;
    void (*crash)();
    bool onThread = false; ///< of its own
};

std::vector<Cause> Causes();

}
