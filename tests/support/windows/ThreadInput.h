#pragma once

#include "utility/platform/Types.h"

#include <optional>

namespace support
{

/// The Control key of the calling thread, as its keyboard state has it.
inline void HoldControl(bool isHeld)
{
    BYTE keys[256];
    ::GetKeyboardState(keys);
    keys[VK_CONTROL] = isHeld ? 0x80 : 0;
    ::SetKeyboardState(keys);
}

/// The exit code of a request to quit that waits in the calling thread's queue, which it leaves.
inline std::optional<int> WaitingQuit()
{
    MSG message;
    if (!::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) || message.message != WM_QUIT)
        return std::nullopt;
    return static_cast<int>(message.wParam);
}

}
