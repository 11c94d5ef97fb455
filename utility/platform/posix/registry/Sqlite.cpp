#include "utility/platform/posix/registry/Sqlite.h"

#include "utility/platform/posix/modules/SystemLibrary.h"

namespace utility::platform::posix
{

namespace
{

constinit SystemLibrary library;

}

constinit Sqlite sqlite = {};

bool Sqlite::FindIn(void* opened) noexcept
{
    bool isWhole = true;
#define UTILITY_FIND(function) isWhole = isWhole && FindFunction(opened, "sqlite3_" #function, function);
    UTILITY_SQLITE(UTILITY_FIND)
#undef UTILITY_FIND
    return isWhole;
}

bool LoadSqlite(std::mutex& users) noexcept { return library.Load("libsqlite3.so.0", sqlite, users); }

void UnloadSqlite() noexcept
{
    sqlite = {};
    library.Unload();
}

}
