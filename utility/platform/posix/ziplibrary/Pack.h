#pragma once

#include "utility/platform/posix/ziplibrary/Minizip.h"

#include <boost/filesystem/path.hpp>

#include <span>

namespace utility::platform::posix
{

/// Packs files into a new archive, or one that is there; see codec/Zip.h. Relative names of files are in the folder.
/// False on failure.
bool Pack(const Minizip& minizip, const boost::filesystem::path& archive, const boost::filesystem::path& folder,
          std::span<const char* const> files, int level);

}
