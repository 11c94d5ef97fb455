#include "utility/system/Programs.h"

#include "utility/desktop/MessageBoxes.h"
#include "utility/platform/Programs.h"
#include "utility/platform/Types.h"

using utility::platform::Programs;
using utility::platform::UntilItEnds;

void QLMExecute(const wchar_t* commandLine, bool wait)
{
    // Writable, as the declaration asks: a copy would hide from the caller what the system writes.
    Programs().Run(const_cast<wchar_t*>(commandLine), wait ? UntilItEnds::wait : UntilItEnds::goOn);
}

bool QLMShellExecute(const wchar_t* file, const wchar_t* parameters)
{
    constexpr std::intptr_t greatestError = 32;
    const std::intptr_t result = Programs().Open(file, parameters != nullptr ? parameters : L"");
    if (result > greatestError)
        return true;
    ShowSystemErrorMessage(static_cast<DWORD>(result));
    return false;
}
