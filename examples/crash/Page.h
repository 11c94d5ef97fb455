#pragma once

#include "examples/crash/Report.h"

#include <string>
#include <vector>

namespace crash
{

/// A report as a page of HTML that needs nothing else: it says of itself that a browser is to fetch nothing, and to run
/// no script but its own, whatever the names in a report are. A filter for names is at the top; behind #filter= in the
/// page's address there may be one to begin with.
std::string PageText(const Report& report, const std::vector<std::string>& log, const std::string& title);

}
