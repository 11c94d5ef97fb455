#include "utility/platform/Modules.h"

#include "utility/platform/Files.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/files/KernelFile.h"
#include "utility/platform/posix/modules/LoadedFiles.h"
#include "utility/platform/posix/modules/PlaceOf.h"
#include "utility/platform/SystemService.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <dlfcn.h>
#include <iterator>
#include <link.h>
#include <string>

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

/// The path of the file that is mapped from this address on; empty if there is none.
boost::filesystem::path MappedFileAt(const void* address)
{
    // Each line has the first address, in hexadecimal, and at its end the path.
    posix::KernelFile maps("/proc/thread-self/maps");
    for (std::string line; std::getline(maps, line);)
    {
        if (std::strtoull(line.c_str(), nullptr, 16) == reinterpret_cast<std::uintptr_t>(address))
            return posix::PlaceOf(posix::ReadMappedPath(line.substr(std::min(line.find('/'), line.size()))));
    }
    return {};
}

/// The path of the file of a module that the system's loader has loaded, the program's for null; empty on failure.
boost::filesystem::path PathOf(HINSTANCE module)
{
    boost::filesystem::path path;
    if (module != nullptr)
    {
        // dladdr would look at each symbol of the module as well.
        dl_find_object found;
        if (::_dl_find_object(module, &found) != 0 || found.dlfo_map_start != module)
        {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return {};
        }
        path = found.dlfo_link_map->l_name;
        // It was found from the folder that was the current one then.
        if (!path.empty() && path.is_relative())
            return MappedFileAt(module);
    }
    if (!path.empty())
        return path;
    // The program has no name in the list of modules.
    boost::system::error_code error;
    path = boost::filesystem::read_symlink("/proc/thread-self/exe", error);
    if (error)
        SetLastError(posix::ErrorOfErrno(error.value()));
    return posix::PlaceOf(path);
}

/// What a name stands for by which users ask for a resource.
formats::ResourceName ResourceNameOf(const wchar_t* name)
{
    if (const auto number = reinterpret_cast<std::uintptr_t>(name); number <= 0xFFFF)
        return static_cast<UINT>(number);
    if (*name == L'#')
        return static_cast<UINT>(std::wcstoul(name + 1, nullptr, 10));
    return name;
}

class PosixModules final : public ModuleService
{
public:
    HINSTANCE ModuleAt(const void* address) override
    {
        dl_find_object module;
        return ::_dl_find_object(const_cast<void*>(address), &module) == 0
                   ? static_cast<HINSTANCE>(module.dlfo_map_start)
                   : nullptr;
    }

    std::wstring FileName(HINSTANCE module) override
    {
        std::wstring path = m_files.PathOf(module);
        return path.empty() ? WideFromPath(PathOf(module)) : path;
    }

    HINSTANCE Load(const wchar_t* path) override { return m_files.Load(path); }

    bool Free(HINSTANCE module) override
    {
        if (m_files.Free(module) || (module != nullptr && ModuleAt(module) == module))
            return true;
        SetLastError(ERROR_MOD_NOT_FOUND);
        return false;
    }

    /// Of the modules that the system's loader has loaded only this library has strings, which are compiled in.
    std::wstring_view StringOf(HINSTANCE module, UINT id) override
    {
        if (module == nullptr || module != ModuleAt(&ownStrings))
            return m_files.StringOf(module, id);
        const auto* const found = std::ranges::find(ownStrings, id, &NumberedString::id);
        return found == std::end(ownStrings) ? std::wstring_view() : found->text;
    }

    std::span<const std::byte> ResourceOf(HINSTANCE module, UINT type, const wchar_t* name) override
    {
        return m_files.ResourceOf(module, type, ResourceNameOf(name));
    }

private:
    /// What is loaded is mapped by the service for files. That is made first: it outlives this, and a fork holds it
    /// later.
    posix::LoadedFiles m_files = (static_cast<void>(Files()), posix::LoadedFiles());
};

}

ServiceSlot<ModuleService>& ModulesSlot() noexcept { return SystemService<ModuleService, PosixModules>::Slot(); }

std::wstring SatelliteStem(std::wstring_view moduleFile)
{
    constexpr std::wstring_view prefix = L"lib";
    constexpr std::wstring_view shared = L".so";
    const std::size_t nameAt = moduleFile.rfind(L'/') + 1;
    std::wstring stem(moduleFile.substr(0, nameAt));
    std::wstring_view name = moduleFile.substr(nameAt);
    // The version of a library stands behind its extension: libMilling.so.0.1.
    const std::size_t version = name.rfind(L".so.");
    const std::size_t extension = name.ends_with(shared) ? name.size() - shared.size() : version;
    if (extension != std::wstring_view::npos)
    {
        name = name.substr(0, extension);
        if (name.starts_with(prefix))
            name.remove_prefix(prefix.size());
    }
    else if (const std::size_t dot = name.rfind(L'.'); dot != 0)
    {
        name = name.substr(0, dot);
    }
    return stem.append(name);
}

}
