#pragma once

// Version records in their stored form, which is that of the version resource on Windows: nodes within nodes, each with
// a key and a value, aligned to four bytes from the start of the record.
//
// A record is read into a block: the record as it is stored, and behind it the same units widened, so that each text is
// there as wide text too. The block is all that a look-up needs.
//
// Whatever a record says, nothing is read outside it, and no look-up takes longer than one pass over it for each key of
// the path. A node that says it is longer than the one that holds it ends there. A record must not change between its
// size and its reading: one in a file that others may write is copied first.

#include "utility/platform/formats/Bytes.h"
#include "utility/platform/Types.h"

namespace utility::platform::formats
{

/// A record tells its length in 16 bits.
inline constexpr std::size_t longestVersionRecord = 0xFFFF;

/// The version record in a file: the resource of a PE file, or the section ".utility.version" of a 64-bit ELF file;
/// none if it has none.
Bytes FindVersionRecord(Bytes file);

/// The size of the block that a record is read into; 0 if it is cut short or does not begin with fixed information.
DWORD VersionBlockSize(Bytes record);

/// Reads a record whose block has a size. The block has room for it and is aligned for any type.
void WriteVersionBlock(Bytes record, void* block);

/// VersionInfoService::VerQueryValueW on a block.
bool QueryVersionBlock(const void* block, const wchar_t* path, void*& value, UINT& length);

}
