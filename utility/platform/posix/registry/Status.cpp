#include "utility/platform/posix/registry/Status.h"

#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/registry/Sqlite.h"

namespace utility::platform::posix
{

LSTATUS StatusOf(int result, sqlite3* database)
{
    switch (result & 0xFF)
    {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
        return success;
    case SQLITE_PERM:
    case SQLITE_READONLY:
    case SQLITE_AUTH:
        return Status(ERROR_ACCESS_DENIED);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL: // others came first each time
        return Status(ERROR_BUSY);
    case SQLITE_NOMEM:
        return Status(ERROR_NOT_ENOUGH_MEMORY);
    case SQLITE_FULL:
        return Status(ERROR_DISK_FULL);
    case SQLITE_TOOBIG:
        return Status(ERROR_INVALID_PARAMETER);
    case SQLITE_CANTOPEN:
        // Not every refusal is one of the system's.
        if (const int reason = database != nullptr ? sqlite.system_errno(database) : 0; reason != 0)
            return Status(ErrorOfErrno(reason));
        return Status(ERROR_REGISTRY_IO_FAILED);
    case SQLITE_IOERR:
        return Status(ERROR_REGISTRY_IO_FAILED);
    default: // no database, a damaged one, or one of somebody else
        return Status(ERROR_BADDB);
    }
}

}
