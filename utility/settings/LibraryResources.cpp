#include "utility/settings/internal/LibraryResources.h"

#include "utility/platform/Modules.h"
#include "utility/platform/Registry.h"
#include "utility/platform/UntilUnload.h"
#include "utility/text/ResourceString.h"

namespace
{

const char addressInThisModule = 0;

/// Comes right behind the allocator of the loading thread, ahead of the initialisers of all other sources.
[[gnu::constructor(102)]] void LoadResources()
{
    utility::detail::LibraryResources();
    // The language was looked for in the settings. A host that has not begun yet may count on its descriptors.
    utility::platform::Registry().Rest();
}

}

namespace utility::detail
{

const CResourceCounter& LibraryResources()
{
    static platform::UntilUnload<CResourceCounter> resources(platform::Modules().ModuleAt(&addressInThisModule));
    return *resources;
}

std::wstring LibraryString(UINT id) { return resource_string(LibraryResources().GetResourceDLL(), id); }

}
