#pragma once

#include <string>
#include <string_view>

namespace utility::platform::posix
{

/// Names of keys and values as they are looked up: in UTF-8, in the upper case by which the registry compares. A
/// character stands for a character, and nothing beyond ASCII is the same as anything within it.
std::string Folded(std::wstring_view name);
void AppendFolded(std::string& text, std::wstring_view name);

}
