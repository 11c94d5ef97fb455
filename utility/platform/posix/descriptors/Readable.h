#pragma once

#include "utility/platform/Types.h"

#include <optional>

namespace utility::platform::posix
{

/// Waits until a descriptor can be read, or is at its end; all ones are for ever. -1 stands for one of which this never
/// comes. Whether it came before the time was up; no value, with the reason in errno, on failure.
std::optional<bool> WaitUntilReadable(int descriptor, DWORD milliseconds);

}
