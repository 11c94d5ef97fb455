#include "utility/platform/Jobs.h"

#include "utility/platform/Error.h"
#include "utility/platform/SystemService.h"

#include <string>

namespace utility::platform
{

namespace
{

/// Closes a handle at the end of a scope; the reason of a failure stays.
class Closing
{
public:
    explicit Closing(HANDLE handle) : m_handle(handle) {}
    Closing(const Closing&) = delete;
    Closing& operator=(const Closing&) = delete;
    ~Closing()
    {
        const DWORD reason = ::GetLastError();
        ::CloseHandle(m_handle);
        ::SetLastError(reason);
    }

private:
    HANDLE m_handle;
};

enum WatcherExit : DWORD
{
    noneIsLeft = 0,
    cannotTell = 1,
};

/// The body of the thread that watches a job. The job may be closed meanwhile: it is not touched once it has the port.
DWORD WINAPI WatchJob(void* job)
{
    constexpr ULONG_PTR key = 1;
    const HANDLE port = ::CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, key, 0);
    if (port == nullptr)
        return cannotTell;
    const Closing closing(port);
    JOBOBJECT_ASSOCIATE_COMPLETION_PORT association = {reinterpret_cast<void*>(key), port};
    if (!::SetInformationJobObject(job, JobObjectAssociateCompletionPortInformation, &association, sizeof(association)))
        return cannotTell;
    for (;;)
    {
        if (::WaitForSingleObject(port, INFINITE) != WAIT_OBJECT_0)
            return cannotTell;
        DWORD message = 0;
        ULONG_PTR ignoredKey = 0;
        LPOVERLAPPED ignoredProcess = nullptr;
        if (::GetQueuedCompletionStatus(port, &message, &ignoredKey, &ignoredProcess, INFINITE) &&
            message == JOB_OBJECT_MSG_ACTIVE_PROCESS_ZERO)
            return noneIsLeft;
    }
}

class WindowsJobs final : public JobService
{
public:
    HANDLE MakeJob() override { return ::CreateJobObjectW(nullptr, nullptr); }

    bool KillOnClose(HANDLE job) override
    {
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        return ::SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits)) != FALSE;
    }

    HANDLE Watch(HANDLE job) override { return ::CreateThread(nullptr, 0, &WatchJob, job, 0, nullptr); }

    HANDLE StartIn(HANDLE job, const wchar_t* commandLine) override
    {
        // The system may write into it.
        std::wstring writable(commandLine != nullptr ? commandLine : L"");
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION process = {};
        if (!::CreateProcessW(nullptr, writable.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr, nullptr,
                              &startup, &process))
            return nullptr;
        const Closing closing(process.hThread);
        if (::AssignProcessToJobObject(job, process.hProcess) && ::ResumeThread(process.hThread) != DWORD(-1))
            return process.hProcess;
        const Closing closingProcess(process.hProcess);
        const DWORD reason = ::GetLastError();
        ::TerminateProcess(process.hProcess, 1);
        ::SetLastError(reason);
        return nullptr;
    }

    std::optional<DWORD> WaitForExitCode(HANDLE handle, DWORD milliseconds) override
    {
        const DWORD waited = ::WaitForSingleObject(handle, milliseconds);
        if (waited == WAIT_TIMEOUT)
            ::SetLastError(ERROR_SUCCESS);
        DWORD code = 0;
        if (waited == WAIT_OBJECT_0 && (::GetExitCodeProcess(handle, &code) || ::GetExitCodeThread(handle, &code)))
            return code;
        return std::nullopt;
    }
};

}

ServiceSlot<JobService>& JobsSlot() noexcept { return SystemService<JobService, WindowsJobs>::Slot(); }

}
