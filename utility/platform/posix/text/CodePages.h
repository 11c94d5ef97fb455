#pragma once

#include "utility/platform/Types.h"

#include <optional>
#include <string>
#include <string_view>

namespace utility::platform::posix
{

// Conversions by the Windows numbers of code pages. No value where the system does not know the code page. What has no
// counterpart, or is malformed, becomes a question mark or U+FFFD.

std::optional<std::string> Encode(UINT codePage, std::wstring_view text);
std::optional<std::wstring> Decode(UINT codePage, std::string_view text);

}
