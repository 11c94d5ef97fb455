#pragma once

#include "utility/platform/ErrorCodes.h"

struct sqlite3;

namespace utility::platform::posix
{

/// An error number as the registry gives it.
constexpr LSTATUS Status(DWORD error) { return static_cast<LSTATUS>(error); }

inline constexpr LSTATUS success = Status(ERROR_SUCCESS);
inline constexpr LSTATUS missing = Status(ERROR_FILE_NOT_FOUND);
inline constexpr LSTATUS deleted = Status(ERROR_KEY_DELETED);

/// What a result of SQLite is to the registry. `database` is the one that gave it, null where there is none.
LSTATUS StatusOf(int result, sqlite3* database);

}
