#pragma once

// Where the two hives of the settings live. On Windows that is the registry's matter; on Linux each is one SQLite
// database, which any SQLite tool can look into.
//
//     utility::platform::SetHiveFile(HKEY_CURRENT_USER, folder / "settings.db");
//
// Unless moved, the user's is selvane/settings.db under the user's configuration home ($XDG_CONFIG_HOME, else
// ~/.config), the machine's selvane/settings.db under the system's configuration (the first of $XDG_CONFIG_DIRS, else
// /etc/xdg). A hive is made, with the folders on the way to it, when the first key in it is. One that is found empty or
// damaged when it is opened, and that nobody else uses, is set aside as settings.db.damaged-20260131-235959.123456 (the
// universal time), together with its log; a new one takes its place. Any thread may call.
//
// On file systems that are known to be this machine's own a hive has SQLite's write-ahead log, and reading waits for
// nobody. On others, such as a home on a network, where that log may lose what was written, it has a rollback journal,
// and a log that it comes with goes: reading then gives up after a tenth of a second while another process commits.
// Writing waits for 5 seconds on both. A log may stay beside a hive at rest (settings.db-wal): who copies one copies
// both.

#include "utility/platform/Export.h"
#include "utility/platform/Registry.h"

namespace boost::filesystem
{
class path;
}

namespace utility::platform
{

/// Moves a hive, HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE, to another file, absent or a hive already; false for any
/// other key, for a file named from a current folder that is gone, and always on Windows. Keys that are open in it are
/// as if deleted from then on. Call it before anybody uses the settings: who holds keys, as the settings objects do,
/// does not open them again.
UTILITY_API bool SetHiveFile(HKEY hive, const boost::filesystem::path& file);

/// The file of a hive; empty for any other key, where the user has no home, and always on Windows.
[[nodiscard]] UTILITY_API boost::filesystem::path HiveFile(HKEY hive);

}
