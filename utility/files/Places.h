#pragma once

// Where the program, its modules, the user's documents and the system's own libraries are.
//
//     const boost::filesystem::path templates = GetExecutablePath() / "templates";
//
// Any thread may call. Nothing throws but for lack of memory; what is not known is the empty path.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <boost/filesystem/path.hpp>

/// The whole path of a module's file, however long it is. A null module stands for the program.
UTILITY_API boost::filesystem::path GetModuleFilename(HINSTANCE__* module);
/// The folder that it is in.
UTILITY_API boost::filesystem::path GetModulePath(HINSTANCE__* module);

/// The same of the module that the framework takes for the program.
UTILITY_API boost::filesystem::path GetExecutableFilename();
UTILITY_API boost::filesystem::path GetExecutablePath();

/// The folder of the user's documents. On Linux the one that the desktop's settings name (user-dirs.dirs), or else the
/// home folder.
UTILITY_API boost::filesystem::path GetUserDocumentsFolder();

/// The folder of the system's own libraries. On Linux the one that the C library was loaded from.
UTILITY_API boost::filesystem::path GetSystemFolder();
