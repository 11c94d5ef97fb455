#pragma once

#include "utility/platform/Types.h"

namespace utility::platform::posix
{

/// What an error number means, as UTF-8, in the language with this identifier, or else in English; null for a number
/// that the library does not use.
const char* ErrorText(DWORD error, DWORD languageId);

}
