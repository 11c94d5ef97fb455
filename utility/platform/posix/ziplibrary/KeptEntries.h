#pragma once

#include "utility/platform/posix/ziplibrary/NewArchive.h"
#include "utility/platform/posix/ziplibrary/SourceFile.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace utility::platform::posix
{

struct KeptEntries
{
    std::uint64_t count;
    std::string comment; ///< of the archive
};

/// Begins a new archive, which is empty yet, with what stays of an old one: all that is ahead of its directory but the
/// entries whose names are to go, and its end without its comment. None if that fails, or if it is no archive whose
/// entries can be told from each other.
std::optional<KeptEntries> KeepEntries(const SourceFile& old, const std::function<bool(std::string_view)>& isToGo,
                                       NewArchive& archive);

/// Makes a new archive whole that minizip has written, and whose latest entries are so many. minizip knows no ends of
/// more than 65,535 entries and no comments with zeros, and forgets on which system an entry of 4 GB was made, which
/// tells what its permissions mean. False if it is not an archive of so many entries.
bool Finish(NewArchive& archive, std::uint64_t entries, std::uint64_t latest, const std::string& comment);

}
