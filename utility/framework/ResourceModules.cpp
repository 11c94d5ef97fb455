#include "utility/framework/internal/ResourceModules.h"

#include "utility/platform/Modules.h"
#include "utility/platform/UntilUnload.h"

#include <memory>
#include <utility>

namespace utility::framework
{

namespace
{

const char addressInThisModule = 0;

/// The links belong to it.
struct Chain
{
    const DynLinkLibrary* first = nullptr;

    Chain() = default;
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;
    ~Chain()
    {
        while (first != nullptr)
            std::unique_ptr<const DynLinkLibrary>(std::exchange(first, first->Next()));
    }
};

Chain& TheChain()
{
    static platform::UntilUnload<Chain> chain;
    return *chain;
}

}

ModuleState& CurrentModuleState()
{
    static ModuleState state;
    return state;
}

DynLinkLibrary::DynLinkLibrary(HINSTANCE module, HINSTANCE resources) noexcept
    : m_module(module), m_resources(resources), m_next(std::exchange(TheChain().first, this))
{
}

const DynLinkLibrary* FirstLibrary() { return TheChain().first; }

std::wstring_view StringOfChain(UINT id)
{
    for (const DynLinkLibrary* library = FirstLibrary(); library != nullptr; library = library->Next())
    {
        const std::wstring_view text = platform::Modules().StringOf(library->Resources(), id);
        if (!text.empty())
            return text;
    }
    return platform::Modules().StringOf(nullptr, id);
}

HINSTANCE ModuleOfResource(UINT type, const wchar_t* name)
{
    const DynLinkLibrary* library = FirstLibrary();
    while (library != nullptr && platform::Modules().ResourceOf(library->Resources(), type, name).empty())
        library = library->Next();
    return library != nullptr ? library->Resources() : nullptr;
}

std::wstring_view FrameworkString(UINT id)
{
    const std::wstring_view inChain = StringOfChain(id);
    return !inChain.empty() ? inChain
                            : platform::Modules().StringOf(platform::Modules().ModuleAt(&addressInThisModule), id);
}

}
