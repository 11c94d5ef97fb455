#pragma once

// How the library, and other extension modules of the application, come to life in a process. For the host's main
// thread, at start-up.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

/// Puts the library's own strings into the chain of resource modules: before it, numbered messages are empty. A second
/// call adds a second link to the chain and has no other effect.
UTILITY_API void InitialiseUtilityDLL();

/// Joins an extension module, and the module that holds its strings, to the chain of resource modules. If nothing
/// stands for the running program yet, `module` does from now on.
UTILITY_API void ZeloInitMFCExtensionDLL(HINSTANCE module, HINSTANCE resources);
