#pragma once

#include <mutex>
#include <sqlite3.h>

namespace utility::platform::posix
{

/// The functions of SQLite, without the prefix of their names. The library is loaded where a hive is first opened or
/// made: it would double the time that a program without settings takes to start. All of this is for one thread at a
/// time.
struct Sqlite
{
// clang-format off
#define UTILITY_SQLITE(FUNCTION)                                                                                       \
    FUNCTION(bind_blob64) FUNCTION(bind_int64) FUNCTION(bind_text) FUNCTION(busy_timeout) FUNCTION(changes)            \
    FUNCTION(close_v2) FUNCTION(column_blob) FUNCTION(column_bytes) FUNCTION(column_int64) FUNCTION(db_config)         \
    FUNCTION(db_readonly) FUNCTION(errcode) FUNCTION(exec) FUNCTION(file_control) FUNCTION(finalize)                   \
    FUNCTION(get_autocommit) FUNCTION(last_insert_rowid) FUNCTION(open_v2) FUNCTION(prepare_v3) FUNCTION(reset)        \
    FUNCTION(sleep) FUNCTION(step) FUNCTION(system_errno)
// clang-format on
#define UTILITY_MEMBER(function) decltype(&::sqlite3_##function) function; // NOLINT(bugprone-macro-parentheses)
    UTILITY_SQLITE(UTILITY_MEMBER)
#undef UTILITY_MEMBER

    bool FindIn(void* library) noexcept;
};

/// All null until LoadSqlite has succeeded.
extern Sqlite sqlite;

/// False where SQLite is not installed. Who uses it has `users` locked, which must be free here, as SystemLibrary has it.
bool LoadSqlite(std::mutex& users) noexcept;
/// For when the last database is closed.
void UnloadSqlite() noexcept;

}
