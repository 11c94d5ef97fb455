#pragma once

namespace utility::platform::posix
{

/// Whether a key is held, or a button of the mouse, by the number that Windows has for it, as the X server of the
/// environment knows it at this moment. False for what is not known, and where there is no server. The server's library
/// is loaded when there is a first question for it. Any thread may ask: each question has a connection of its own, so
/// neither a fork nor a server that ends does harm.
bool IsHeld(int virtualKey);

}
