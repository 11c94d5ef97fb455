#include "utility/platform/Jobs.h"

#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/Error.h"
#include "utility/platform/Handles.h"

#include <gtest/gtest.h>

#include <string>

using support::ImportedCall;
using utility::platform::Handles;
using utility::platform::Jobs;
using utility::platform::LastError;

extern "C" decltype(&::AssignProcessToJobObject) __imp_AssignProcessToJobObject;
extern "C" decltype(&::CloseHandle) __imp_CloseHandle;
extern "C" decltype(&::CreateIoCompletionPort) __imp_CreateIoCompletionPort;
extern "C" decltype(&::CreateJobObjectW) __imp_CreateJobObjectW;
extern "C" decltype(&::CreateProcessW) __imp_CreateProcessW;
extern "C" decltype(&::CreateThread) __imp_CreateThread;
extern "C" decltype(&::GetQueuedCompletionStatus) __imp_GetQueuedCompletionStatus;
extern "C" decltype(&::ResumeThread) __imp_ResumeThread;
extern "C" decltype(&::SetInformationJobObject) __imp_SetInformationJobObject;
extern "C" decltype(&::WaitForSingleObject) __imp_WaitForSingleObject;

namespace
{

const HANDLE scriptedPort = reinterpret_cast<HANDLE>(std::intptr_t{0x7770});
const HANDLE scriptedJob = reinterpret_cast<HANDLE>(std::intptr_t{0x7774});

/// How often the scripted port was closed.
int portsClosed = 0;

/// The calls of what watches a job, which all succeed: the port is signalled, and its one message is that no process is
/// left.
class WatcherTest : public testing::Test
{
protected:
    WatcherTest() { portsClosed = 0; }

    /// Of a watcher of the scripted job.
    static std::optional<DWORD> ExitCode()
    {
        const HANDLE watcher = Jobs().Watch(scriptedJob);
        EXPECT_NE(watcher, nullptr);
        // Not by the call that is scripted here.
        DWORD code = STILL_ACTIVE;
        for (int tries = 0; code == STILL_ACTIVE && tries < 20000; ++tries)
        {
            ::Sleep(5);
            ::GetExitCodeThread(watcher, &code);
        }
        ::CloseHandle(watcher);
        return code;
    }

private:
    const ImportedCall<decltype(&::CreateIoCompletionPort)> m_port{
        __imp_CreateIoCompletionPort, [](HANDLE file, HANDLE port, ULONG_PTR key, DWORD concurrency) {
            return file == INVALID_HANDLE_VALUE && port == nullptr && key == 1 && concurrency == 0 ? scriptedPort
                                                                                                   : nullptr;
        }};
    const ImportedCall<decltype(&::SetInformationJobObject)> m_association{
        __imp_SetInformationJobObject, [](HANDLE job, JOBOBJECTINFOCLASS kind, LPVOID record, DWORD size)
        {
            const auto& association = *static_cast<const JOBOBJECT_ASSOCIATE_COMPLETION_PORT*>(record);
            return BOOL{job == scriptedJob && kind == 7 && size == sizeof(association) &&
                        association.CompletionKey == reinterpret_cast<void*>(1) &&
                        association.CompletionPort == scriptedPort};
        }};
    const ImportedCall<decltype(&::WaitForSingleObject)> m_wait{
        __imp_WaitForSingleObject, [](HANDLE handle, DWORD milliseconds)
        { return handle == scriptedPort && milliseconds == INFINITE ? DWORD{WAIT_OBJECT_0} : DWORD{WAIT_FAILED}; }};
    const ImportedCall<decltype(&::GetQueuedCompletionStatus)> m_message{
        __imp_GetQueuedCompletionStatus, [](HANDLE port, LPDWORD message, PULONG_PTR, LPOVERLAPPED*, DWORD milliseconds)
        {
            *message = 4;
            return BOOL{port == scriptedPort && milliseconds == INFINITE};
        }};
    const ImportedCall<decltype(&::CloseHandle)> m_close{__imp_CloseHandle, [](HANDLE handle)
                                                         {
                                                             portsClosed += handle == scriptedPort ? 1 : 0;
                                                             return TRUE;
                                                         }};
};

}

TEST_F(WatcherTest, EndsWithZeroAtTheMessageThatNoProcessIsLeft)
{
    EXPECT_EQ(ExitCode(), 0u);
    EXPECT_EQ(portsClosed, 1);
}

TEST_F(WatcherTest, EndsWithOneWithoutAPort)
{
    const ImportedCall call(__imp_CreateIoCompletionPort,
                            [](HANDLE, HANDLE, ULONG_PTR, DWORD) -> HANDLE { return nullptr; });
    EXPECT_EQ(ExitCode(), 1u);
    EXPECT_EQ(portsClosed, 0);
}

TEST_F(WatcherTest, EndsWithOneAndClosesThePortThatTheJobDoesNotTake)
{
    const ImportedCall call(__imp_SetInformationJobObject,
                            [](HANDLE, JOBOBJECTINFOCLASS, LPVOID, DWORD) { return FALSE; });
    EXPECT_EQ(ExitCode(), 1u);
    EXPECT_EQ(portsClosed, 1);
}

TEST_F(WatcherTest, EndsWithOneAndClosesThePortThatCannotBeWaitedFor)
{
    const ImportedCall call(__imp_WaitForSingleObject, [](HANDLE, DWORD) { return DWORD{WAIT_TIMEOUT}; });
    EXPECT_EQ(ExitCode(), 1u);
    EXPECT_EQ(portsClosed, 1);
}

TEST_F(WatcherTest, GoesOnAfterAMessageThatIsNotThereAndAfterOthers)
{
    static int taken;
    taken = 0;
    const ImportedCall call(__imp_GetQueuedCompletionStatus,
                            [](HANDLE, LPDWORD message, PULONG_PTR, LPOVERLAPPED*, DWORD)
                            {
                                // The first is not there, whatever number is left of it.
                                constexpr DWORD messages[] = {4, 6, 7, 8, 3, 4};
                                *message = messages[taken];
                                return BOOL{taken++ != 0};
                            });
    EXPECT_EQ(ExitCode(), 0u);
    EXPECT_EQ(taken, 6);
}

TEST(JobsTest, JobHasNoNameAndTheSecurityOfTheSystem)
{
    const ImportedCall call(__imp_CreateJobObjectW, [](LPSECURITY_ATTRIBUTES security, LPCWSTR name)
                            { return security == nullptr && name == nullptr ? scriptedJob : nullptr; });
    EXPECT_EQ(Jobs().MakeJob(), scriptedJob);
}

TEST(JobsTest, NothingButKillingIsAskedOfTheJob)
{
    const ImportedCall call(__imp_SetInformationJobObject,
                            [](HANDLE job, JOBOBJECTINFOCLASS kind, LPVOID record, DWORD size)
                            {
                                JOBOBJECT_EXTENDED_LIMIT_INFORMATION expected = {};
                                expected.BasicLimitInformation.LimitFlags = 0x2000;
                                return BOOL{job == scriptedJob && kind == 9 && size == sizeof(expected) &&
                                            std::memcmp(record, &expected, sizeof(expected)) == 0};
                            });
    EXPECT_TRUE(Jobs().KillOnClose(scriptedJob));
}

TEST(JobsTest, WatcherIsAThreadWithTheStackOfTheSystem)
{
    const ImportedCall call(__imp_CreateThread,
                            [](LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE body, LPVOID job,
                               DWORD flags, LPDWORD id)
                            {
                                return security == nullptr && stack == 0 && body != nullptr && job == scriptedJob &&
                                               flags == 0 && id == nullptr
                                           ? scriptedPort
                                           : nullptr;
                            });
    EXPECT_EQ(Jobs().Watch(scriptedJob), scriptedPort);
}

TEST(JobsTest, JobThatIsClosedAheadOfTheWatchIsAnEndWithOne)
{
    const HANDLE job = Jobs().MakeJob();
    ASSERT_TRUE(Handles().CloseHandle(job));
    const HANDLE watcher = Jobs().Watch(job);
    EXPECT_EQ(Jobs().WaitForExitCode(watcher, 100000), 1u);
    Handles().CloseHandle(watcher);
}

TEST(JobsTest, ProcessRunsOnlyWhenItIsInTheJob)
{
    static bool wasSuspended;
    wasSuspended = false;
    const HANDLE job = Jobs().MakeJob();
    Jobs().KillOnClose(job);
    const ImportedCall call(__imp_ResumeThread,
                            [](HANDLE thread)
                            {
                                const DWORD before = ::SuspendThread(thread);
                                wasSuspended = before == 1;
                                // Both suspensions end here.
                                HANDLE copy = nullptr;
                                ::DuplicateHandle(::GetCurrentProcess(), thread, ::GetCurrentProcess(), &copy, 0, FALSE,
                                                  DUPLICATE_SAME_ACCESS);
                                using Resume = DWORD(WINAPI*)(HANDLE);
                                const auto resume = reinterpret_cast<Resume>(reinterpret_cast<void*>(
                                    ::GetProcAddress(::GetModuleHandleW(L"kernel32"), "ResumeThread")));
                                resume(copy);
                                ::CloseHandle(copy);
                                return resume(thread);
                            });
    const HANDLE process = Jobs().StartIn(job, L"cmd /c exit 5");
    ASSERT_NE(process, nullptr);
    EXPECT_TRUE(wasSuspended);
    BOOL isInJob = FALSE;
    EXPECT_TRUE(::IsProcessInJob(process, job, &isInJob));
    EXPECT_TRUE(isInJob);
    EXPECT_EQ(Jobs().WaitForExitCode(process, 100000), 5u);
    Handles().CloseHandle(process);
    Handles().CloseHandle(job);
}

TEST(JobsTest, ProcessThatTheJobDoesNotTakeNeverRuns)
{
    static HANDLE refused;
    const ImportedCall call(__imp_AssignProcessToJobObject,
                            [](HANDLE, HANDLE process)
                            {
                                ::DuplicateHandle(::GetCurrentProcess(), process, ::GetCurrentProcess(), &refused, 0,
                                                  FALSE, DUPLICATE_SAME_ACCESS);
                                ::SetLastError(ERROR_ACCESS_DENIED);
                                return FALSE;
                            });
    const HANDLE job = Jobs().MakeJob();
    EXPECT_EQ(Jobs().StartIn(job, L"cmd /c exit 5"), nullptr);
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_EQ(Jobs().WaitForExitCode(refused, 100000), 1u);
    Handles().CloseHandle(refused);
    Handles().CloseHandle(job);
}
