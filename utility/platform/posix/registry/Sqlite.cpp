#include "utility/platform/posix/registry/Sqlite.h"

#include <dlfcn.h>
#include <utility>

namespace utility::platform::posix
{

namespace
{

constinit void* library = nullptr;

}

constinit Sqlite sqlite = {};

bool LoadSqlite(std::mutex& users) noexcept
{
    Sqlite found = {};
    void* opened = ::dlopen("libsqlite3.so.0", RTLD_LAZY | RTLD_LOCAL);
    bool isWhole = opened != nullptr;
#define UTILITY_FIND(function)                                                                                         \
    if (isWhole)                                                                                                       \
        found.function = reinterpret_cast<decltype(found.function)>(::dlsym(opened, "sqlite3_" #function));            \
    isWhole = isWhole && found.function != nullptr;
    UTILITY_SQLITE(UTILITY_FIND)
#undef UTILITY_FIND
    if (isWhole)
    {
        const std::lock_guard lock(users);
        if (library == nullptr)
        {
            sqlite = found;
            library = std::exchange(opened, nullptr);
        }
    }
    if (opened != nullptr)
        ::dlclose(opened);
    return isWhole;
}

void UnloadSqlite() noexcept
{
    sqlite = {};
    if (library != nullptr)
        ::dlclose(std::exchange(library, nullptr));
}

}
