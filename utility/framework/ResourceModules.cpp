#include "utility/framework/internal/ResourceModules.h"

#include "utility/platform/Modules.h"

#include <utility>

namespace utility::framework
{

namespace
{

const DynLinkLibrary* chain = nullptr;

}

ModuleState& CurrentModuleState()
{
    static ModuleState state;
    return state;
}

DynLinkLibrary::DynLinkLibrary(HINSTANCE module, HINSTANCE resources) noexcept
    : m_module(module), m_resources(resources), m_next(std::exchange(chain, this))
{
}

const DynLinkLibrary* FirstLibrary() { return chain; }

std::wstring_view StringOfChain(UINT id)
{
    for (const DynLinkLibrary* library = chain; library != nullptr; library = library->Next())
    {
        const std::wstring_view text = platform::Modules().StringOf(library->Resources(), id);
        if (!text.empty())
            return text;
    }
    return platform::Modules().StringOf(nullptr, id);
}

}
