#pragma once

// The chain of modules in which numbered strings are looked for. It is made at start-up, by one thread, and only read
// afterwards.

#include "utility/framework/Object.h"
#include "utility/platform/Types.h"

#include <string_view>

namespace utility::framework
{

/// What the framework knows of the running program.
struct ModuleState
{
    HINSTANCE currentInstance = nullptr; ///< the module that stands for the program, null until somebody sets it
};

ModuleState& CurrentModuleState();

/// A link of the chain: a module, and the module that holds its strings. It joins the chain when it is made, ahead of
/// all earlier ones. From then on it belongs to the chain, which stays until the library is unloaded.
class DynLinkLibrary final : public CObject
{
public:
    DynLinkLibrary(HINSTANCE module, HINSTANCE resources) noexcept;

    HINSTANCE Module() const noexcept { return m_module; }
    HINSTANCE Resources() const noexcept { return m_resources; }
    const DynLinkLibrary* Next() const noexcept { return m_next; }

private:
    HINSTANCE m_module;
    HINSTANCE m_resources;
    const DynLinkLibrary* m_next;
};

/// The link that joined the chain last, null for an empty chain.
const DynLinkLibrary* FirstLibrary();

/// The string with this number, in place in the first resource module of the chain that holds it, or else in what a
/// null module stands for (platform/Modules.h). Empty if there is none.
std::wstring_view StringOfChain(UINT id);

/// The first resource module of the chain that holds a resource, by its type and name (platform/Modules.h), or else
/// null, which stands for the program.
HINSTANCE ModuleOfResource(UINT type, const wchar_t* name);

/// One of the framework's own strings in the display language, or, before the chain is made, as the library has it.
std::wstring_view FrameworkString(UINT id);

}
