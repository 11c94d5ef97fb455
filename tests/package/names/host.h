// What a host may have ahead of the library's headers.
#pragma once

#ifdef _WIN32
// The names of the system's operations are macros, and stand for others than without these.
#define UNICODE
#define _UNICODE
#include <windows.h>
#else
// Ported from Windows, where it is as long as an int.
typedef long LONG; // NOLINT(modernize-use-using)
#endif
