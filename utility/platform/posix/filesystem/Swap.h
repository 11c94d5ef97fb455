#pragma once

#include <boost/filesystem/path.hpp>

namespace utility::platform::posix
{

/// Puts a new file in the place of another; see FileSystemService::Replace.
bool Swap(const boost::filesystem::path& target, const boost::filesystem::path& replacement,
          const boost::filesystem::path& backup);

/// Takes a file to another device: a copy under that name, in place of what had it, and then no longer the file.
bool MoveAcross(const boost::filesystem::path& from, const boost::filesystem::path& to);

/// Brings the names in the folder of a file to the disk, where the folder's file system can.
bool FlushNames(const boost::filesystem::path& file);

}
