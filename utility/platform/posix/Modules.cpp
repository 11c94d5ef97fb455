#include "utility/platform/Modules.h"

#include "utility/platform/Paths.h"
#include "utility/platform/posix/Errors.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <dlfcn.h>
#include <iterator>
#include <link.h>

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

/// The path of a module's file, the program's for null; empty on failure.
std::wstring PathOf(HINSTANCE module)
{
    boost::system::error_code error;
    boost::filesystem::path path;
    Dl_info info;
    link_map* map = nullptr;
    if (module != nullptr)
    {
        if (::dladdr1(module, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || info.dli_fbase != module)
        {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return {};
        }
        path = map->l_name;
    }
    // The program has no name in the list of modules.
    if (path.empty())
        path = boost::filesystem::read_symlink("/proc/self/exe", error);
    else
        path = boost::filesystem::absolute(path, error);
    if (error)
        SetLastError(posix::ErrorOfErrno(error.value()));
    return WideFromPath(path);
}

class PosixModules final : public ModuleService
{
public:
    HINSTANCE ModuleAt(const void* address) override
    {
        Dl_info info;
        return ::dladdr(address, &info) != 0 ? static_cast<HINSTANCE>(info.dli_fbase) : nullptr;
    }

    DWORD FileName(HINSTANCE module, wchar_t* buffer, DWORD size) override
    {
        const std::wstring path = PathOf(module);
        if (path.empty())
            return 0;
        const std::size_t length = path.copy(buffer, size);
        if (length < size)
        {
            buffer[length] = L'\0';
            return static_cast<DWORD>(length);
        }
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return size;
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
