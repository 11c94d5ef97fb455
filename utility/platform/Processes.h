#pragma once

#include "utility/platform/Service.h"

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <optional>

namespace utility::platform
{

/// The running program, and how it is asked to quit or ended. Any thread may call; what is said of messages concerns
/// the calling thread.
class ProcessService
{
public:
    /// A program's path, with the null that ends it.
    static constexpr std::size_t pathSize = 260;

    virtual ~ProcessService() = default;

    /// The path of the running program in the system's narrow encoding, cut where it does not fit. False on failure.
    virtual bool ProgramPath(char (&path)[pathSize]) = 0;

    /// Takes a pending request to quit off the thread's message queue, and gives its exit code. No value if there is
    /// none, which is always so on Linux, where threads have no such queue.
    virtual std::optional<int> TakeQuitMessage() = 0;

    /// Puts a request to quit, with this exit code, into the thread's message queue. Nothing on Linux.
    virtual void PostQuitMessage(int exitCode) = 0;

    /// Raises the abort signal and, where the process survives that, ends it at once with exit code 3. The system's own
    /// does not return.
    virtual void EndProcess()
    {
        std::raise(SIGABRT);
        std::_Exit(3);
    }
};

ServiceSlot<ProcessService>& ProcessesSlot() noexcept;
inline ProcessService& Processes() noexcept { return ProcessesSlot().Get(); }

}
