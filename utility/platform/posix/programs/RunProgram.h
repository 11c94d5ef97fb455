#pragma once

#include "utility/platform/posix/programs/Start.h"

#include <optional>
#include <string>
#include <vector>

namespace utility::platform::posix
{

/// How a program is run.
struct RunBy
{
    int input = ProgramStart::nowhere;
    DWORD milliseconds = ProgramStart::forEver;
    bool keepsOutput = false;
    bool runsOn = false; ///< when its time is over, and is not killed with all it has started
};

/// What became of a program.
struct ProgramRun
{
    std::string output;
    std::optional<int> exitCode; ///< 128 more than its number for a signal; no value if the program still runs
};

/// Runs a program that is installed, its name the first argument. It has no terminal and no file of the host, and
/// nothing of it is left to be waited for, whatever the host does about the end of its children. No value if there is
/// no such program, or if it was killed for its time.
std::optional<ProgramRun> RunProgram(const std::vector<std::string>& arguments, const RunBy& by = {});

}
