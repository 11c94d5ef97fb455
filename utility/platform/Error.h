#pragma once

// Why the calling thread's latest failed operation failed. Any thread may call; each has a reason of its own.

#include "utility/platform/ErrorCodes.h"
#include "utility/platform/Export.h"

namespace utility::platform
{

/// Why the calling thread's latest failed operation failed, as a Windows error number on every system.
/// After one that succeeded it says nothing: some systems' calls leave it as it was, some do not.
[[nodiscard]] UTILITY_API DWORD LastError() noexcept;

/// What LastError gives, unless, on Linux, a call of the system that somebody else made has failed later: then its
/// reason, which errno has. On Windows the system keeps both as one.
[[nodiscard]] UTILITY_API DWORD LatestError() noexcept;

/// Sets what LastError gives on the calling thread.
UTILITY_API void SetLastError(DWORD error) noexcept;

}
