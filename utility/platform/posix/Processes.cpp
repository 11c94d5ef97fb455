#include "utility/platform/Processes.h"

#include "utility/platform/SystemService.h"

#include <unistd.h>

namespace utility::platform
{

namespace
{

class PosixProcesses final : public ProcessService
{
public:
    bool ProgramPath(char (&path)[pathSize]) override
    {
        const ssize_t length = ::readlink("/proc/thread-self/exe", path, pathSize - 1);
        if (length < 0)
            return false;
        path[length] = '\0';
        return true;
    }

    std::optional<int> TakeQuitMessage() override { return std::nullopt; }

    void PostQuitMessage(int /*exitCode*/) override {}
};

}

ServiceSlot<ProcessService>& ProcessesSlot() noexcept { return SystemService<ProcessService, PosixProcesses>::Slot(); }

}
