#pragma once

// A command line, and the arguments that a program makes of it, by the rules of C programs of Windows on every system.
//
//     const std::wstring line = JoinCommandLine({L"cut", L"part 7.igs", L""}); // cut "part 7.igs" ""
//     assert(SplitCommandLine(line)[1] == L"part 7.igs");
//
// Arguments stand apart by blanks and tabs. Quotes hold together what has these in it, and may begin and end anywhere
// in an argument; within them two quotes are one that is meant. Backslashes are ordinary characters unless a quote
// follows: then two of them are one, and one that is left over has the quote be meant. The first argument names the
// program: its quotes hold together as well, but none is ever meant, and backslashes are always ordinary. Nothing here
// expands wildcards or variables, and single quotes mean nothing.
//
// Nothing is refused, but for an exception when memory is short.

#include "utility/platform/Export.h"

#include <string>
#include <string_view>
#include <vector>

namespace utility::platform::formats
{

/// The arguments of a command line, the program's name the first: there is always that one, which is empty if the line
/// is empty or begins with a blank.
[[nodiscard]] UTILITY_API std::vector<std::wstring> SplitCommandLine(std::wstring_view line);

/// A line of which SplitCommandLine makes these arguments again, unless the first has a quote in it, which no line can
/// tell, or there are none.
[[nodiscard]] UTILITY_API std::wstring JoinCommandLine(const std::vector<std::wstring>& arguments);

}
