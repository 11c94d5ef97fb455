#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <cstddef>
#include <span>
#include <string>
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

    /// The absolute path of a module's file; a null module stands for the program itself. Empty on failure, which a
    /// module that is not loaded is (126). On Windows a path is cut to 259 characters; on Linux it is where the file
    /// was when it was loaded, however the module was found and whatever became of the file.
    virtual std::wstring FileName(HINSTANCE module) = 0;

    /// The same, but whole on Windows too, however long it is.
    virtual std::wstring WholeFileName(HINSTANCE module) { return FileName(module); }

    /// Loads a module for the sake of its resources; a file that is loaded already is the same module. The path is an
    /// absolute one. Each success is given up by a Free. Null on failure: no such file is 126, one that is no module
    /// 193.
    [[nodiscard]] virtual HINSTANCE Load(const wchar_t* path) = 0;

    /// Gives up a reference to a module. Fails for what is not loaded (126). On Linux what the system's own loader has
    /// loaded stays.
    virtual bool Free(HINSTANCE module) = 0;

    /// The text with this number, in place in the module, as long as the module is loaded. Empty if there is none.
    /// On Windows a null module stands for the program itself.
    virtual std::wstring_view StringOf(HINSTANCE module, UINT id) = 0;

    /// The bytes of a resource, in place in the module, as long as the module is loaded; none if it is absent. The name
    /// may be a number below 65536 in the place of the pointer, or written behind a #. A null module as above.
    virtual std::span<const std::byte> ResourceOf(HINSTANCE module, UINT type, const wchar_t* name) = 0;
};

ServiceSlot<ModuleService>& ModulesSlot() noexcept;
inline ModuleService& Modules() noexcept { return ModulesSlot().Get(); }

/// The path that the names of a module's satellites begin with: the module's without what the system adds to the name.
/// On Windows that is the extension; on Linux /opt/libMilling.so.1 gives /opt/Milling and /opt/app.bin gives /opt/app.
[[nodiscard]] std::wstring SatelliteStem(std::wstring_view moduleFile);

}
