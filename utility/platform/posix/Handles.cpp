#include "utility/platform/Handles.h"

#include "utility/platform/Error.h"
#include "utility/platform/posix/handles/Handle.h"
#include "utility/platform/posix/images/Bitmaps.h"
#include "utility/platform/SystemService.h"

namespace utility::platform
{

namespace
{

class PosixHandles final : public HandleService
{
public:
    bool CloseHandle(HANDLE handle) override { return posix::CloseHandle(handle); }

    bool CloseWindowStation(HWINSTA /*station*/) override { return Refuse(); }

    bool DeleteObject(void* graphicObject) override { return posix::Bitmaps().End(graphicObject) || Refuse(); }

private:
    static bool Refuse()
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return false;
    }
};

}

ServiceSlot<HandleService>& HandlesSlot() noexcept { return SystemService<HandleService, PosixHandles>::Slot(); }

}
