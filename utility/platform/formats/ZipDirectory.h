#pragma once

// Where the entries of a zip archive are: its directory, which is behind all of them, and the records at its end, which
// tell where that begins. All of it as it is stored: numbers may be anything.

#include "utility/platform/formats/Bytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace utility::platform::formats
{

/// What the end of an archive tells.
struct ZipEnd
{
    std::uint64_t entries;           ///< how many the directory is said to have
    std::uint64_t directoryPosition; ///< in the file
    std::uint64_t directorySize;
    std::uint64_t begin; ///< what positions of entries count from: 0, unless the archive is behind something else
    Bytes comment;
};

/// No archive's end is longer.
inline constexpr std::uint64_t longestZipEnd = 56 + 20 + 22 + 0xFFFF;

/// Of the last bytes of a file, `longestZipEnd` of them or all, and its length. None if they are not the end of an
/// archive in one part, with nothing between its directory and its end, nor behind that.
std::optional<ZipEnd> FindZipEnd(Bytes lastBytes, std::uint64_t fileLength);

/// The end of an archive without a comment, of this many entries, whose directory begins at this position, as its
/// entries count.
std::string ZipEndOf(std::uint64_t entries, std::uint64_t directoryPosition, std::uint64_t directorySize);

struct ZipEntry
{
    std::string_view name;
    std::string_view record; ///< all of it
    std::uint64_t position;
    std::uint64_t packedSize;
    std::size_t positionAt; ///< where the position is in the record
    bool isWide;            ///< whether that has eight bytes there, not four
};

/// No entry has a longer record.
inline constexpr std::uint64_t longestZipRecord = 46 + 3 * 0xFFFF;

/// The entries of a directory, in its bytes. None unless it has just as many as it is said to have, all in this part.
std::optional<std::vector<ZipEntry>> ZipEntries(Bytes directory, std::uint64_t count);

/// The record of an entry that has moved to a lower position.
std::string MovedZipRecord(const ZipEntry& entry, std::uint64_t position);

}
