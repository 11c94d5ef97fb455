#pragma once

// The machine, and the system that runs on it.
//
//     std::vector<std::thread> workers(GetNumberOfProcessors());
//     _OSVERSIONINFOEXW version = {};
//     if (GetVersionExZelo(version) == 0 && version.dwMajorVersion >= 10)
//         Show(version.dwBuildNumber);
//     for (std::thread& worker : workers)
//         worker = std::thread(Mill);
//
// Any thread may call. Nothing throws.

#include "utility/platform/Export.h"
#include "utility/platform/SystemRecords.h"

/// How many processors the machine has, those that are not this process's to use among them.
[[nodiscard]] UTILITY_API DWORD GetNumberOfProcessors();

/// The version of Windows as it is, whatever the program says it is made for. 0 is success, and deliberately also the
/// result where the module is missing that tells it, as it is on Linux; the record is untouched then.
UTILITY_API int GetVersionExZelo(_OSVERSIONINFOEXW& info);
