#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <string_view>

namespace utility::platform
{

/// Loaded modules and the numbered strings in them. Any thread may call.
class ModuleService
{
public:
    virtual ~ModuleService() = default;

    /// The module that holds this address; null if none does. The module is not held: it may be unloaded.
    virtual HINSTANCE ModuleAt(const void* address) = 0;

    /// The text with this number, in place in the module, as long as the module is loaded. Empty if there is none.
    /// On Windows a null module stands for the program itself.
    virtual std::wstring_view StringOf(HINSTANCE module, UINT id) = 0;
};

ServiceSlot<ModuleService>& ModulesSlot() noexcept;
inline ModuleService& Modules() noexcept { return ModulesSlot().Get(); }

}
