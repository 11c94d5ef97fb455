#include "utility/platform/Programs.h"

#include "utility/platform/SystemService.h"
#include "utility/platform/Types.h"

#include <shellapi.h>

namespace utility::platform
{

namespace
{

class WindowsPrograms final : public ProgramService
{
public:
    bool Run(wchar_t* commandLine, UntilItEnds then) override
    {
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        static_assert(sizeof(startup) == 104);
        PROCESS_INFORMATION process = {};
        const bool isAwaited = then == UntilItEnds::wait;
        if (!::CreateProcessW(nullptr, commandLine, nullptr, nullptr, FALSE, isAwaited ? 0 : CREATE_NEW_PROCESS_GROUP,
                              nullptr, nullptr, &startup, &process))
            return false;
        if (isAwaited)
            ::WaitForSingleObject(process.hProcess, INFINITE);
        ::CloseHandle(process.hProcess);
        ::CloseHandle(process.hThread);
        return true;
    }

    std::intptr_t Open(const wchar_t* file, const wchar_t* parameters) override
    {
        return reinterpret_cast<std::intptr_t>(::ShellExecuteW(nullptr, nullptr, file, parameters, L"", SW_SHOW));
    }
};

}

ServiceSlot<ProgramService>& ProgramsSlot() noexcept { return SystemService<ProgramService, WindowsPrograms>::Slot(); }

}
