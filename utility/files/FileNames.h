#pragma once

// Names for files: new ones, ones that depend on the display language, long and short ones.
//
//     const boost::filesystem::path help = FindLanguageDependentFilename(L"help%1%.txt");
//     const boost::filesystem::path folder = MakeTemporaryFolder(help.parent_path(), L"unpacked-");
//     assert(exists(folder));
//
// Any thread may call. What may throw says so. Names and folders are given as wide text or as a path, whatever the
// locale; a text with a null character in it names none.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/path.hpp>

#include <string>

/// A name in a folder: the prefix, and 16 random hexadecimal digits in groups of four. Nothing is made, and whether
/// there is such a file is not looked at.
UTILITY_API boost::filesystem::path MakeTemporaryFile(const boost::filesystem::path& folder, const wchar_t* prefix);
UTILITY_API boost::filesystem::path MakeTemporaryFile(const wchar_t* folder, const wchar_t* prefix);
UTILITY_API boost::filesystem::path MakeTemporaryFile(const std::wstring& folder, const wchar_t* prefix);

/// The same, made a folder, in a folder that exists. Throws boost::filesystem::filesystem_error.
UTILITY_API boost::filesystem::path MakeTemporaryFolder(const boost::filesystem::path& folder, const wchar_t* prefix);
UTILITY_API boost::filesystem::path MakeTemporaryFolder(const wchar_t* folder, const wchar_t* prefix);
UTILITY_API boost::filesystem::path MakeTemporaryFolder(const std::wstring& folder, const wchar_t* prefix);

/// The format with the three letters of a language, such as DEU, for each %1%; no letters for an unknown language. A
/// format without %1% is the name itself. No file is looked at. Throws boost::io::bad_format_string for a format that
/// is none.
UTILITY_API boost::filesystem::path FormatLanguageDependentFilename(LCID language, const wchar_t* format);

/// The first that exists of: the name for the display language; that for the same language in its default region; and,
/// whether it exists or not, that without letters. Throws as FormatLanguageDependentFilename does. A format without %1%
/// is deliberately refused (boost::io::too_many_args) when it comes to the last one.
UTILITY_API boost::filesystem::path FindLanguageDependentFilename(const wchar_t* format);

/// The long name of a file on Windows, where each part of a path may have a short one too; on Linux the name itself.
/// Empty if there is no such file.
UTILITY_API boost::filesystem::path GetLongPathNameW(const boost::filesystem::path& path);
UTILITY_API boost::filesystem::path GetLongPathNameW(const wchar_t* path);
UTILITY_API boost::filesystem::path GetLongPathNameW(const std::wstring& path);

/// The short name likewise.
UTILITY_API boost::filesystem::path GetShortPathNameW(const boost::filesystem::path& path);
UTILITY_API boost::filesystem::path GetShortPathNameW(const wchar_t* path);
UTILITY_API boost::filesystem::path GetShortPathNameW(const std::wstring& path);
