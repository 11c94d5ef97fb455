#include "utility/platform/Programs.h"

#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <cstring>
#include <shellapi.h>

using support::ImportedCall;
using utility::platform::Programs;
using utility::platform::UntilItEnds;

extern "C" decltype(&::CloseHandle) __imp_CloseHandle;
extern "C" decltype(&::CreateProcessW) __imp_CreateProcessW;
extern "C" decltype(&::ShellExecuteW) __imp_ShellExecuteW;
extern "C" decltype(&::WaitForSingleObject) __imp_WaitForSingleObject;

namespace
{

/// What was asked of the system, in order.
std::string calls;

constexpr std::intptr_t processHandle = 0x50;
constexpr std::intptr_t threadHandle = 0x54;

class ProgramCallsTest : public testing::Test
{
protected:
    ProgramCallsTest() { calls.clear(); }

private:
    const ImportedCall<decltype(&::CreateProcessW)> m_create{
        __imp_CreateProcessW,
        [](LPCWSTR application, LPWSTR line, LPSECURITY_ATTRIBUTES process, LPSECURITY_ATTRIBUTES thread, BOOL inherits,
           DWORD flags, LPVOID environment, LPCWSTR folder, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION made)
        {
            STARTUPINFOW expected = {};
            expected.cb = 104;
            const PROCESS_INFORMATION none = {};
            const bool isPlain = application == nullptr && process == nullptr && thread == nullptr && !inherits &&
                                 environment == nullptr && folder == nullptr &&
                                 std::memcmp(startup, &expected, sizeof(expected)) == 0 &&
                                 std::memcmp(made, &none, sizeof(none)) == 0;
            calls += isPlain ? "create " + std::to_string(flags) + ' ' : "other";
            made->hProcess = reinterpret_cast<HANDLE>(processHandle);
            made->hThread = reinterpret_cast<HANDLE>(threadHandle);
            // As the system may.
            line[0] = L'!';
            return BOOL{line[1] != L'?'};
        }};
    const ImportedCall<decltype(&::WaitForSingleObject)> m_wait{
        __imp_WaitForSingleObject,
        [](HANDLE handle, DWORD milliseconds) -> DWORD
        {
            calls += handle == reinterpret_cast<HANDLE>(processHandle) && milliseconds == INFINITE ? "wait " : "other ";
            return WAIT_OBJECT_0;
        }};
    const ImportedCall<decltype(&::CloseHandle)> m_close{
        __imp_CloseHandle, [](HANDLE handle)
        {
            calls += "close " + std::to_string(reinterpret_cast<std::intptr_t>(handle)) + ' ';
            return TRUE;
        }};
};

}

TEST_F(ProgramCallsTest, AwaitedProgramIsStartedWithoutFlags)
{
    wchar_t line[] = L"a b";
    EXPECT_TRUE(Programs().Run(line, UntilItEnds::wait));
    EXPECT_EQ(calls, "create 0 wait close 80 close 84 ");
    EXPECT_STREQ(line, L"! b");
}

TEST_F(ProgramCallsTest, ProgramThatIsNotAwaitedIsAGroupOfItsOwn)
{
    wchar_t line[] = L"a b";
    EXPECT_TRUE(Programs().Run(line, UntilItEnds::goOn));
    EXPECT_EQ(calls, "create 512 close 80 close 84 ");
}

TEST_F(ProgramCallsTest, ProgramThatCannotBeStartedLeavesNothingToDo)
{
    wchar_t line[] = L"a?";
    EXPECT_FALSE(Programs().Run(line, UntilItEnds::wait));
    EXPECT_EQ(calls, "create 0 ");
}

TEST(ProgramsOpenTest, ShellIsAskedWithoutAWindowAVerbOrAFolder)
{
    const ImportedCall call(__imp_ShellExecuteW,
                            [](HWND window, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR folder, INT mode)
                            {
                                const bool isRight =
                                    window == nullptr && verb == nullptr && std::wstring(file) == L"part.pdf" &&
                                    std::wstring(parameters) == L"2" && folder != nullptr && *folder == 0 && mode == 5;
                                return reinterpret_cast<HINSTANCE>(std::intptr_t{isRight ? 42 : 2});
                            });
    EXPECT_EQ(Programs().Open(L"part.pdf", L"2"), 42);
}
