#include "utility/files/NamedFiles.h"

#include "utility/framework/FileException.h"
#include "utility/platform/Error.h"
#include "utility/platform/FileSystem.h"
#include "utility/platform/Paths.h"

using utility::platform::FileSystem;
using utility::platform::LastError;
using utility::platform::PathFromWide;

void RenameFile(const wchar_t* from, const wchar_t* to) { RenameFile(PathFromWide(from), PathFromWide(to)); }

void RenameFile(const std::wstring& from, const std::wstring& to) { RenameFile(PathFromWide(from), PathFromWide(to)); }

void RenameFile(const boost::filesystem::path& from, const boost::filesystem::path& to)
{
    if (FileSystem().Move(from, to))
        return;
    const auto reason = static_cast<std::int32_t>(LastError());
    CFileException::ThrowOsError(reason, utility::platform::WideFromPath(from).c_str());
}

bool CreateFileIfNotPresent(const wchar_t* path) { return CreateFileIfNotPresent(PathFromWide(path)); }

bool CreateFileIfNotPresent(const std::wstring& path) { return CreateFileIfNotPresent(PathFromWide(path)); }

bool CreateFileIfNotPresent(const boost::filesystem::path& path)
{
    return FileSystem().CreateNew(path) || LastError() == ERROR_FILE_EXISTS;
}

bool IsFileReadable(const boost::filesystem::path& path) { return FileSystem().IsReadable(path); }

bool IsFileReadable(const wchar_t* path) { return IsFileReadable(PathFromWide(path)); }

bool IsFileReadable(const std::wstring& path) { return IsFileReadable(PathFromWide(path)); }

std::uint64_t GetFileSize(const wchar_t* path) { return GetFileSize(PathFromWide(path)); }

std::uint64_t GetFileSize(const std::wstring& path) { return GetFileSize(PathFromWide(path)); }

std::uint64_t GetFileSize(const boost::filesystem::path& path)
{
    std::uint64_t length = 0;
    return FileSystem().Length(path, length) ? length : 0;
}
