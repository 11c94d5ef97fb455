#include "utility/platform/Handles.h"

#include "utility/platform/SystemService.h"
namespace utility::platform
{

namespace
{

class WindowsHandles final : public HandleService
{
public:
    bool CloseHandle(HANDLE handle) override { return ::CloseHandle(handle) != FALSE; }

    bool CloseWindowStation(HWINSTA station) override { return ::CloseWindowStation(station) != FALSE; }

    bool DeleteObject(void* graphicObject) override { return ::DeleteObject(graphicObject) != FALSE; }
};

}

ServiceSlot<HandleService>& HandlesSlot() noexcept { return SystemService<HandleService, WindowsHandles>::Slot(); }

}
