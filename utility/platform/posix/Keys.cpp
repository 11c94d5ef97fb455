#include "utility/platform/Keys.h"

#include "utility/platform/posix/keys/ControlKey.h"
#include "utility/platform/posix/keys/HeldKeys.h"
#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

class PosixKeys final : public KeyService
{
public:
    bool IsControlKeyDown() override { return posix::TakeControlKeyDown(); }

    bool IsDown(int virtualKey) override { return posix::IsHeld(virtualKey); }

    bool IsDownNow(int virtualKey) override { return posix::IsHeld(virtualKey); }
};

}

ServiceSlot<KeyService>& KeysSlot() noexcept { return SystemService<KeyService, PosixKeys>::Slot(); }

}
