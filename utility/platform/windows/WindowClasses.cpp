#include "utility/platform/WindowClasses.h"

#include "utility/platform/SystemService.h"
#include "utility/platform/Types.h"
#include "utility/platform/windows/ModulesContext.h"

namespace utility::platform
{

namespace
{

class WindowsWindowClasses final : public WindowClassService
{
public:
    std::uint16_t Atom(const wchar_t* className) override
    {
        const windows::ModulesContext context;
        const HWND window = ::CreateWindowExW(0, className, nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
        const DWORD atom = ::GetClassLongW(window, GCW_ATOM);
        ::DestroyWindow(window);
        return static_cast<std::uint16_t>(atom);
    }
};

}

ServiceSlot<WindowClassService>& WindowClassesSlot() noexcept
{
    return SystemService<WindowClassService, WindowsWindowClasses>::Slot();
}

}
