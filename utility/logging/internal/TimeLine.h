#pragma once

#include <cstdint>
#include <string>

namespace utility::detail
{

/// The line of a step between two moments, which are counted in 100 ns from the start of 1970 UTC.
std::wstring TimeLine(std::int64_t begin, std::int64_t end, const std::wstring& text);

}
