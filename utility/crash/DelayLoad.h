#pragma once

// A second try for a library that is loaded when it is used first: beside the program.
//
// On Windows an application module puts the hook into its own slot, __pfnDliFailureHook2 of <delayimp.h>; on Linux it
// is for the library's opener, `OpenDelayed("libkernel.so", &ZeloDliHook)`. The library has no hook for what it loads
// itself. Any thread may call. Throws nothing but for lack of memory.

#include "utility/platform/DelayLoad.h"
#include "utility/platform/Export.h"

/// For notification 3, a library that could not be loaded, tries the file of its name in GetExecutablePath(), and gives
/// the module or null. For any other one it does nothing and gives null.
UTILITY_API utility::platform::DelayLoadResult ZeloDliHook(unsigned int notification, DelayLoadInfo* info);
