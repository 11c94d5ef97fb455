#pragma once

// What is done to a file by its name, without opening it for the caller.
//
//     if (CreateFileIfNotPresent(L"tools.dat") && GetFileSize(L"tools.dat") == 0)
//         RenameFile(L"tools.bak", L"tools.dat"); // throws CFileException
//
// Any thread may call. Only RenameFile throws. A file is named by wide text or by a path, whatever the locale.
// A text with a null character in it names none.

#include "utility/platform/Export.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <string>

/// Gives a file another name, in place of a file that has it already, or takes it to another device under that name.
/// Throws CFileException, with `from` as the file (as a pointer, see framework/Exception.h).
UTILITY_API void RenameFile(const wchar_t* from, const wchar_t* to);
UTILITY_API void RenameFile(const std::wstring& from, const std::wstring& to);
UTILITY_API void RenameFile(const boost::filesystem::path& from, const boost::filesystem::path& to);

/// Makes an empty file unless it is there. True if it is there now.
UTILITY_API bool CreateFileIfNotPresent(const wchar_t* path);
UTILITY_API bool CreateFileIfNotPresent(const std::wstring& path);
UTILITY_API bool CreateFileIfNotPresent(const boost::filesystem::path& path);

/// Whether a file is there and the user may read it. On Windows the file's access list is not asked.
UTILITY_API bool IsFileReadable(const boost::filesystem::path& path);
UTILITY_API bool IsFileReadable(const wchar_t* path);
UTILITY_API bool IsFileReadable(const std::wstring& path);

/// The length of a file in bytes; 0 too for one that is not there.
UTILITY_API std::uint64_t GetFileSize(const wchar_t* path);
UTILITY_API std::uint64_t GetFileSize(const std::wstring& path);
UTILITY_API std::uint64_t GetFileSize(const boost::filesystem::path& path);
