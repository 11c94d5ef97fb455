#include "utility/files/BackupFile.h"

#include "utility/files/internal/NameOfNone.h"
#include "utility/platform/Error.h"
#include "utility/platform/FileSystem.h"
#include "utility/platform/Paths.h"

#include <boost/filesystem/operations.hpp>

#include <exception>

using boost::filesystem::path;
using utility::platform::FileSystem;

namespace
{

path NameBeside(const path& file)
{
    return file.parent_path() /
           boost::filesystem::unique_path(utility::platform::PathFromWide(L"MS%%%%-%%%%-%%%%-%%%%"));
}

/// Removes a file if it is there. That it cannot be removed is told only if nothing else is: what could not be written,
/// as in a folder that is not to be entered, cannot be removed either.
void RemoveUnlessFailing(const path& file)
{
    // The system would take such a name for that of the file ahead of its null character.
    if (!utility::platform::AreWhole(file))
        return;
    boost::system::error_code failure;
    boost::filesystem::remove(file, failure);
    if (failure && std::uncaught_exceptions() == 0)
        throw boost::filesystem::filesystem_error("the new file cannot be removed", file, failure);
}

/// Gets a file out of the way that could not be replaced for this reason, though it is there. Throws for one that
/// cannot be there.
void MakeWay(const path& file, const path& backup, DWORD reason)
{
    // What comes next would take such a name for that of the file ahead of its null character.
    if (reason == ERROR_INVALID_NAME)
        utility::detail::ThrowNameOfNone(file);
    boost::system::error_code failure;
    if (reason != ERROR_UNABLE_TO_MOVE_REPLACEMENT && reason != ERROR_ACCESS_DENIED && reason != ERROR_SUCCESS)
        return;
    if (!boost::filesystem::exists(file, failure))
        return;
    boost::filesystem::remove(file, failure);
    if (!failure)
        return;
    boost::filesystem::remove(backup);
    boost::filesystem::rename(file, backup);
}

}

CBackupFile::CBackupFile(const path& file) : m_file(file), m_tempFile(NameBeside(file)) {}

CBackupFile::CBackupFile(const std::wstring& file) : CBackupFile(utility::platform::PathFromWide(file)) {}

CBackupFile::CBackupFile(const wchar_t* file) : CBackupFile(utility::platform::PathFromWide(file)) {}

CBackupFile::CBackupFile(const CBackupFile&) = default;
CBackupFile& CBackupFile::operator=(const CBackupFile&) = default;

CBackupFile::~CBackupFile() noexcept(false)
{
    if (!m_bReplace)
    {
        RemoveUnlessFailing(m_tempFile);
        return;
    }
    const path backup = NameBeside(m_file);
    if (!FileSystem().Replace(m_file, m_tempFile, backup))
    {
        MakeWay(m_file, backup, utility::platform::LastError());
        boost::filesystem::rename(m_tempFile, m_file);
        if (!FileSystem().FlushName(m_file))
            throw boost::filesystem::filesystem_error(
                "the new file may not keep its name in a crash", m_file,
                boost::system::errc::make_error_code(boost::system::errc::io_error));
    }
    boost::system::error_code failure;
    boost::filesystem::remove(backup, failure);
    if (failure)
        FileSystem().DeleteWhenUnused(backup);
}

const path& CBackupFile::GetFilename() const { return m_file; }

const path& CBackupFile::GetTempFilename() const { return m_tempFile; }

void CBackupFile::SetReplaceFile(bool replace) { m_bReplace = replace && m_tempFile != m_file; }
