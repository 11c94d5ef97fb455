#pragma once

#include <cstdlib>

namespace utility::platform::posix
{

inline bool IsInEnvironment(const char* variable)
{
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

// What the user's session shows windows by.

inline bool HasX11() { return IsInEnvironment("DISPLAY"); }
inline bool HasWayland() { return IsInEnvironment("WAYLAND_DISPLAY"); }
inline bool HasDisplay() { return HasX11() || HasWayland(); }

}
