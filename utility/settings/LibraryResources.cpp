#include "utility/settings/internal/LibraryResources.h"

#include "utility/platform/LoadOrder.h"
#include "utility/platform/Modules.h"
#include "utility/platform/Registry.h"
#include "utility/text/ResourceString.h"

namespace
{

using namespace utility::platform;

constinit StaticPlace<CResourceCounter> resources;

void LoadResources()
{
    resources.Make(Modules().ModuleAt(&resources));
    // The language was looked for in the settings. A host that has not begun yet may count on its descriptors.
    Registry().Rest();
}

void UnloadResources() { resources.Destroy(); }

[[gnu::init_priority(libraryResourcesAreLoaded)]] LoadStep resourcesStep(libraryResourcesAreLoaded, &LoadResources,
                                                                         &UnloadResources);

}

namespace utility::detail
{

const CResourceCounter& LibraryResources() { return *resources; }

std::wstring LibraryString(UINT id) { return resource_string(LibraryResources().GetResourceDLL(), id); }

}
