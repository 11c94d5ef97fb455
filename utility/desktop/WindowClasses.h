#pragma once

// The numbers of window classes, which Windows has and Linux has not.
//
//     if (const unsigned short atom = GetClassAtom(L"Edit"))
//         Show(atom);
//
// A window is made on the calling thread, and destroyed again. Nothing throws.

#include "utility/platform/Export.h"

/// The number of the class with this name; 0 if there is none, which is always so on Linux.
[[nodiscard]] UTILITY_API unsigned short GetClassAtom(const wchar_t* className);
