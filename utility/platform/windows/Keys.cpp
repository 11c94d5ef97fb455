#include "utility/platform/Keys.h"

#include "utility/platform/SystemService.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

namespace
{

class WindowsKeys final : public KeyService
{
public:
    bool IsControlKeyDown() override { return ::GetKeyState(VK_CONTROL) < 0; }
};

}

ServiceSlot<KeyService>& KeysSlot() noexcept { return SystemService<KeyService, WindowsKeys>::Slot(); }

}
