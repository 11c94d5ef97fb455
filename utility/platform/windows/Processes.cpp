#include "utility/platform/Processes.h"

#include "utility/platform/SystemService.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

namespace
{

class WindowsProcesses final : public ProcessService
{
public:
    bool ProgramPath(char (&path)[pathSize]) override { return ::GetModuleFileNameA(nullptr, path, pathSize) != 0; }

    std::optional<int> TakeQuitMessage() override
    {
        MSG message;
        if (!::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE))
            return std::nullopt;
        return static_cast<int>(message.wParam);
    }

    void PostQuitMessage(int exitCode) override { ::PostQuitMessage(exitCode); }
};

}

ServiceSlot<ProcessService>& ProcessesSlot() noexcept
{
    return SystemService<ProcessService, WindowsProcesses>::Slot();
}

}
