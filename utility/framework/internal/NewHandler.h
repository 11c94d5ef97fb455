#pragma once

#include "utility/platform/Heap.h"

namespace utility::framework
{

/// Makes `handler` the framework's own, null for none, and returns the previous one. The framework keeps it for whoever
/// replaces it: what it allocates itself comes from plain `new`, which calls the handler of the process. Any thread may
/// call.
platform::NewHandler SetNewHandler(platform::NewHandler handler) noexcept;

}
