#pragma once

#include <dlfcn.h>
#include <mutex>
#include <utility>

namespace utility::platform::posix
{

/// False where the library has no function of this name. It is null then.
template <class Function>
bool FindFunction(void* library, const char* name, Function*& function) noexcept
{
    function = reinterpret_cast<Function*>(::dlsym(library, name));
    return function != nullptr;
}

/// A library of the system that is loaded where it is first needed, and from then on until Unload.
class SystemLibrary
{
public:
    /// Fills the functions, of which found.FindIn(library) says whether all that are called are there. False where
    /// they are not, or the library is not installed: then nothing has changed, and it may be tried again. Several
    /// threads may try, and one of them fills. `users` guards the functions. It must be free here: the system's loader
    /// has a lock as well, and holds it while static objects of another library are made, which may need this one.
    template <class Functions, class Mutex>
    bool Load(const char* name, Functions& functions, Mutex& users)
    {
        void* library = ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
        Functions found = {};
        const bool isWhole = library != nullptr && found.FindIn(library);
        if (isWhole)
        {
            const std::lock_guard lock(users);
            if (m_library == nullptr)
            {
                functions = found;
                m_library = std::exchange(library, nullptr);
            }
        }
        if (library != nullptr)
            ::dlclose(library);
        return isWhole;
    }

    void Unload() noexcept
    {
        if (m_library != nullptr)
            ::dlclose(std::exchange(m_library, nullptr));
    }

private:
    void* m_library = nullptr;
};

}
