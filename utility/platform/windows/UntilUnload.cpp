#include "utility/platform/UntilUnload.h"

#include <windows.h>

namespace utility::platform
{

namespace
{

/// The start of the module that the library is part of, by the linker's name for it.
extern "C" const char __ImageBase;

bool ProcessEnds()
{
    const auto shutdownInProgress = reinterpret_cast<BOOLEAN(NTAPI*)()>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress")));
    return shutdownInProgress == nullptr || shutdownInProgress();
}

/// Comes behind the destructors of the module's static objects. A program does this when it begins to end, and is never
/// unloaded.
[[gnu::destructor(101)]] void End()
{
    if (reinterpret_cast<HMODULE>(const_cast<char*>(&__ImageBase)) != ::GetModuleHandleW(nullptr) && !ProcessEnds())
        RunTearDowns();
}

}

}
