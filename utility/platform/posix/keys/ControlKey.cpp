#include "utility/platform/posix/keys/ControlKey.h"

#include <utility>

namespace utility::platform::posix
{

namespace
{

thread_local bool isControlKeyDown = false;

}

void SetControlKeyDown(bool isDown) noexcept { isControlKeyDown = isDown; }

bool TakeControlKeyDown() noexcept { return std::exchange(isControlKeyDown, false); }

}
