#pragma once

// Packs files into a zip archive, all of them side by side in it, at the highest level of compression.
//
//     const bool isWritten = Zip::ZipFiles("job.zip", {"plate.igs", "moves.nc"});
//
// An archive that is there already is updated: a file takes the place of the one that has its name in the archive, and
// what else is in there stays. Names have no folders in an archive, so two files of one name are refused.
//
// A relative name of a file is one in the folder that the archive is in. Nothing is told but whether the archive was
// written; nothing is thrown but for lack of memory. One archive at a time for a process. The library that does the
// work is loaded with the first call that has files: where there is none, that gives false, and the next one looks
// anew.
//
// On Windows it is zip32z64.dll, which is not part of this library; the rest of what is said here is of Linux, where it
// is minizip (libminizip.so.1). There several threads and processes may write archives at once; where it is the same
// one, those fail that find another archive at their end than at their beginning.
//
// A failure leaves an archive as it was, or leaves none. Until the new one is whole and on the disk it has another name
// beside it, and takes its place as CBackupFile has it (files/BackupFile.h): a link stays a link, and what it points at
// is replaced. A failure is: a file that is missing, cannot be read, is no plain file (a pipe, a device), or gets
// another length while it is read; nothing to pack; a disk that is full; an archive to be updated that is no zip
// archive, or none that is known to stay whole (one of several parts, or with entries that lie within others); and one
// that somebody else makes, writes to or replaces meanwhile. What stays in an archive stays to the byte. Links are
// followed. Folders are left out, and so is the archive itself.
//
// A file keeps its time, to the second until 2038, and its permissions. Names are bytes of UTF-8, and marked so. A name
// that is no UTF-8 goes in as it is, without the mark: unzip gives it back, others may show it with other letters.
// Files, and archives, may be longer than 4 GB.

#include "utility/platform/Export.h"

#include <boost/filesystem/path.hpp>

#include <set>

namespace Zip
{

/// Whether the archive was written. Without files it is not, and nothing is loaded.
UTILITY_API bool ZipFiles(const boost::filesystem::path& archive, const std::set<boost::filesystem::path>& files);

}
