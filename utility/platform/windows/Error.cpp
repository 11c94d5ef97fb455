#include "utility/platform/Error.h"

namespace utility::platform
{

DWORD LastError() noexcept { return ::GetLastError(); }

DWORD LatestError() noexcept { return ::GetLastError(); }

void SetLastError(DWORD error) noexcept { ::SetLastError(error); }

}
