#include "utility/platform/Modules.h"

#include "utility/platform/SystemService.h"
#include "utility/platform/windows/ModulesContext.h"

#include <boost/filesystem/path.hpp>

#include <algorithm>
#include <iterator>

namespace utility::platform
{

namespace
{

class WindowsModules final : public ModuleService
{
public:
    HINSTANCE ModuleAt(const void* address) override
    {
        HINSTANCE module = nullptr;
        // For null the system would give the program.
        if (address == nullptr)
            return nullptr;
        ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                             static_cast<const wchar_t*>(address), &module);
        return module;
    }

    std::wstring FileName(HINSTANCE module) override
    {
        wchar_t path[260];
        const DWORD length = ::GetModuleFileNameW(module, path, static_cast<DWORD>(std::size(path)));
        // One that was cut has a null in the last place, or, from earlier systems, another character.
        return {path, std::min<std::size_t>(length, std::size(path) - 1)};
    }

    std::wstring WholeFileName(HINSTANCE module) override
    {
        std::wstring path(260, L'\0');
        for (;;)
        {
            const DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
            const bool mayBeCut = length == path.size();
            path.resize(mayBeCut ? 2 * path.size() : length);
            if (!mayBeCut)
                return path;
        }
    }

    HINSTANCE Load(const wchar_t* path) override
    {
        const windows::ModulesContext context;
        return ::LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    }

    bool Free(HINSTANCE module) override { return ::FreeLibrary(module) != FALSE; }

    std::wstring_view StringOf(HINSTANCE module, UINT id) override
    {
        // The system looks at the low half of a number only, and would give the text of another one.
        if (id > 0xFFFF)
            return {};
        // With no buffer the pointer is set to the text in the module, which no null character ends.
        const wchar_t* text = nullptr;
        const int length = ::LoadStringW(module, id, reinterpret_cast<wchar_t*>(&text), 0);
        return length > 0 ? std::wstring_view(text, static_cast<std::size_t>(length)) : std::wstring_view();
    }

    std::span<const std::byte> ResourceOf(HINSTANCE module, UINT type, const wchar_t* name) override
    {
        const HRSRC found = ::FindResourceW(module, name, MAKEINTRESOURCEW(type));
        if (found == nullptr)
            return {};
        const HGLOBAL loaded = ::LoadResource(module, found);
        const auto* const bytes = static_cast<const std::byte*>(::LockResource(loaded));
        return bytes != nullptr ? std::span(bytes, ::SizeofResource(module, found)) : std::span<const std::byte>();
    }
};

}

ServiceSlot<ModuleService>& ModulesSlot() noexcept { return SystemService<ModuleService, WindowsModules>::Slot(); }

std::wstring SatelliteStem(std::wstring_view moduleFile)
{
    return boost::filesystem::path(moduleFile.begin(), moduleFile.end()).replace_extension().native();
}

}
