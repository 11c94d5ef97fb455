// A program that calls zlib through the library, and has nothing else of it, for the tests of a zlib that is there or
// not:
//   Compressor          expects that the first call loads it
//   Compressor without  expects that the first call raises the exception of a delayed import
// Its exit code is 0 if that is so. What Wine itself needs zlib for, as the system's user interface, it does without.

#include "utility/codec/ZEngine.h"

#include <cstdlib>
#include <windows.h>

namespace
{

bool IsZlibLoaded() { return ::GetModuleHandleW(L"zlib1.dll") != nullptr; }

LONG WINAPI EndByKind(EXCEPTION_POINTERS* exception)
{
    constexpr DWORD moduleNotFound = 0xC06D007E;
    std::_Exit(exception->ExceptionRecord->ExceptionCode == moduleNotFound ? 0 : 4);
}

}

int main(int argumentCount, char**)
{
    const bool isThere = argumentCount == 1;
    if (!isThere)
        ::SetUnhandledExceptionFilter(&EndByKind);
    CZEngine engine;
    if (IsZlibLoaded())
        return 1;
    if (engine.DeflateInit(6) != 0 || engine.DeflateEnd() != 0)
        return 2;
    return isThere && IsZlibLoaded() ? 0 : 3;
}
