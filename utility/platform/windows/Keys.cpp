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
    bool IsControlKeyDown() override { return IsDown(VK_CONTROL); }

    bool IsDown(int virtualKey) override { return ::GetKeyState(virtualKey) < 0; }

    bool IsDownNow(int virtualKey) override { return ::GetAsyncKeyState(virtualKey) < 0; }
};

}

ServiceSlot<KeyService>& KeysSlot() noexcept { return SystemService<KeyService, WindowsKeys>::Slot(); }

}
