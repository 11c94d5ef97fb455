#pragma once

// Names for the keys of settings.
//
//     assert(IsValidRegistryKeyName(L"Tools"));
//     assert(!IsValidRegistryKeyName(L"Tools\\Drills")); // that is two
//
// Any thread may call. Nothing throws.

#include "utility/platform/Export.h"

/// Whether a text can be the name of one key: it is not empty and has no backslash. A null one cannot.
[[nodiscard]] UTILITY_API bool IsValidRegistryKeyName(const wchar_t* name);
