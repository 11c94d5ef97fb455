#include "utility/settings/internal/LibraryResources.h"

#include "utility/platform/Modules.h"
#include "utility/text/ResourceString.h"

namespace
{

const char addressInThisModule = 0;

// Right behind the allocator of the loading thread, before the initialisers of all other sources.
[[gnu::init_priority(102)]] const CResourceCounter
    resources(utility::platform::Modules().ModuleAt(&addressInThisModule));

}

namespace utility::detail
{

const CResourceCounter& LibraryResources() { return resources; }

std::wstring LibraryString(UINT id) { return resource_string(resources.GetResourceDLL(), id); }

}
