#pragma once

// The keys that are held, and the buttons of the mouse, by the numbers that Windows has for them (virtual keys).
//
//     constexpr int shift = 0x10;
//     const bool isCopy = IsKeyDown(shift);
//     assert(MouseKeyToVirtualKey(16) == 4); // the middle button
//
// On Linux the X server of the session is asked, whose library is loaded for that; under Wayland that is XWayland,
// which knows of the keys for its own windows alone. Where there is none, or one that does not answer within three
// seconds, no key is held.
//
// Any thread may call. Nothing throws.

#include "utility/platform/Export.h"

/// Whether a key is held, as the messages that the calling thread has taken tell it; on Linux, at this moment.
[[nodiscard]] UTILITY_API bool IsKeyDown(int virtualKey);

/// Whether a key is held at this moment.
[[nodiscard]] UTILITY_API bool IsKeyDownAsync(int virtualKey);

/// The virtual key of a button as a message of the mouse flags it: 1 gives 1 (left), 2 gives 2 (right), 16 gives 4
/// (middle), and anything else, several buttons too, 0.
[[nodiscard]] UTILITY_API int MouseKeyToVirtualKey(int mouseKey);
