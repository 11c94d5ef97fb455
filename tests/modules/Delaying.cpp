// A program whose delayed import names a library where there is none.
//   Delaying          has the library's hook in its slot, which finds it beside the program
//   Delaying without  has none, and waits for the system's exception

#include "utility/crash/DelayLoad.h"
#include "utility/crash/UnhandledExceptionFilter.h"

#include <delayimp.h>

extern "C" int AnswerOfDelayed();

namespace
{

bool isHooked = true;

FARPROC WINAPI Hook(unsigned int notification, PDelayLoadInfo info)
{
    return isHooked ? ZeloDliHook(notification, info) : nullptr;
}

LONG WINAPI EndByCode(EXCEPTION_POINTERS* fault)
{
    ::ExitProcess(fault->ExceptionRecord->ExceptionCode == 0xC06D007E ? 0 : 1);
}

}

extern "C"
{
    PfnDliHook __pfnDliFailureHook2 = &Hook;
}

int main(int argumentCount, char**)
{
    CUnhandledExceptionFilter::g_bGenerateExceptionReport = false;
    isHooked = argumentCount == 1;
    if (!isHooked)
        ::SetUnhandledExceptionFilter(&EndByCode);
    return AnswerOfDelayed() == 42 && isHooked ? 0 : 1;
}
