#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace utility::platform::posix
{

/// What a program is started with.
struct ProgramStart
{
    const char* program = nullptr;          ///< the path of its file
    const char* const* arguments = nullptr; ///< its name the first of them, and null behind the last
    int input = -1; ///< its standard input, if not -1; its output then leads nowhere, and its folder is the root
    bool hasOwnGroup = false;
    bool isAwaited = false;
};

/// Starts a program, with no descriptor of this process but the standard streams, and with the signal mask of the
/// calling thread. It is no child of this process, which is told nothing of its end and need not collect it. An awaited
/// one has ended when this returns. False, with the reason in errno, if it could not be started.
bool StartProgram(const ProgramStart& start) noexcept;

/// The file of a program: the name itself if it has a slash, or else the first of that name along PATH that may be run.
/// Empty, with the reason in errno, if there is none.
std::string ProgramFile(const std::string& name);

/// A command line's arguments in the bytes of the system, the program's name the first.
std::vector<std::string> ArgumentsOf(std::wstring_view commandLine);

/// Pointers to texts that outlive them, and null behind the last.
std::vector<const char*> PointersTo(const std::vector<std::string>& texts);

}
