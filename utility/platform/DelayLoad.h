#pragma once

// Libraries that are loaded when they are used first, and what is done about one that is not found. On Windows the
// linker makes imports for that, and a hook goes into __pfnDliFailureHook2 of <delayimp.h>. Linux has nothing of the
// kind: there, and wherever a program looks functions up by itself, a library is opened by OpenDelayed.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>

#ifdef _WIN32

struct DelayLoadInfo; // of <delayimp.h>

#else

/// What a hook is told, with the names of Windows.
struct DelayLoadInfo
{
    DWORD cb;          ///< the size of the record
    const char* szDll; ///< the library, as it was asked for
    DWORD dwLastError; ///< why it could not be loaded
};

#endif

namespace utility::platform
{

/// A module's handle in the form that a hook gives it in, or null.
using DelayLoadResult = std::int64_t (*)();
/// Called with 3 for a library that cannot be loaded.
using DelayLoadHook = DelayLoadResult (*)(unsigned int notification, DelayLoadInfo* info);

/// The library that could not be loaded.
[[nodiscard]] boost::filesystem::path LibraryOf(const DelayLoadInfo& info);

/// Loads a module for its code; what it needs is looked for in its folder too. Null on failure.
[[nodiscard]] HINSTANCE LoadCode(const boost::filesystem::path& file);

/// Loads a library by its name or path as the system does, and if that fails what the hook gives, which may be null.
/// An empty name is no library's; nor is null, for which no hook is asked.
/// The result is for dlsym and dlclose, on Windows for GetProcAddress and FreeLibrary. Any thread may call.
[[nodiscard]] UTILITY_API HINSTANCE OpenDelayed(const char* library, DelayLoadHook failureHook);

}
