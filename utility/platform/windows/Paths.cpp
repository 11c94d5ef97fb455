#include "utility/platform/Paths.h"

#include "utility/platform/Text.h"

namespace utility::platform
{

std::wstring WideFromPath(const boost::filesystem::path& path) { return path.native(); }

std::string Utf8FromPath(const boost::filesystem::path& path) { return CodePageFromWide(CP_UTF8, path.native()); }

boost::filesystem::path PathFromWide(std::wstring_view text) { return std::wstring(text); }

}
