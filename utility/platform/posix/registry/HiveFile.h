#pragma once

#include "utility/platform/Types.h"

#include <boost/filesystem/path.hpp>

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

/// Makes an empty hive, with the folders on the way to it, unless one has come there meanwhile.
LSTATUS MakeHiveFile(const boost::filesystem::path& file, HiveOwner owner);

}
