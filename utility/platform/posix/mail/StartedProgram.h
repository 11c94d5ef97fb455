#pragma once

#include <optional>
#include <string>
#include <vector>

namespace utility::platform::posix
{

/// The first program of this name in the absolute folders of the path; empty if there is none.
std::string FindProgram(const char* name);

/// How a program stood when it was no longer waited for.
struct ProgramState
{
    bool isRunning = false;
    bool hasSucceeded = false; ///< ended, with exit code 0
};

/// Starts a program, and waits for its end no longer than these milliseconds. Then it runs on, in a session of its own.
/// The first argument is its path. It has no terminal and no file of this process. It is no child of this process: the
/// host is told nothing of it, and never has to wait for it. No value if it could not be started.
std::optional<ProgramState> StartProgram(const std::vector<std::string>& arguments, int milliseconds);

/// What a program writes to its output, up to some thousands of bytes; nothing unless it succeeds in this time. It is
/// ended if it does not.
std::string OutputOf(const std::vector<std::string>& arguments, int milliseconds);

}
