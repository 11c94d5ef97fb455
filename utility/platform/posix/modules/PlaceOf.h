#pragma once

#include <boost/filesystem/path.hpp>

#include <string>

namespace utility::platform::posix
{

/// What the system says of the place of a file that a program runs from, without the mark that it is no longer there.
boost::filesystem::path PlaceOf(const boost::filesystem::path& told);

/// A path that the system's list of what is mapped has: a line feed in one is "\012" there.
std::string ReadMappedPath(std::string told);

}
