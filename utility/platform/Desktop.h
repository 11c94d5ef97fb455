#pragma once

#include "utility/platform/Service.h"

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <optional>

namespace utility::platform
{

enum class BoxAnswer
{
    abort,
    retry,
    ignore,
};

/// What it takes to ask the user what is to become of the program. Any thread may call; what is said of messages and
/// keys concerns the calling thread.
///
/// On Linux a question is asked on the process's terminal if it is in its foreground; otherwise, with a display, by
/// `zenity` or `kdialog`; and where there is none of all these the answer is Ignore.
class DesktopService
{
public:
    /// A program's path, with the null that ends it.
    static constexpr std::size_t pathSize = 260;

    virtual ~DesktopService() = default;

    /// Takes a pending request to quit off the thread's message queue, and gives its exit code. No value if there is
    /// none, which is always so on Linux, where threads have no such queue.
    virtual std::optional<int> TakeQuitMessage() = 0;

    /// Puts a request to quit, with this exit code, into the thread's message queue. Nothing on Linux.
    virtual void PostQuitMessage(int exitCode) = 0;

    /// Whether the Control key is held. On Linux, where nobody but the display knows of keys: whether the thread's
    /// latest question was answered by Control and I on the terminal, and this was not asked since.
    virtual bool IsControlKeyDown() = 0;

    /// Asks, with Retry as the answer that takes no choice, and waits. Texts are in the system's narrow encoding. A
    /// question that cannot be asked is answered by Ignore.
    virtual BoxAnswer AskAbortRetryIgnore(const char* title, const char* text) = 0;

    /// The path of the running program in the system's narrow encoding, cut where it does not fit. False on failure.
    virtual bool ProgramPath(char (&path)[pathSize]) = 0;

    /// Raises the abort signal and, where the process survives that, ends it at once with exit code 3. The system's own
    /// does not return.
    virtual void EndProcess()
    {
        std::raise(SIGABRT);
        std::_Exit(3);
    }
};

ServiceSlot<DesktopService>& DesktopSlot() noexcept;
inline DesktopService& Desktop() noexcept { return DesktopSlot().Get(); }

}
