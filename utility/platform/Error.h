#pragma once

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

/// Why the calling thread's latest failed operation failed, as a Windows error number on every system.
/// Operations that succeed leave it as it was.
UTILITY_API DWORD LastError() noexcept;

/// Sets what LastError gives on the calling thread.
UTILITY_API void SetLastError(DWORD error) noexcept;

}
