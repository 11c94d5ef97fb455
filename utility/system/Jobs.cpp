#include "utility/system/Jobs.h"

#include "utility/platform/Handles.h"
#include "utility/platform/Jobs.h"

namespace
{

using Owner = std::unique_ptr<void, int (*)(void*)>;

int CloseOwned(void* handle) { return utility::platform::Handles().CloseHandle(handle) ? 1 : 0; }

}

using utility::platform::Jobs;

bool CreateJob(std::unique_ptr<void, int (*)(void*)>& job, std::unique_ptr<void, int (*)(void*)>& thread)
{
    job = Owner(Jobs().MakeJob(), &CloseOwned);
    if (job != nullptr && Jobs().KillOnClose(job.get()))
    {
        thread = Owner(Jobs().Watch(job.get()), &CloseOwned);
        if (thread != nullptr)
            return true;
    }
    job.reset();
    return false;
}

bool StartInJob(void* job, const wchar_t* commandLine, std::unique_ptr<void, int (*)(void*)>& process)
{
    Owner started(Jobs().StartIn(job, commandLine), &CloseOwned);
    if (started == nullptr)
        return false;
    process = std::move(started);
    return true;
}

std::optional<DWORD> WaitForExitCode(void* handle, DWORD milliseconds)
{
    return Jobs().WaitForExitCode(handle, milliseconds);
}
