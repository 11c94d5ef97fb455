#include "utility/platform/Error.h"

namespace utility::platform
{

namespace
{

thread_local DWORD lastError = ERROR_SUCCESS;

}

DWORD LastError() noexcept { return lastError; }

void SetLastError(DWORD error) noexcept { lastError = error; }

}
