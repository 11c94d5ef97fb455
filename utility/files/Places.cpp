#include "utility/files/Places.h"

#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/FileSystem.h"
#include "utility/platform/Modules.h"
#include "utility/platform/Paths.h"

using boost::filesystem::path;
using utility::framework::CurrentModuleState;

path GetModuleFilename(HINSTANCE__* module)
{
    return utility::platform::PathFromWide(utility::platform::Modules().WholeFileName(module).c_str());
}

path GetModulePath(HINSTANCE__* module) { return GetModuleFilename(module).parent_path(); }

path GetExecutableFilename() { return GetModuleFilename(CurrentModuleState().currentInstance); }

path GetExecutablePath() { return GetModulePath(CurrentModuleState().currentInstance); }

path GetUserDocumentsFolder() { return utility::platform::FileSystem().DocumentsFolder(); }

path GetSystemFolder() { return utility::platform::FileSystem().SystemFolder(); }
