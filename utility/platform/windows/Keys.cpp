#include "utility/platform/Keys.h"

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

ServiceSlot<KeyService>& KeysSlot() noexcept
{
    static WindowsKeys system;
    static ServiceSlot<KeyService> slot(system);
    return slot;
}

}
