#pragma once

#include <boost/filesystem/path.hpp>

namespace utility::platform::posix
{

/// What the system says of the place of a file that a program runs from, without the mark that it is no longer there.
boost::filesystem::path PlaceOf(const boost::filesystem::path& told);

}
