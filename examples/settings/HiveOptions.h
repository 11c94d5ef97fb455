#pragma once

// The options that say where the hives are. One body a system: on Windows there are none.

#include <boost/filesystem/path.hpp>

#include <string>

namespace hiveoptions
{

/// What the help says of them, a line for each.
extern const char* const help;

/// Does what an option says. False for what is no such option.
bool Apply(const std::string& option, const boost::filesystem::path& file);

}
