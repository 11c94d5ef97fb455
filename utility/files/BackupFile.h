#pragma once

// Saves a file so that a crash, or a save that fails, never damages the one that the user has: the new version is
// written beside the old one, and the two are swapped when the new one is complete.
//
//     CBackupFile backup(L"part.nc");
//     CTextFile file;
//     file.Open(backup.GetTempFilename());
//     file << "N10 G01\n";
//     file.CommitAndClose();        // throws if the disk did not take it all
//     backup.SetReplaceFile(true);  // the old version may go; the swap comes with the end of `backup`
//
// Until the last line everything that throws leaves the old version as it was, and the new one is removed. Of the two
// closes only CommitAndClose tells of bytes that did not reach the disk. A Close says nothing, and the system takes a
// second flush of the same file for a success: a broken file would replace the good one.
//
// The destructor removes or swaps, and throws boost::filesystem::filesystem_error where it fails. While another
// failure is on its way already, a removal that fails is not told, and a swap that fails ends the program. What is
// thrown once the swap has begun leaves the old version or the new one, whole.
//
// An object belongs to one thread at a time. It is copied only before SetReplaceFile(true): each copy would swap.
//
// On Linux the file is never missing, nor half, for any other program at any instant. Permissions, owner (where the
// user may give files away), extended attributes and access list of the old file go over to the new one; until then
// that has those of any new file. A link stays a link, and what it points at is replaced: what other names lead to is
// meant to be the same file still. Where it points to another device, the new version is copied there and swapped
// there. Where it leads nowhere, the new file takes the place of the link. A file that did not exist before gets its
// name by a plain renaming, and so it does where the swap is refused, in the place of a link too. Where a flush fails
// within the swap, the old file stays, the new one is removed, and the destructor throws that it is missing. A device
// or a pipe is not replaced: the destructor throws, and the new file stays beside it.
//
// One swap there takes these calls of the system, if the old file is no link, has no extended attributes, the new one
// has its owner and permissions, and CommitAndClose came right before: lstat, open, fstat, listxattr, fgetxattr, fstat,
// geteuid, link, fstat, rename, open, fsync, close, close, and to remove the backup lstat, unlink. Otherwise an fsync
// of the new file comes ahead of the rename.
//
// On Windows another program that has the file open, such as one that looks for viruses, is waited for up to a tenth of
// a second. Where the system refuses the swap for good, for lack of rights as a rule, the old file is removed, or moved
// away if that fails, before the new one is renamed: only then is the file missing for a moment.

#include "utility/platform/Export.h"

#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/path.hpp>

#include <string>

class UTILITY_API CBackupFile
{
public:
    /// The file to be replaced, which need not exist. Nothing is done to the disk; a new name is made up, in the same
    /// folder, for the caller to write to.
    explicit CBackupFile(const boost::filesystem::path& file);
    explicit CBackupFile(const std::wstring& file);
    explicit CBackupFile(const wchar_t* file);
    /// For the same two names: each object swaps, or removes the new version, at its own end.
    CBackupFile(const CBackupFile&);
    CBackupFile& operator=(const CBackupFile&);
    /// Puts the new version in the place of the old one if SetReplaceFile(true) was called; removes it otherwise.
    ~CBackupFile() noexcept(false);

    /// The file to be replaced, as it was given.
    const boost::filesystem::path& GetFilename() const;
    /// Where the new version is written.
    const boost::filesystem::path& GetTempFilename() const;

    /// Whether the new version, complete now, is to replace the old one. Without effect on an object whose two names
    /// are equal.
    void SetReplaceFile(bool replace);

private:
    boost::filesystem::path m_file;
    boost::filesystem::path m_tempFile;
    bool m_bReplace = false;
};
