#include "utility/platform/Keys.h"

#include "utility/platform/posix/keys/ControlKey.h"
#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

class PosixKeys final : public KeyService
{
public:
    bool IsControlKeyDown() override { return posix::TakeControlKeyDown(); }
};

}

ServiceSlot<KeyService>& KeysSlot() noexcept { return SystemService<KeyService, PosixKeys>::Slot(); }

}
