#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <boost/filesystem/path.hpp>

namespace utility::platform
{

/// Libraries of code, loaded and unloaded. Any thread may call. An operation that fails leaves its reason in
/// LastError() on Windows.
class LibraryService
{
public:
    using Function = void (*)();

    virtual ~LibraryService() = default;

    /// Each success is given up by a Free. Null on failure.
    [[nodiscard]] virtual HINSTANCE Load(const boost::filesystem::path& file) = 0;

    /// The same for a library that is loaded already, by its name alone.
    [[nodiscard]] virtual HINSTANCE Loaded(const wchar_t* name) = 0;

    /// What a library exports under a name; null if it does not.
    virtual Function Find(HINSTANCE library, const char* name) = 0;
    virtual void Free(HINSTANCE library) = 0;

    /// The module that holds an address, the program for null. Flags are those of the system on Windows: 4, without
    /// which it is no success, with 1 for a module that is to stay loaded, 2 for one that is not held. On Linux a
    /// module that is held stays loaded, too.
    virtual HINSTANCE ModuleAt(void* address, DWORD flags) = 0;
};

ServiceSlot<LibraryService>& LibrariesSlot() noexcept;
inline LibraryService& Libraries() noexcept { return LibrariesSlot().Get(); }

}
