#include "utility/diagnostics/ThreadName.h"

#include "utility/platform/Debugger.h"

void SetThreadName(DWORD threadId, const char* name)
{
    using utility::platform::Debugger;
    if (Debugger().IsPresent())
        Debugger().NameThread(threadId, name);
}
