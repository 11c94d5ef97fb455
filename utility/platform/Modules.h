#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <string_view>

namespace utility::platform
{

/// Loaded modules and the numbered strings in them. Any thread may call. An operation that fails leaves its reason in
/// LastError() where it says so.
class ModuleService
{
public:
    virtual ~ModuleService() = default;

    /// The module that holds this address; null if none does. The module is not held: it may be unloaded.
    virtual HINSTANCE ModuleAt(const void* address) = 0;

    /// The absolute path of a module's file, null-terminated; a null module stands for the program itself. Gives the
    /// length without the terminator. 0 on failure, which a module that is not loaded is (126). Where there is no room
    /// for all of it the result is `size` (122) and what was written may lack a terminator.
    virtual DWORD FileName(HINSTANCE module, wchar_t* buffer, DWORD size) = 0;

    /// The text with this number, in place in the module, as long as the module is loaded. Empty if there is none.
    /// On Windows a null module stands for the program itself.
    virtual std::wstring_view StringOf(HINSTANCE module, UINT id) = 0;
};

ServiceSlot<ModuleService>& ModulesSlot() noexcept;
inline ModuleService& Modules() noexcept { return ModulesSlot().Get(); }

}
