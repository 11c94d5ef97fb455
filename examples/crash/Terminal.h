#pragma once

#include "examples/crash/Report.h"

#include <string>
#include <vector>

namespace crash
{

/// A report as text for a terminal.
std::string TerminalText(const Report& report, const std::vector<std::string>& log);

}
