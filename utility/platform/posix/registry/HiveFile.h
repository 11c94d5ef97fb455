#pragma once

#include "utility/platform/Types.h"

#include <boost/filesystem/path.hpp>
#include <memory>

struct sqlite3;
struct sqlite3_file;

namespace utility::platform::posix
{

enum class HiveOwner
{
    user,
    machine ///< all may read it
};

/// "SETT": tells a hive from any other database.
inline constexpr int hiveApplicationId = 0x53455454;

/// Where a hive is unless it was moved; empty for a user without a home.
boost::filesystem::path UsualHiveFile(HiveOwner owner);

struct DatabaseCloser
{
    void operator()(sqlite3* database) const;
};
using Database = std::unique_ptr<sqlite3, DatabaseCloser>;

/// Opens a file that exists, by its name or with SQLITE_OPEN_URI by its URI. Nothing is read yet. ERROR_MOD_NOT_FOUND
/// until SQLite is loaded.
LSTATUS OpenDatabase(const std::string& name, int flags, Database& database);

/// The file that an open database is in.
sqlite3_file* FileOf(sqlite3* database);

/// Whether another file, or none, stands where that of an open database was.
bool HasMoved(sqlite3* database);

/// Whether the file of an open database has no bytes, which nothing may be read of: SQLite would take it for a new one.
bool IsEmpty(sqlite3* database);

/// Whether a database may keep a write-ahead log: the index of that is in memory which all its users share, as those on
/// several machines do not.
bool MayHaveLog(const boost::filesystem::path& file);

/// Makes an empty hive, with the folders on the way to it, unless one has come there meanwhile.
LSTATUS MakeHiveFile(const boost::filesystem::path& file, HiveOwner owner);

/// Renames a hive that has no bytes, or that SQLite just told to be damaged or no database, together with what SQLite
/// keeps beside it, so that a new one can be made: settings.db to settings.db.damaged-20260131-235959.123456, by the
/// universal time. False, with the file where it was, if it is not damaged, somebody else uses it or it may not be
/// written.
bool SetHiveAside(sqlite3* database, const boost::filesystem::path& file);

}
