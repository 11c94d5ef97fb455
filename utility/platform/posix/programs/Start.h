#pragma once

#include "utility/platform/Types.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace utility::platform::posix
{

/// What a program is started with.
struct ProgramStart
{
    static constexpr int ofTheHost = -1;
    static constexpr int nowhere = -2;
    static constexpr DWORD forEver = 0xFFFFFFFF;

    enum Group
    {
        theHosts,
        own,
        ofOwnSession
    };

    const char* program = nullptr;          ///< the path of its file
    const char* const* arguments = nullptr; ///< its name the first of them, and null behind the last
    std::array<int, 3> streams = {ofTheHost, ofTheHost, ofTheHost};
    const char* folder = nullptr; ///< its current folder, if it is not the host's
    Group group = theHosts;
    bool hasFreshSignals = false; ///< none blocked or ignored, or else as the calling thread has them
    DWORD awaited = 0;            ///< how many milliseconds the caller waits for its end
    bool isKilledLate = false;    ///< with its group, when it has not ended by then
};

enum class ProgramState
{
    notStarted,
    running,
    ended
};

/// Starts a program, with no descriptor of this process but the standard streams. It is no child of this process, which
/// is told nothing of its end and need not collect it. How it stands when it is not, or no longer, awaited; if it could
/// not be started, the reason is in errno.
ProgramState StartProgram(const ProgramStart& start) noexcept;

/// The file of a program: the name itself if it has a slash, or else the first of that name along PATH that may be run.
/// Empty, with the reason in errno, if there is none.
std::string ProgramFile(const std::string& name);

/// The same for a program that the library runs of its own accord: it is not taken from the current folder, nor from
/// one that depends on it.
std::string InstalledProgram(const std::string& name);

/// A command line's arguments in the bytes of the system, the program's name the first.
std::vector<std::string> ArgumentsOf(std::wstring_view commandLine);

/// Pointers to texts that outlive them, and null behind the last.
std::vector<const char*> PointersTo(const std::vector<std::string>& texts);

}
