#include "utility/platform/Programs.h"

#include "utility/platform/ErrorCodes.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/programs/Start.h"
#include "utility/platform/SystemService.h"

#include <sys/stat.h>
#include <unistd.h>

namespace utility::platform
{

namespace
{

bool Start(const std::vector<std::string>& arguments, UntilItEnds then)
{
    const std::string program = posix::ProgramFile(arguments.front());
    if (program.empty())
        return posix::Fail();
    const std::vector<const char*> pointers = posix::PointersTo(arguments);
    posix::ProgramStart start;
    start.program = program.c_str();
    start.arguments = pointers.data();
    if (then == UntilItEnds::wait)
        start.awaited = posix::ProgramStart::forEver;
    else
        start.group = posix::ProgramStart::own;
    return posix::StartProgram(start) != posix::ProgramState::notStarted || posix::Fail();
}

/// Whether the system is to run a file: one that has the permission, or, if there is no such file, one along PATH.
bool IsProgram(const std::string& name)
{
    struct stat status;
    if (::stat(name.c_str(), &status) == 0)
        return S_ISREG(status.st_mode) && ::access(name.c_str(), X_OK) == 0;
    return name.find('/') == std::string::npos && !posix::ProgramFile(name).empty();
}

/// Whether it is an address of the net or of mail, and no file.
bool IsAddress(const std::string& name) { return name.find("://") != std::string::npos || name.starts_with("mailto:"); }

class PosixPrograms final : public ProgramService
{
public:
    bool Run(wchar_t* commandLine, UntilItEnds then) override
    {
        if (commandLine != nullptr)
            return Start(posix::ArgumentsOf(commandLine), then);
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }

    std::intptr_t Open(const wchar_t* file, const wchar_t* parameters) override
    {
        const std::string name = PathFromWide(file).native();
        // What the parameters follow is any name.
        std::vector<std::string> arguments = posix::ArgumentsOf(std::wstring(L"program ") + parameters);
        if (arguments.size() > 1 || IsProgram(name))
        {
            // One that lies in the current folder is found there, as on Windows.
            const bool isHere = name.find('/') == std::string::npos && ::access(name.c_str(), F_OK) == 0;
            arguments.front() = isHere ? "./" + name : name;
            if (Start(arguments, UntilItEnds::goOn))
                return success;
            // Some file systems have everything be a program.
            if (arguments.size() > 1 || LastError() != ERROR_BAD_EXE_FORMAT)
                return Failure();
        }
        if (!IsAddress(name) && ::access(name.c_str(), F_OK) != 0)
        {
            posix::Fail();
            return Failure();
        }
        return Start({"xdg-open", name.starts_with('-') ? "./" + name : name}, UntilItEnds::goOn) ? success
                                                                                                  : noProgramForIt;
    }

private:
    static constexpr std::intptr_t success = 33;
    static constexpr std::intptr_t noProgramForIt = 31;

    static std::intptr_t Failure()
    {
        constexpr DWORD greatest = 32;
        const DWORD reason = LastError();
        return static_cast<std::intptr_t>(reason <= greatest ? reason : ERROR_GEN_FAILURE);
    }
};

}

ServiceSlot<ProgramService>& ProgramsSlot() noexcept { return SystemService<ProgramService, PosixPrograms>::Slot(); }

}
