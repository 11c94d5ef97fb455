#include "utility/settings/internal/LibraryResources.h"

#include "utility/platform/Modules.h"
#include "utility/platform/UntilUnload.h"
#include "utility/text/ResourceString.h"

namespace
{

const char addressInThisModule = 0;

/// Comes right behind the allocator of the loading thread, ahead of the initialisers of all other sources.
[[gnu::constructor(102)]] void LoadResources() { utility::detail::LibraryResources(); }

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
