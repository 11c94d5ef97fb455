#include "utility/platform/WindowClasses.h"

#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

class PosixWindowClasses final : public WindowClassService
{
public:
    std::uint16_t Atom(const wchar_t* /*className*/) override { return 0; }
};

}

ServiceSlot<WindowClassService>& WindowClassesSlot() noexcept
{
    return SystemService<WindowClassService, PosixWindowClasses>::Slot();
}

}
