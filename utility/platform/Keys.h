#pragma once

#include "utility/platform/Service.h"

namespace utility::platform
{

/// The keyboard, as the calling thread knows of it. Any thread may call.
class KeyService
{
public:
    virtual ~KeyService() = default;

    /// Whether the Control key is held. On Linux, where nobody but the display knows of keys: whether the thread's
    /// latest question was answered by Control and I on the terminal, and this was not asked since.
    virtual bool IsControlKeyDown() = 0;
};

ServiceSlot<KeyService>& KeysSlot() noexcept;
inline KeyService& Keys() noexcept { return KeysSlot().Get(); }

}
