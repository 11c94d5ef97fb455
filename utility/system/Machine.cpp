#include "utility/system/Machine.h"

#include "utility/platform/Libraries.h"
#include "utility/platform/Threads.h"

using utility::platform::Libraries;

DWORD GetNumberOfProcessors() { return utility::platform::ProcessorCount(); }

int GetVersionExZelo(_OSVERSIONINFOEXW& info)
{
    const HINSTANCE module = Libraries().Loaded(L"ntdll");
    if (module == nullptr)
        return 0;
    const auto tell = reinterpret_cast<int (*)(_OSVERSIONINFOEXW*)>(Libraries().Find(module, "RtlGetVersion"));
    info.dwOSVersionInfoSize = sizeof(info);
    const int status = tell(&info);
    Libraries().Free(module);
    return status;
}
