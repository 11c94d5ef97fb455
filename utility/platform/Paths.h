#pragma once

#include <boost/filesystem/path.hpp>

#include <string>

namespace utility::platform
{

/// A path's text as wide text, and back, whatever the locale. Where paths are bytes (Linux), they are taken as UTF-8,
/// and a byte that is none becomes a lone surrogate (U+DC80 to U+DCFF), so that every file name survives the trip. Wide
/// texts that differ in other surrogates name different files.
/// Null is the empty path.
[[nodiscard]] std::wstring WideFromPath(const boost::filesystem::path& path);
[[nodiscard]] boost::filesystem::path PathFromWide(const wchar_t* text);

}
