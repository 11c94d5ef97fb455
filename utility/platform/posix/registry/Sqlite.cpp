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

bool LoadSqlite() noexcept
{
    if (library != nullptr)
        return true;
    library = ::dlopen("libsqlite3.so.0", RTLD_LAZY | RTLD_LOCAL);
    bool isWhole = library != nullptr;
#define UTILITY_FIND(function)                                                                                         \
    if (isWhole)                                                                                                       \
        sqlite.function = reinterpret_cast<decltype(sqlite.function)>(::dlsym(library, "sqlite3_" #function));         \
    isWhole = isWhole && sqlite.function != nullptr;
    UTILITY_SQLITE(UTILITY_FIND)
#undef UTILITY_FIND
    if (!isWhole)
        UnloadSqlite();
    return isWhole;
}

void UnloadSqlite() noexcept
{
    sqlite = {};
    if (library != nullptr)
        ::dlclose(std::exchange(library, nullptr));
}

}
