#include "utility/platform/AtFork.h"

namespace utility::platform
{

// There are no forks.
HeldAtFork::HeldAtFork() noexcept = default;

}
