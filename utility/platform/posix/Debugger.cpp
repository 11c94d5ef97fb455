#include "utility/platform/Debugger.h"

#include "utility/platform/formats/Utf8.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/files/KernelFile.h"
#include "utility/platform/SystemService.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace utility::platform
{

namespace
{

/// One write keeps the texts of several threads apart; there is nobody to tell of a failure.
void Write(std::string_view bytes)
{
    posix::Uninterrupted([&] { return ::write(STDERR_FILENO, bytes.data(), bytes.size()); });
}

class PosixDebugger final : public DebuggerService
{
public:
    bool IsPresent() override
    {
        posix::KernelFile status("/proc/self/status");
        constexpr std::string_view tracer = "TracerPid:";
        // By whole lines, since the first has the name of the process, which may be any text.
        for (std::string line; std::getline(status, line);)
        {
            if (line.starts_with(tracer))
                return std::atoi(line.c_str() + tracer.size()) != 0;
        }
        return false;
    }

    /// Right here, where a signal raised by a call would stop within that call.
    void Break() override { asm volatile("int3"); }

    void NameThread(DWORD thread, const char* name) override
    {
        const std::string file = "/proc/self/task/" + std::to_string(thread) + "/comm";
        const int descriptor = ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor < 0)
            return;
        posix::Uninterrupted([&] { return ::write(descriptor, name, std::strlen(name)); });
        ::close(descriptor);
    }

    void Output(const wchar_t* text) override
    {
        if (!SendToDebuggerSink(text))
            Write(formats::Utf8FromWide(text));
    }

    void Output(const char* text) override
    {
        if (!SendToDebuggerSink(text))
            Write(text);
    }
};

}

ServiceSlot<DebuggerService>& DebuggerSlot() noexcept { return SystemService<DebuggerService, PosixDebugger>::Slot(); }

}
