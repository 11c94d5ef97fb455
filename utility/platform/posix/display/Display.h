#pragma once

#include "utility/platform/Types.h"

namespace utility::platform::posix
{

// What the user's session shows windows by. A server of this machine that takes a connection and then says nothing for
// as long as this hangs: it is none, since whoever talked to it would wait for ever.

inline constexpr DWORD displayPatience = 3000; ///< milliseconds

bool HasX11();
bool HasWayland();

inline bool HasDisplay() { return HasWayland() || HasX11(); }

}
