#include "utility/failures/LibraryFrame.h"

#include "utility/framework/ResourceModules.h"
#include "utility/platform/Modules.h"

#include <new>

void InitialiseUtilityDLL()
{
    static const char addressInThisModule = 0;
    const HINSTANCE library = utility::platform::Modules().ModuleAt(&addressInThisModule);
    ZeloInitMFCExtensionDLL(library, library);
}

void ZeloInitMFCExtensionDLL(HINSTANCE module, HINSTANCE resources)
{
    auto& state = utility::framework::CurrentModuleState();
    if (state.currentInstance == nullptr)
        state.currentInstance = module;
    // The link belongs to the chain and lives until the process ends; without memory for it there is none.
    static_cast<void>(new (std::nothrow) utility::framework::DynLinkLibrary(module, resources));
}
