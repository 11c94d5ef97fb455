#include "utility/system/Programs.h"

#include "utility/platform/Programs.h"

using utility::platform::Programs;
using utility::platform::UntilItEnds;

void QLMExecute(const wchar_t* commandLine, bool wait)
{
    // Writable, as the declaration asks: a copy would hide from the caller what the system writes.
    Programs().Run(const_cast<wchar_t*>(commandLine), wait ? UntilItEnds::wait : UntilItEnds::goOn);
}
