#pragma once

// Libraries of code: whether they are there, their versions, and the module that holds an address.
//
//     DWORD major = 0, minor = 0;
//     if (IsDLLAvailable("comctl32.dll") && GetDLLVersion("comctl32.dll", major, minor) >= 0)
//         Show(major, minor);
//     assert(GetModuleHandleExW(nullptr, 2) != nullptr); // the program
//
// A library is found as the system finds it, on Windows with what it needs in its own folder too, and is released
// before the call returns. A path with a null character in it is that of none. On Linux these are shared objects.
//
// Any thread may call. Nothing throws.

#include "utility/platform/Export.h"
#include "utility/platform/SystemRecords.h"

#include <boost/filesystem/path.hpp>

/// Whether a library can be loaded.
[[nodiscard]] UTILITY_API bool IsDLLAvailable(const boost::filesystem::path& library);

/// The version that a library tells of itself by its function DllGetVersion. Gives the function's status, and
/// 0x80004005 for a library that cannot be loaded or does not have it; the version is stored unless that is negative.
UTILITY_API HRESULT GetDLLVersion(const boost::filesystem::path& library, DWORD& major, DWORD& minor);

/// The same of the system's browser, shdocvw.dll in its folder, which Linux does not have.
UTILITY_API HRESULT GetBrowserVersion(DWORD& major, DWORD& minor);

/// Whether the browser is of version 4.71 or later.
[[nodiscard]] UTILITY_API bool CheckBrowserVersion();

/// The module that holds an address, the program for null; null if none does. With the flags 0 it is held from then on
/// (on Linux until the process ends), with 1 it stays loaded until then, and with 2 it is not held. Others are null.
UTILITY_API HINSTANCE__* GetModuleHandleExW(void* address, DWORD flags);
