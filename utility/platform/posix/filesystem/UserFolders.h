#pragma once

#include <boost/filesystem/path.hpp>

namespace utility::platform::posix
{

// Folders of the user, each empty where it is not known.

/// Where programs keep their settings.
boost::filesystem::path UserConfigurationFolder();

/// Where they keep what else is the user's.
boost::filesystem::path UserDataFolder();

/// The one that the desktop's settings name, or else the home folder.
boost::filesystem::path DocumentsFolder();

}
