#pragma once

// How the library, and other extension modules of the application, come to life in a process. For the host's main
// thread, at start-up.
//
// BEWARE: loading the library sets the C library's locale of the WHOLE PROCESS to that of the display language, where
// the system has it, and so does each CResourceCounter. The host's own printf writes X10,500 then where it wrote
// X10.500, and its strtod stops at the point. Remedies: numbers for machines go out by the library's formatting
// (numbers/FloatFormat.h, CStringW::Format) or std::to_chars, and come in by its parsing (numbers/FloatParse.h, the
// text cursor) or std::from_chars, none of which asks a locale; or the host calls std::setlocale(LC_NUMERIC, "C") at
// the start of main, and again behind each CResourceCounter, which nothing in the library minds.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

/// Puts the library's own strings into the chain of resource modules: before it, numbered messages are empty. A second
/// call adds a second link to the chain and has no other effect.
UTILITY_API void InitialiseUtilityDLL();

/// Joins an extension module, and the module that holds its strings, to the chain of resource modules. If nothing
/// stands for the running program yet, `module` does from now on.
UTILITY_API void ZeloInitMFCExtensionDLL(HINSTANCE module, HINSTANCE resources);

namespace utility
{

/// Loads a file of resources, which is the same on every system, by its absolute path, for ZeloInitMFCExtensionDLL to
/// join to the chain. It stays loaded until the process ends. Null on failure.
UTILITY_API HINSTANCE LoadResourceModule(const wchar_t* path);

}
