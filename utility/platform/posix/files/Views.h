#pragma once

#include <cstdint>

namespace utility::platform::posix
{

/// The bytes of a whole file of this length, read-only, with one more readable behind them. Null, with the reason in
/// LastError(), on failure. They stay when the descriptor is closed.
void* MapView(int descriptor, std::uint64_t length);

/// Ends what MapView gave. False, with the reason in LastError(), on failure, and for anything else.
bool UnmapView(const void* view);

}
