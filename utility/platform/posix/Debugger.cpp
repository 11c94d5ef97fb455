#include "utility/platform/Debugger.h"

#include "utility/platform/posix/Utf8.h"

#include <unistd.h>

namespace utility::platform
{

namespace
{

class PosixDebugger final : public DebuggerService
{
public:
    void Output(const wchar_t* text) override
    {
        const std::string bytes = posix::Utf8FromWide(text);
        // One write keeps the texts of several threads apart; there is nobody to tell of a failure.
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, bytes.data(), bytes.size());
    }
};

}

ServiceSlot<DebuggerService>& DebuggerSlot() noexcept
{
    static PosixDebugger system;
    static ServiceSlot<DebuggerService> slot(system);
    return slot;
}

}
