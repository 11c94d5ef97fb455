#include "utility/platform/Keys.h"

#include "utility/platform/posix/keys/ControlKey.h"

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

ServiceSlot<KeyService>& KeysSlot() noexcept
{
    static PosixKeys system;
    static ServiceSlot<KeyService> slot(system);
    return slot;
}

}
