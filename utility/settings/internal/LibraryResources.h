#pragma once

// The library's own module and its strings in the display language. They are found before any other source of the
// library but the thread allocators' is initialised, and stay until it is unloaded.

#include "utility/platform/Types.h"
#include "utility/settings/ResourceCounter.h"

#include <string>

namespace utility::detail
{

const CResourceCounter& LibraryResources();

/// The library's string with this number; empty if there is none.
std::wstring LibraryString(UINT id);

}
