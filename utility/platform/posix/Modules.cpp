#include "utility/platform/Modules.h"

#include <algorithm>
#include <dlfcn.h>
#include <iterator>

namespace utility::platform
{

namespace
{

struct NumberedString
{
    UINT id;
    std::wstring_view text;
};

constexpr NumberedString ownStrings[] = {
#define UTILITY_STRING(name, number, text) {number, L"" text},
#include "resources/Strings.inc"
#undef UTILITY_STRING
};

class PosixModules final : public ModuleService
{
public:
    HINSTANCE ModuleAt(const void* address) override
    {
        Dl_info info;
        return ::dladdr(address, &info) != 0 ? static_cast<HINSTANCE>(info.dli_fbase) : nullptr;
    }

    /// A module here has no string table of its own but this library, whose strings are compiled in.
    std::wstring_view StringOf(HINSTANCE module, UINT id) override
    {
        if (module == nullptr || module != ModuleAt(&ownStrings))
            return {};
        const auto* const found = std::ranges::find(ownStrings, id, &NumberedString::id);
        return found == std::end(ownStrings) ? std::wstring_view() : found->text;
    }
};

}

ServiceSlot<ModuleService>& ModulesSlot() noexcept
{
    static PosixModules system;
    static ServiceSlot<ModuleService> slot(system);
    return slot;
}

}
