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

    // Whether a key, or a button of the mouse, is held, by the number that Windows has for it: as the calling thread
    // has been told, and at this moment. On Linux both are what an X server knows at this moment, which under Wayland
    // is only of keys for its own windows; without one that answers, or libxcb, no key is held.

    virtual bool IsDown(int virtualKey) = 0;
    virtual bool IsDownNow(int virtualKey) = 0;
};

ServiceSlot<KeyService>& KeysSlot() noexcept;
inline KeyService& Keys() noexcept { return KeysSlot().Get(); }

}
