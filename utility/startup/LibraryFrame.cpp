#include "utility/startup/LibraryFrame.h"

#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/Modules.h"
#include "utility/settings/internal/LibraryResources.h"

#include <new>

void InitialiseUtilityDLL()
{
    const CResourceCounter& library = utility::detail::LibraryResources();
    ZeloInitMFCExtensionDLL(library.GetDLL(), library.GetResourceDLL());
}

void ZeloInitMFCExtensionDLL(HINSTANCE module, HINSTANCE resources)
{
    auto& state = utility::framework::CurrentModuleState();
    if (state.currentInstance == nullptr)
        state.currentInstance = module;
    // The link belongs to the chain; without memory for it there is none.
    static_cast<void>(new (std::nothrow) utility::framework::DynLinkLibrary(module, resources));
}

HINSTANCE utility::LoadResourceModule(const wchar_t* path) { return platform::Modules().Load(path); }
