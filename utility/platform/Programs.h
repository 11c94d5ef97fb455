#pragma once

#include "utility/platform/Service.h"

#include <cstdint>

namespace utility::platform
{

enum class UntilItEnds : bool
{
    goOn, ///< the program is a group of its own: what Ctrl-C ends does not take it along
    wait,
};

/// Starts other programs. Any thread may call.
class ProgramService
{
public:
    virtual ~ProgramService() = default;

    /// Starts the program that a command line names, with no open file of this process but its standard streams.
    ///
    /// On Windows the system may write into the command line. On Linux it is split by the rules of SplitCommandLine,
    /// and the program is looked for along PATH if its name has no slash. It is no child of this process there: no
    /// signal tells of its end, and nothing of it is left. False, with the reason in LastError(), if there is no such
    /// program, or it cannot be started.
    virtual bool Run(wchar_t* commandLine, UntilItEnds then) = 0;

    /// Opens a file in the way that the user's desktop knows, or starts a program with its parameters, which may be
    /// empty. Above 32 is a success; else it is the number of an error.
    ///
    /// On Linux what may be run, or is given parameters, is started; `xdg-open` opens all else.
    virtual std::intptr_t Open(const wchar_t* file, const wchar_t* parameters) = 0;
};

ServiceSlot<ProgramService>& ProgramsSlot() noexcept;
inline ProgramService& Programs() noexcept { return ProgramsSlot().Get(); }

}
