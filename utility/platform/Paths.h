#pragma once

#include "utility/platform/Error.h"

#include <boost/filesystem/path.hpp>

#include <string>
#include <string_view>

namespace utility::platform
{

/// A path's text as wide text, and back, whatever the locale. Where paths are bytes (Linux), they are taken as UTF-8,
/// and a byte that is none becomes a lone surrogate (U+DC80 to U+DCFF), so that every file name survives the trip. Wide
/// texts that differ in other surrogates name different files. Null characters stay, which no file's name has: what is
/// cut off there would be another file.
[[nodiscard]] std::wstring WideFromPath(const boost::filesystem::path& path);
[[nodiscard]] boost::filesystem::path PathFromWide(std::wstring_view text);

/// A path's text as UTF-8 for a library that takes such names. Where paths are bytes, these as they are.
[[nodiscard]] std::string Utf8FromPath(const boost::filesystem::path& path);

/// Null is the empty path.
[[nodiscard]] inline boost::filesystem::path PathFromWide(const wchar_t* text)
{
    return PathFromWide(text != nullptr ? std::wstring_view(text) : std::wstring_view());
}

/// Whether the system would see all of each path. If not, since it would see only what stands before a null character,
/// which is another file's name, that is the reason in LastError().
template <class... Paths>
[[nodiscard]] bool AreWhole(const Paths&... paths)
{
    const bool areWhole = ((paths.native().find(typename Paths::value_type()) == Paths::string_type::npos) && ...);
    if (!areWhole)
        SetLastError(ERROR_INVALID_NAME);
    return areWhole;
}

}
